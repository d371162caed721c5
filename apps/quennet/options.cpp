#include "options.h"

#include <algorithm>
#include <charconv>

#include "failure.h"

namespace cli {

namespace {

constexpr unsigned anyCommand = ~0u;
constexpr unsigned Only(Command command) {
    return 1u << static_cast<unsigned>(command);
}

constexpr unsigned writesOnServer = Only(Command::put) | Only(Command::mv) | Only(Command::fxp);

/// The words behind a command.
enum class Words { none, url, fileAndUrl, urlAndName, urlAndLine, modeAndUrl, twoUrls, host };

struct CommandRow {
    std::string_view name;
    Command command;
    Words words;
};
constexpr CommandRow commandRows[] = {
    {"ls", Command::ls, Words::url},
    {"get", Command::get, Words::url},
    {"put", Command::put, Words::fileAndUrl},
    {"rm", Command::rm, Words::url},
    {"rmdir", Command::rmdir, Words::url},
    {"mkdir", Command::mkdir, Words::url},
    {"mv", Command::mv, Words::urlAndName},
    {"chmod", Command::chmod, Words::modeAndUrl},
    {"raw", Command::raw, Words::urlAndLine},
    {"fxp", Command::fxp, Words::twoUrls},
    {"find", Command::find, Words::url},
    {"ping", Command::ping, Words::host},
    {"connect", Command::connect, Words::none},
    {"sites", Command::sites, Words::none},
    {"demo", Command::demo, Words::none},
    {"help", Command::help, Words::none},
    {"version", Command::version, Words::none},
};

/// What is wanted, as a refusal says it.
struct WordsRow {
    std::size_t least;
    std::size_t most;
    std::size_t urlAt;  // which of all words, the command's included; the last where there are less
    const char* wants;
};
constexpr WordsRow wordsRows[] = {
    {0, 0, 0, " takes no argument"},      {1, 1, 1, " wants one URL"},
    {2, 2, 2, " wants a file and a URL"}, {2, 2, 1, " wants a URL and a new name"},
    {2, 2, 1, " wants a URL and a line"}, {1, 2, 2, " wants permissions and a URL, or a URL alone"},
    {2, 2, 1, " wants two URLs"},         {0, 1, 1, " wants one host"},
};

void SetExisting(Options& options, ExistingFile existing) {
    if (options.existing != ExistingFile::ask && options.existing != existing) {
        throw Failure(ExitStatus::usage,
                      "--resume, --overwrite and --skip exclude each other; quennet --help");
    }
    options.existing = existing;
}

/// The number that a text is, up to `most`.
std::optional<std::uint64_t> NumberOf(std::string_view text, std::uint64_t most) {
    std::uint64_t number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    const bool isNumber = error == std::errc() && rest == end && number <= most;
    return isNumber ? std::optional(number) : std::nullopt;
}

std::chrono::seconds SecondsOf(const std::string& value, const std::string& option) {
    constexpr std::uint64_t longest = 1'000'000;
    const auto seconds = NumberOf(value, longest);
    if (!seconds) {
        throw Failure(ExitStatus::usage, option + " wants a number of seconds, 0 for none");
    }
    return std::chrono::seconds(*seconds);
}

void SetIdleTimeout(Options& options, const std::string& value) {
    options.idleTimeout = SecondsOf(value, "--idle-timeout");
}

void SetReplyTimeout(Options& options, const std::string& value) {
    options.replyTimeout = SecondsOf(value, "--reply-timeout");
}

void SetListingLimit(Options& options, const std::string& value) {
    constexpr std::uint64_t most = 1024;
    const auto megabytes = NumberOf(value, most);
    if (!megabytes || *megabytes == 0) {
        throw Failure(ExitStatus::usage, "--listing-limit wants megabytes, 1 to 1024");
    }
    options.listingLimit = *megabytes << 20;
}

/// «TYPE,HOST[,USER]».
void SetFirewall(Options& options, const std::string& value) {
    constexpr std::size_t longestField = 79;
    const std::size_t hostAt = value.find(',');
    if (value.size() < 3 || hostAt != 1 || value[0] < '1' || value[0] > '6') {
        throw Failure(ExitStatus::usage, "--firewall wants TYPE,HOST[,USER], with a type 1 to 6");
    }
    Firewall firewall;
    firewall.type = static_cast<unsigned>(value[0] - '0');
    const std::size_t userAt = value.find(',', hostAt + 1);
    firewall.host = value.substr(hostAt + 1, userAt - hostAt - 1);
    firewall.user = userAt == value.npos ? "" : value.substr(userAt + 1);
    if (firewall.host.empty() || firewall.host.size() > longestField ||
        firewall.user.size() > longestField) {
        throw Failure(ExitStatus::usage,
                      "--firewall wants a host, and no name of more than 79 characters");
    }
    if (value.find_first_of("\r\n") != value.npos) {
        throw Failure(ExitStatus::usage, "--firewall holds a line end");
    }
    options.firewall = firewall;
}

void SetMask(Options& options, const std::string& value) {
    constexpr std::size_t longestMask = 259;
    if (value.size() > longestMask || value.find_first_of("\r\n") != value.npos) {
        throw Failure(ExitStatus::usage, "--mask wants one line of at most 259 characters");
    }
    options.mask = value;
}

void SetCount(Options& options, const std::string& value) {
    const char* end = value.data() + value.size();
    const auto [rest, error] = std::from_chars(value.data(), end, options.count);
    if (error != std::errc() || rest != end || options.count == 0) {
        throw Failure(ExitStatus::usage, "--count wants a number above 0");
    }
}

struct OptionRow {
    char letter;  // 0: none
    std::string_view name;
    bool takesValue;
    unsigned commands;
    void (*set)(Options& options, const std::string& value);
};
constexpr OptionRow optionRows[] = {
    {'h', "help", false, anyCommand,
     [](Options& options, const std::string&) { options.command = Command::help; }},
    {0, "version", false, anyCommand,
     [](Options& options, const std::string&) { options.command = Command::version; }},
    {'v', "verbose", false, anyCommand,
     [](Options& options, const std::string&) { options.verbose = true; }},
    {'q', "quiet", false, anyCommand,
     [](Options& options, const std::string&) { options.quiet = true; }},
    {0, "active", false, anyCommand,
     [](Options& options, const std::string&) { options.passive = false; }},
    {0, "firewall", true, anyCommand, SetFirewall},
    {0, "idle-timeout", true, anyCommand, SetIdleTimeout},
    {0, "reply-timeout", true, anyCommand, SetReplyTimeout},
    {0, "listing-limit", true, anyCommand, SetListingLimit},
    {'l', "long", false, Only(Command::ls),
     [](Options& options, const std::string&) { options.longForm = true; }},
    {0, "porcelain", false, Only(Command::ls) | Only(Command::sites) | Only(Command::find),
     [](Options& options, const std::string&) { options.porcelain = true; }},
    {'r', "recursive", false,
     Only(Command::get) | Only(Command::put) | Only(Command::rm) | Only(Command::chmod),
     [](Options& options, const std::string&) { options.recursive = true; }},
    {'R', "recursive", false, Only(Command::chmod),
     [](Options& options, const std::string&) { options.recursive = true; }},
    {'o', "output", true, Only(Command::get),
     [](Options& options, const std::string& value) { options.output = value; }},
    {'m', "mask", true, Only(Command::find), SetMask},
    {'a', "all", false, Only(Command::find),
     [](Options& options, const std::string&) { options.allEntries = true; }},
    {0, "no-recurse", false, Only(Command::find),
     [](Options& options, const std::string&) { options.subfolders = false; }},
    {'c', "count", true, Only(Command::ping), SetCount},
    {0, "window", false, Only(Command::find) | Only(Command::ping),
     [](Options& options, const std::string&) { options.window = true; }},
    {0, "text", true, Only(Command::find),
     [](Options& options, const std::string& value) { options.textFile = value; }},
    {0, "csv", true, Only(Command::find),
     [](Options& options, const std::string& value) { options.csvFile = value; }},
    {0, "html", true, Only(Command::find),
     [](Options& options, const std::string& value) { options.htmlFile = value; }},
    {0, "resume", false, Only(Command::get),
     [](Options& options, const std::string&) { SetExisting(options, ExistingFile::resume); }},
    {0, "overwrite", false, writesOnServer | Only(Command::get),
     [](Options& options, const std::string&) { SetExisting(options, ExistingFile::overwrite); }},
    {0, "skip", false, writesOnServer | Only(Command::get),
     [](Options& options, const std::string&) { SetExisting(options, ExistingFile::skip); }},
};

constexpr std::string_view helpText =
    R"(usage: quennet [options] ls [-l] [--porcelain] URL
       quennet [options] get [-r] [-o FILE] [--resume|--overwrite|--skip] URL
       quennet [options] put [-r] [--overwrite|--skip] FILE URL
       quennet [options] rm [-r] URL
       quennet [options] rmdir|mkdir URL
       quennet [options] mv [--overwrite|--skip] URL NEWNAME
       quennet [options] chmod [-R] [MODE] URL
       quennet [options] raw URL LINE
       quennet [options] fxp [--overwrite|--skip] URL URL
       quennet [options] find [-m MASK] [-a] [--no-recurse] [--text|--csv|--html FILE] URL
       quennet [options] find --window URL
       quennet [options] ping [-c N] HOST
       quennet [options] ping --window [HOST]
       quennet [options] connect
       quennet [options] sites [--porcelain]
       quennet [options] demo

An FTP client. A URL is ftp://[user[:password]@]host[:port]/path; its path starts in the login
directory, and at the root with %2F in front. Without a user the login is anonymous. A password
comes from the URL, from ~/.netrc, or from a question on the terminal. site:NAME[/path] is a site of
the book, with the password that the book holds; its path starts in the site's directory.

