#pragma once
// The command line: commands, options, and the text that explains them.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

enum class Command {
    ls,
    get,
    put,
    rm,
    rmdir,
    mkdir,
    mv,
    chmod,
    raw,
    fxp,
    find,
    ping,
    connect,
    sites,
    demo,
    help,
    version
};

/// What becomes of a file that exists at the target.
enum class ExistingFile { ask, resume, overwrite, skip };

/// A firewall to log in through.
struct Firewall {
    unsigned type = 0;  // 1 to 6
    std::string host;   // may carry ":port"
    std::string user;
};

struct Options {
    Command command = Command::help;
    std::string url;       // or a site's name; of ping the host
    std::string argument;  // the other word of a command that takes two; of fxp the second URL

    bool verbose = false;  // the connection's console on standard error
    bool quiet = false;    // no progress, no remarks
    bool passive = true;
    std::optional<Firewall> firewall;
    std::chrono::seconds idleTimeout{300};  // 0: none
    std::chrono::seconds replyTimeout{0};   // 0: as the module has it
    std::uint64_t listingLimit = std::uint64_t{1} << 30;

    bool longForm = false;
    bool porcelain = false;
    bool recursive = false;

    // Of a search.
    std::string mask;  // empty: all names
    bool subfolders = true;
    bool allEntries = false;  // hidden ones too
    bool window = false;      // a person does it, in the terminal
    std::optional<std::string> textFile;
    std::optional<std::string> csvFile;
    std::optional<std::string> htmlFile;

    unsigned count = 0;  // of echo requests; 0: until it is ended

    std::optional<std::string> output;
    ExistingFile existing = ExistingFile::ask;
};

/// Reads the arguments without the program's name. Options may stand before or behind the command,
/// short ones may be joined, «--» ends them. Throws a usage Failure.
Options ParseOptions(const std::vector<std::string>& arguments);

std::string_view HelpText();

}  // namespace cli
