#include "client.h"

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

namespace loopback {

// Which commands there are and what they want stands in one table.
struct Client::Command {
    static constexpr unsigned loggedIn = 1;
    static constexpr unsigned argument = 2;
    static constexpr unsigned writes = 4;

    std::string_view verb;
    void (Client::*handler)(const std::string& argument);
    unsigned wants;
};

const Client::Command Client::commands[] = {
    {"USER", &Client::User, Command::argument},
    {"PASS", &Client::Pass, 0},
    {"ACCT", &Client::Acct, 0},
    {"QUIT", &Client::Quit, 0},
    {"NOOP", &Client::Noop, 0},
    {"SYST", &Client::Syst, 0},
    {"TYPE", &Client::Type, Command::loggedIn | Command::argument},
    {"MODE", &Client::Mode, Command::loggedIn | Command::argument},
    {"STRU", &Client::Stru, Command::loggedIn | Command::argument},
    {"PWD", &Client::Pwd, Command::loggedIn},
    {"XPWD", &Client::Pwd, Command::loggedIn},
    {"CWD", &Client::Cwd, Command::loggedIn | Command::argument},
    {"XCWD", &Client::Cwd, Command::loggedIn | Command::argument},
    {"CDUP", &Client::Cdup, Command::loggedIn},
    {"XCUP", &Client::Cdup, Command::loggedIn},
    {"PASV", &Client::Pasv, Command::loggedIn},
    {"PORT", &Client::Port, Command::loggedIn | Command::argument},
    {"REST", &Client::Rest, Command::loggedIn | Command::argument},
    {"LIST", &Client::List, Command::loggedIn},
    {"NLST", &Client::Nlst, Command::loggedIn},
    {"RETR", &Client::Retr, Command::loggedIn | Command::argument},
    {"STOR", &Client::Stor, Command::loggedIn | Command::argument | Command::writes},
    {"APPE", &Client::Appe, Command::loggedIn | Command::argument | Command::writes},
    {"ABOR", &Client::Abor, Command::loggedIn},
    {"SIZE", &Client::Size, Command::loggedIn | Command::argument},
    {"DELE", &Client::Dele, Command::loggedIn | Command::argument | Command::writes},
    {"RNFR", &Client::Rnfr, Command::loggedIn | Command::argument | Command::writes},
    {"RNTO", &Client::Rnto, Command::loggedIn | Command::argument | Command::writes},
    {"MKD", &Client::Mkd, Command::loggedIn | Command::argument | Command::writes},
    {"XMKD", &Client::Mkd, Command::loggedIn | Command::argument | Command::writes},
    {"RMD", &Client::Rmd, Command::loggedIn | Command::argument | Command::writes},
    {"XRMD", &Client::Rmd, Command::loggedIn | Command::argument | Command::writes},
    {"SITE", &Client::Site, Command::loggedIn | Command::argument},
};

namespace {

std::string InCapitals(std::string_view text) {
    std::string capitals(text);
    for (char& letter : capitals) {
        letter = letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
    }
    return capitals;
}

// A double quote in a directory name is doubled between the quotes of a 257 reply.
std::string Quoted(std::string_view path) {
    std::string quoted = "\"";
    for (char letter : path) {
        quoted += letter;
        if (letter == '"') {
            quoted += letter;
        }
    }
    return quoted + '"';
}

template <typename Number>
bool ReadWhole(std::string_view text, int base, Number* number) {
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), *number, base);
    return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

}  // namespace

Client::Client(Shared* shared, const StopSignal* stop, Descriptor socket, int number)
    : shared_(shared),
      stop_(stop),
      control_(std::move(socket), number, shared, stop),
      data_(&control_, shared, stop) {}

const Client::Command* Client::FindCommand(std::string_view verb) {
    for (const Command& command : commands) {
        if (command.verb == verb) {
            return &command;
        }
    }
    return nullptr;
}

void Client::TurnAway() {
    control_.Reply("421 Too many clients");
    control_.Close(false);
}

bool Client::Welcome() {
    faults_ = shared_->faults.Take("");
    control_.BeginCommand(faults_);
    if (!ObeyFaults()) {
        control_.Reply(shared_->options.welcome);
    }
    control_.EndCommand();
    return !control_.Lost();
}