  ls      lists a directory, or the one file that the URL names
    -l, --long       attributes, size, date and name
    --porcelain      for scripts: attributes (hexadecimal), size, date (YYYY-MM-DD HH:MM, or -) and
                     name, with tabs between; in a name, \t \n \\ and \xNN stand for a tab, a line
                     feed, a backslash and other control characters
  get     downloads a file into the working directory
    -o, --output FILE  to that file, into that folder («DIR/»), or to standard output («-»)
    --resume         goes on with a file that is there, if it begins as the server's does
    --overwrite      replaces it
    --skip           leaves it
    -r, --recursive  a whole directory, but nothing that only a link leads to; --resume leaves
                     files alone that have come whole
  put     uploads a file, under its own name when the URL ends with a slash
    --overwrite      replaces a file that the server has
    --skip           leaves it
    -r, --recursive  a whole folder
  rm      deletes a file
    -r, --recursive  a directory with all that it holds
  rmdir, mkdir       remove a directory, make one with the parents it lacks
  mv      renames what the URL names; the new name is a path from the same directory
    --overwrite, --skip  as above
  chmod   changes permissions: to an octal number (644), or by letters (u+x,go-w); without either a
          dialog asks
    -R, --recursive  a directory with all that it holds
  raw     sends a line as it is, in the directory of the URL, and prints the replies
  fxp     copies a file from one server straight to another, which must allow that
    --overwrite, --skip  as above
  find    searches a directory and all below it, and prints the path of what it finds
    -m, --mask MASK  names that fit: * is any text, ? one character; several with ; between
    -a, --all        asks the server for hidden entries too
    --no-recurse     looks into the directory alone
    --text, --csv, --html FILE  writes the list to a file, and over one that is there
    --porcelain      for scripts: paths written as names are in ls
    --window         opens the search window in the terminal; Go to closes it and prints the path
  ping    sends an echo request a second to a host until Ctrl-C, and sums up what came back
    -c, --count N    ends after N requests
    --window         opens the ping dialog in the terminal
  connect opens the connection dialog with the site book, connects, and lists the directory; any
          key then disconnects
  sites   lists the site book, without passwords: name, host, user, directory and options
    --porcelain      for scripts: with tabs between, and names written as in ls
  demo    shows the main job on a server of its own

