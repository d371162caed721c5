#include "netrc.h"

#include <strings.h>

#include <cstdint>
#include <fstream>

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view blanks = " \t\r\n";

/// Reads a netrc file word by word.
class WordReader {
  public:
    explicit WordReader(std::string_view text) : rest_(text) {}

    /// The next word, nothing at the end.
    std::optional<std::string> Next() {
        rest_.remove_prefix(std::min(rest_.find_first_not_of(blanks), rest_.size()));
        if (rest_.empty()) {
            return std::nullopt;
        }
        return rest_.front() == '"' ? QuotedWord() : PlainWord();
    }

    void SkipLine() { rest_.remove_prefix(std::min(rest_.find('\n'), rest_.size())); }

    /// Goes behind the next empty line.
    void SkipMacro() {
        SkipLine();
        while (!rest_.empty()) {
            rest_.remove_prefix(1);
            const std::string_view line = rest_.substr(0, rest_.find('\n'));
            if (line.empty() || line == "\r") {
                return;
            }
            SkipLine();
        }
    }

  private:
    std::string PlainWord() {
        const std::size_t end = std::min(rest_.find_first_of(blanks), rest_.size());
        std::string word(rest_.substr(0, end));
        rest_.remove_prefix(end);
        return word;
    }

    std::string QuotedWord() {
        std::string word;
        rest_.remove_prefix(1);
        while (!rest_.empty() && rest_.front() != '"') {
            if (rest_.front() == '\\' && rest_.size() > 1) {
                rest_.remove_prefix(1);
            }
            word += rest_.front();
            rest_.remove_prefix(1);
        }
        rest_.remove_prefix(std::min<std::size_t>(1, rest_.size()));
        return word;
    }

    std::string_view rest_;
};

/// One entry of the file, as far as it has been read.
struct Entry {
    explicit Entry(bool machineFits) : fits(machineFits) {}

    bool fits;  // the machine does
    std::optional<std::string> login;
    std::optional<std::string> password;

    bool Answers(std::string_view user) const {
        return fits && password.has_value() && (!login || *login == user);
    }
};

/// The beginning of a file, empty when it can't be read.
std::string ReadAtMost(const fs::path& file, std::size_t longest) {
    std::string text(longest, '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(text.data(), static_cast<std::streamsize>(longest));
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

bool SameHost(const std::string& machine, std::string_view host) {
    return machine.size() == host.size() &&
           strncasecmp(machine.data(), host.data(), host.size()) == 0;
}

}  // namespace

std::optional<std::string> FindNetrcPassword(std::string_view text, std::string_view host,
                                             std::string_view user) {
    WordReader reader(text);
    Entry entry(false);
    while (const auto word = reader.Next()) {
        const bool begins = *word == "machine" || *word == "default";
        if (begins && entry.Answers(user)) {
            break;
        }
        if (*word == "machine") {
            entry = Entry(SameHost(reader.Next().value_or(""), host));
        } else if (*word == "default") {
            entry = Entry(true);
        } else if (*word == "login") {
            entry.login = reader.Next();
        } else if (*word == "password") {
            entry.password = reader.Next();
        } else if (*word == "account") {
            reader.Next();
        } else if (*word == "macdef") {
            reader.SkipMacro();
        } else if (word->starts_with('#')) {
            reader.SkipLine();
        }
    }
    return entry.Answers(user) ? entry.password : std::nullopt;
}

std::optional<std::string> ReadNetrcPassword(
    const std::filesystem::path& file, std::string_view host, std::string_view user,
    const std::function<void(const std::string& warning)>& warn) {
    constexpr std::uintmax_t longest = 1 << 20;
    constexpr auto readableByOthers = fs::perms::group_read | fs::perms::others_read;
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (!fs::exists(status)) {
        return std::nullopt;
    }
    const std::string text = fs::is_regular_file(status) ? ReadAtMost(file, longest + 1) : "";
    if (!fs::is_regular_file(status) || text.size() > longest) {
        warn(file.string() + " is not read: it is " +
             (text.empty() ? "no regular file" : "longer than 1 MiB"));
        return std::nullopt;
    }
    const auto password = FindNetrcPassword(text, host, user);
    if (password && (status.permissions() & readableByOthers) != fs::perms::none) {
        warn("others can read the passwords in " + file.string() + "; chmod 600 keeps them out");
    }
    return password;
}

}  // namespace cli