void Client::Run() {
    bool going = Welcome();
    while (going && !quit_) {
        std::string line;
        Clock::time_point deadline =
            Clock::now() + std::chrono::seconds(shared_->options.idleSeconds);
        LineEnd end = control_.ReadLine(deadline, &line);
        if (end == LineEnd::whole) {
            Obey(line);
        } else if (end == LineEnd::tooLong) {
            control_.Reply("500 Line too long");
        } else if (end == LineEnd::idle) {
            control_.Reply("421 Nothing came for too long");
        }
        going = !control_.Lost() && (end == LineEnd::whole || end == LineEnd::tooLong);
    }
    control_.Close(false);
}

void Client::Obey(const std::string& line) {
    std::size_t blank = std::min(line.find(' '), line.size());
    std::string verb = InCapitals(std::string_view(line).substr(0, blank));
    std::string argument = line.substr(std::min(blank + 1, line.size()));
    faults_ = shared_->faults.Take(verb);
    control_.BeginCommand(faults_);
    if (!ObeyFaults()) {
        Dispatch(verb, argument);
    }
    control_.EndCommand();
}

// True when a rule has taken the place of the command.
bool Client::ObeyFaults() {
    if (FindFault(faults_, FaultAction::dropBefore) != nullptr) {
        control_.Close(false);
        return true;
    }
    if (FindFault(faults_, FaultAction::resetBefore) != nullptr) {
        control_.Close(true);
        return true;
    }
    if (const Fault* reply = FindFault(faults_, FaultAction::reply)) {
        control_.Reply(reply->text);
        return true;
    }
    return FindFault(faults_, FaultAction::silent) != nullptr;
}

void Client::Dispatch(const std::string& verb, const std::string& argument) {
    const Command* command = FindCommand(verb);
    if (command == nullptr) {
        control_.Reply("500 Unknown command");
        return;
    }
    if ((command->wants & Command::loggedIn) != 0 && !loggedIn_) {
        control_.Reply("530 Log in first");
        return;
    }
    bool wantsArgument = (command->wants & Command::argument) != 0;
    if ((wantsArgument && argument.empty()) || argument.find('\0') != std::string::npos) {
        control_.Reply("501 The argument is missing or wrong");
        return;
    }
    if ((command->wants & Command::writes) != 0 && !shared_->options.writable) {
        control_.Reply("550 This server takes no changes");
        return;
    }
    (this->*command->handler)(argument);
}

void Client::User(const std::string& argument) {
    user_ = argument;
    loggedIn_ = false;
    passwordGiven_ = false;
    control_.Reply("331 Password, please");
}

bool Client::MayLogIn(const std::string& password) const {
    const Options& options = shared_->options;
    if (user_ == "anonymous" || user_ == "ftp") {
        return options.anonymous;
    }
    auto account = options.accounts.find(user_);
    return options.accounts.empty() ||
           (account != options.accounts.end() && account->second == password);
}

void Client::Pass(const std::string& argument) {
    constexpr int mostFailures = 10;
    if (user_.empty()) {
        control_.Reply("503 Name the user first");
    } else if (!MayLogIn(argument)) {
        quit_ = ++failedLogins_ >= mostFailures;
        control_.Reply(quit_ ? "421 Too many failed logins" : "530 Login incorrect");
        user_.clear();
    } else if (shared_->options.accountWanted) {
        passwordGiven_ = true;
        control_.Reply("332 Account, please");
    } else {
        LogIn();
    }
}

void Client::Acct(const std::string&) {
    if (!passwordGiven_) {
        control_.Reply("202 No account is wanted");
        return;
    }
    LogIn();
}

void Client::LogIn() {
    loggedIn_ = true;
    passwordGiven_ = false;
    directory_ = "/";
    control_.Reply("230 Logged in");
}

void Client::Quit(const std::string&) {
    quit_ = true;
    control_.Reply("221 Goodbye");
}

void Client::Noop(const std::string&) {
    control_.Reply("200 Done");
}

void Client::Syst(const std::string&) {
    control_.Reply("215 " + shared_->manner.System());
}

// Bytes travel as they are, whatever the type.
void Client::Type(const std::string& argument) {
    constexpr std::string_view known[] = {"A", "A N", "I", "L 8"};
    bool good =
        std::find(std::begin(known), std::end(known), InCapitals(argument)) != std::end(known);
    control_.Reply(good ? "200 Type set" : "504 No such type here");
}

void Client::Mode(const std::string& argument) {
    control_.Reply(InCapitals(argument) == "S" ? "200 Stream mode" : "504 Stream mode only");
}