  -v, --verbose      shows the conversation with the server
  -q, --quiet        shows no progress
  --active           lets the server connect back for data
  --firewall TYPE,HOST[,USER]
                     logs in through a firewall. TYPE: 1 USER user@host, 2 USER at the firewall and
                     then user@host, 3 SITE host, 4 OPEN host, 5 USER user@firewalluser@host,
                     6 USER firewalluser@host
  --idle-timeout SECONDS
                     gives up when no data has come for so long (300; 0 waits for ever)
  --reply-timeout SECONDS
                     gives up a login or a command that takes longer. In any case a line has 30
                     seconds, a welcome 60 and a reply as a whole five minutes
  --listing-limit MEGABYTES
                     takes no listing that is longer (1024)
  --help, --version

Exit status: 0 done, 1 the operation failed, 2 usage, 3 no connection or login.
)";

[[noreturn]] void Refuse(const std::string& reason) {
    throw Failure(ExitStatus::usage, reason + "; quennet --help");
}

/// Splits the arguments into options, which take effect at once, and words.
class Reader {
  public:
    explicit Reader(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    Options Read() {
        while (next_ < arguments_.size()) {
            const std::string& argument = arguments_[next_++];
            if (optionsEnded_ || argument.size() < 2 || argument[0] != '-') {
                words_.push_back(argument);
            } else if (argument == "--") {
                optionsEnded_ = true;
            } else if (argument[1] == '-') {
                TakeLong(argument.substr(2));
            } else {
                TakeLetters(argument.substr(1));
            }
        }
        if (!answersAtOnce_) {
            TakeWords();
        }
        return options_;
    }

  private:
    void TakeLong(const std::string& text) {
        const std::size_t equals = text.find('=');
        const std::string name = text.substr(0, equals);
        const auto row = std::find_if(std::begin(optionRows), std::end(optionRows),
                                      [&](const OptionRow& each) { return each.name == name; });
        if (row == std::end(optionRows)) {
            Refuse("there is no option --" + name);
        }
        if (equals != text.npos && !row->takesValue) {
            Refuse("--" + name + " takes no value");
        }
        Set(*row, equals == text.npos ? std::nullopt : std::optional(text.substr(equals + 1)));
    }

    /// Letters of one argument; the rest behind one that takes a value is the value.
    void TakeLetters(const std::string& letters) {
        for (std::size_t i = 0; i < letters.size(); ++i) {
            const auto row =
                std::find_if(std::begin(optionRows), std::end(optionRows),
                             [&](const OptionRow& each) { return each.letter == letters[i]; });
            if (row == std::end(optionRows)) {
                Refuse(std::string("there is no option -") + letters[i]);
            }
            if (row->takesValue && i + 1 < letters.size()) {
                Set(*row, letters.substr(i + 1));
                return;
            }
            Set(*row, std::nullopt);
        }
    }

    void Set(const OptionRow& row, std::optional<std::string> value) {
        if (row.takesValue && !value) {
            if (next_ == arguments_.size()) {
                Refuse("--" + std::string(row.name) + " wants a value");
            }
            value = arguments_[next_++];
        }
        row.set(options_, value.value_or(""));
        allowed_ &= row.commands;
        answersAtOnce_ = answersAtOnce_ || row.name == "help" || row.name == "version";
    }

    void TakeWords() {
        if (words_.empty()) {
            Refuse("a command is wanted");
        }
        const auto row =
            std::find_if(std::begin(commandRows), std::end(commandRows),
                         [&](const CommandRow& each) { return each.name == words_.front(); });
        if (row == std::end(commandRows)) {
            Refuse("there is no command \"" + words_.front() + "\"");
        }
        if ((allowed_ & Only(row->command)) == 0) {
            Refuse(words_.front() + " does not take one of these options");
        }
        const WordsRow& wanted = wordsRows[static_cast<std::size_t>(row->words)];
        const std::size_t count = words_.size() - 1;
        if (count < wanted.least || count > wanted.most) {
            Refuse(words_.front() + wanted.wants);
        }
        options_.command = row->command;
        const std::size_t urlAt = std::min(wanted.urlAt, count);
        options_.url = count > 0 ? words_[urlAt] : "";
        options_.argument = count > 1 ? words_[3 - urlAt] : "";
    }

    const std::vector<std::string>& arguments_;
    std::size_t next_ = 0;
    bool optionsEnded_ = false;
    bool answersAtOnce_ = false;  // help and version need nothing else
    unsigned allowed_ = anyCommand;
    std::vector<std::string> words_;
    Options options_;
};

}  // namespace

Options ParseOptions(const std::vector<std::string>& arguments) {
    return Reader(arguments).Read();
}

std::string_view HelpText() {
    return helpText;
}

}  // namespace cli