void Client::Stru(const std::string& argument) {
    control_.Reply(InCapitals(argument) == "F" ? "200 File structure" : "504 File structure only");
}

void Client::Pwd(const std::string&) {
    control_.Reply("257 " + Quoted(directory_) + " is the current directory");
}

void Client::Cwd(const std::string& argument) {
    std::string path = Path(argument);
    int error = shared_->folder.CheckDirectory(path);
    if (error == 0) {
        directory_ = path;
    }
    ReplyTo(error, "250 Directory changed", argument);
}

void Client::Cdup(const std::string&) {
    directory_ = Path("..");
    control_.Reply("250 Directory changed");
}

void Client::Pasv(const std::string&) {
    try {
        control_.Reply("227 Entering Passive Mode (" + data_.ListenPassive() + ")");
    } catch (const std::system_error&) {
        control_.Reply("421 No socket is left");
    }
}

void Client::Port(const std::string& argument) {
    constexpr std::uint32_t clientAddress = 0x7F000001;
    std::uint32_t address = 0;
    std::uint16_t port = 0;
    if (!ParseHostPort(argument, &address, &port) || port == 0) {
        control_.Reply("501 These are not the six numbers of an address");
    } else if (address != clientAddress &&
               (!shared_->options.foreignPorts || address >> 24 != clientAddress >> 24)) {
        control_.Reply("500 Only the client's own address is taken");
    } else {
        data_.AimAt(address, port);
        control_.Reply("200 Port taken");
    }
}

void Client::Abor(const std::string&) {
    control_.Reply("225 Nothing to abort");
}

void Client::Size(const std::string& argument) {
    ListedFile file;
    int error = shared_->folder.LookAtFile(Path(argument), &file);
    ReplyTo(error, "213 " + std::to_string(file.size), argument);
}

void Client::Dele(const std::string& argument) {
    ReplyTo(shared_->folder.RemoveFile(Path(argument)), "250 Deleted", argument);
}

void Client::Rnfr(const std::string& argument) {
    ListedFile file;
    int error = shared_->folder.Look(Path(argument), &file);
    if (error == 0) {
        renameFrom_ = Path(argument);
    }
    ReplyTo(error, "350 The new name, please", argument);
}

void Client::Rnto(const std::string& argument) {
    if (renameFrom_.empty()) {
        control_.Reply("503 Say RNFR first");
        return;
    }
    std::string from = std::exchange(renameFrom_, {});
    ReplyTo(shared_->folder.Rename(from, Path(argument)), "250 Renamed", argument);
}

void Client::Mkd(const std::string& argument) {
    std::string path = Path(argument);
    ReplyTo(shared_->folder.MakeDirectory(path), "257 " + Quoted(path) + " made", argument);
}

void Client::Rmd(const std::string& argument) {
    ReplyTo(shared_->folder.RemoveDirectory(Path(argument)), "250 Removed", argument);
}

void Client::Site(const std::string& argument) {
    std::string_view rest = argument;
    std::size_t verbEnd = std::min(rest.find(' '), rest.size());
    if (InCapitals(rest.substr(0, verbEnd)) != "CHMOD") {
        control_.Reply("500 Unknown SITE command");
        return;
    }
    rest.remove_prefix(std::min(verbEnd + 1, rest.size()));
    std::size_t modeEnd = std::min(rest.find(' '), rest.size());
    std::string_view name = rest.substr(std::min(modeEnd + 1, rest.size()));
    std::uint32_t mode = 0;
    if (!ReadWhole(rest.substr(0, modeEnd), 8, &mode) || mode > 07777 || name.empty()) {
        control_.Reply("501 SITE CHMOD takes octal digits and a name");
    } else if (!shared_->options.writable) {
        control_.Reply("550 This server takes no changes");
    } else {
        ReplyTo(shared_->folder.ChangeMode(Path(name), mode), "200 Permissions set", name);
    }
}

void Client::Rest(const std::string& argument) {
    std::uint64_t offset = 0;
    if (!ReadWhole(argument, 10, &offset) || offset > INT64_MAX) {
        control_.Reply("501 REST takes a number of bytes");
        return;
    }
    restartOffset_ = offset;
    control_.Reply("350 Restarting at " + std::to_string(offset));
}

void Client::ReplyTo(int error, std::string_view done, std::string_view path) {
    if (error == 0) {
        control_.Reply(done);
        return;
    }
    control_.Reply("550 " + std::string(path) + ": " +
                   std::error_code(error, std::generic_category()).message());
}

}  // namespace loopback
