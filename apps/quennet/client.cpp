#include "client.h"

#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "failure.h"
#include "hostkit/remote_tree.h"
#include "netrc.h"
#include "prompt.h"
#include "standard_output.h"
#include "stored_settings.h"
#include "terminal_text.h"

namespace cli {

namespace {

constexpr char connectionLost[] = "the connection was lost";
constexpr char anonymousUser[] = "anonymous";

bool WantsPassword(const Url& url) {
    return !url.user.empty() && url.user != anonymousUser;
}

/// The module hides its own PASS; a person may type one in any case.
bool HoldsPassword(const std::string& line) {
    constexpr std::string_view verb = "pass";
    const std::size_t begin = std::min(line.find_first_not_of(" \t"), line.size());
    const std::size_t end = begin + verb.size();
    return end < line.size() && (line[end] == ' ' || line[end] == '\t') &&
           strncasecmp(line.c_str() + begin, verb.data(), verb.size()) == 0;
}

/// Which passwords a firewall's login sends by itself, by type. Nobody is asked in the midst of it.
constexpr unsigned sendsUserPassword = 1;
constexpr unsigned sendsFirewallPassword = 2;
constexpr unsigned firewallTraits[] = {
    0, sendsUserPassword, 0, 0, 0, sendsUserPassword | sendsFirewallPassword, sendsFirewallPassword,
};

/// Whose password it is, as a person is asked for it.
std::string Account(const Url& url) {
    return (url.user.empty() ? "" : url.user + "@") + url.HostText();
}

[[noreturn]] void RefuseWithoutPassword(const std::string& account) {
    throw Failure(ExitStatus::noConnection,
                  account + " wants a password" +
                      (CanAsk() ? ""
                                : ": there is none in the URL, in the site book or in ~/.netrc, "
                                  "and no terminal to ask on"));
}

}  // namespace

Client::Client(hostkit::Host& host, Watch& watch, Status& status, const Options& options)
    : watch_(watch),
      status_(status),
      options_(options),
      connection_(host, {.console = [this](const std::string& line) { TakeLine(line); },
                         .askPassword = [this](const std::string&) { return AskPassword(); },
                         .reconnectFailed = {}}) {}

Client::~Client() {
    const Watch::Operation operation(watch_, connection_, Watch::Kind::farewell);
    connection_.Disconnect();
}

void Client::Connect(const Url& url) {
    url_ = url;
    const hostkit::ConnectRequest request = RequestFor(url);
    hostkit::ConnectResult result;
    {
        const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
        result = connection_.Connect(request);
    }
    CheckVerdict();
    if (result.outcome == hostkit::ConnectOutcome::cancelled) {
        RefuseWithoutPassword(Account(url));
    }
    if (!result.Connected()) {
        throw Failure(ExitStatus::noConnection,
                      url.HostText() + ": " + WordsOr(result.text, "no connection"));
    }
}

hostkit::ConnectRequest Client::RequestFor(const Url& url) {
    hostkit::ConnectRequest request;
    if (url.site.empty()) {
        password_ = url.password;
        if (!password_ && WantsPassword(url)) {
            password_ = NetrcPassword(url.host, url.user);
        }
        const bool sendsItUnasked =
            options_.firewall && (firewallTraits[options_.firewall->type] & sendsUserPassword) != 0;
        if (!password_ && WantsPassword(url) && sendsItUnasked) {
            password_ = AskedPassword(Account(url));
        }
        request.host = url.HostText();
        request.user = url.user;
        request.password = password_.value_or("");
        request.passive = options_.passive;
    } else {
        request.site = url.site;
        if (!options_.passive) {
            request.passive = false;
        }
    }
    if (options_.firewall) {
        request.firewall = FirewallFor(*options_.firewall);
    }
    return request;
}

std::optional<std::string> Client::NetrcPassword(const std::string& host, const std::string& user) {
    const char* home = std::getenv("HOME");
    if (home == nullptr) {
        return std::nullopt;
    }
    return ReadNetrcPassword(
        std::string(home) + "/.netrc", host, user,
        [this](const std::string& warning) { status_.Line("quennet: " + warning); });
}

hostkit::FirewallRequest Client::FirewallFor(const Firewall& firewall) {
    hostkit::FirewallRequest request;
    request.type = firewall.type;
    request.host = firewall.host;
    request.user = firewall.user;
    if ((firewallTraits[firewall.type] & sendsFirewallPassword) != 0 && !firewall.user.empty()) {
        const std::string host = firewall.host.substr(0, firewall.host.find(':'));
        const auto kept = NetrcPassword(host, firewall.user);
        request.password = kept ? *kept : AskedPassword(firewall.user + "@" + firewall.host);
    }
    return request;
}

std::string Client::AskedPassword(const std::string& account) {
    const auto answer =
        CanAsk() ? AskSecret(status_, watch_, "Password of " + account + ": ") : std::nullopt;
    CheckVerdict();
    if (!answer) {
        RefuseWithoutPassword(account);
    }
    return *answer;
}

std::optional<std::string> Client::AskPassword() {
    if (password_ || !CanAsk()) {
        return password_;
    }
    return AskSecret(status_, watch_, "Password of " + Account(url_) + ": ");
}

std::optional<std::string> Client::Enter(const std::string& path) {
    CheckVerdict();
    if (path.empty()) {
        return std::nullopt;
    }
    const std::string serverPath = ServerPath(path);
    hostkit::DirectoryResult result;
    {
        const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
        result = connection_.ChangeDirectory(serverPath);
        if (!result.Done() && !result.answered && !watch_.Ended()) {
            // The connection was lost over it, which says nothing of the directory.
            result = connection_.ChangeDirectory(serverPath);
        }
    }
    CheckVerdict();
    return result.Done() ? std::nullopt : std::optional(WordsOr(result.text, connectionLost));
}

hostkit::ListResult Client::ReadListing(bool whole) {
    const Watch::Operation operation(watch_, connection_, Watch::Kind::data);
    return whole ? hostkit::ListWhole(connection_) : connection_.List();
}

hostkit::Listing Client::List(bool whole) {
    hostkit::ListResult result;
    if (whole) {
        Work(Watch::Kind::data,
             [&](hostkit::Connection& connection) { result = hostkit::ListWhole(connection); });
    } else {
        result = ReadListing(false);
    }
    CheckVerdict();
    if (!result.done) {
        throw NoListing(connection_, WordsOr(result.text, connectionLost));
    }
    return std::move(result.entries);
}

std::optional<hostkit::Listing> Client::TryList(bool whole) {
    hostkit::ListResult result = ReadListing(whole);
    CheckVerdict();
    return result.done ? std::optional(std::move(result.entries)) : std::nullopt;
}

hostkit::TransferResult Client::Download(const hostkit::DownloadRequest& request,
                                         hostkit::TransferOperation& operation,
                                         std::function<void()> tick) {
    CheckVerdict();
    const Watch::Operation running(watch_, connection_, Watch::Kind::data, std::move(tick));
    return connection_.Download(request, operation);
}

hostkit::TransferResult Client::Upload(const hostkit::UploadRequest& request,
                                       const hostkit::Listing& there,
                                       hostkit::TransferOperation& operation,
                                       std::function<void()> tick) {
    CheckVerdict();
    const Watch::Operation running(watch_, connection_, Watch::Kind::data, std::move(tick));
    return connection_.Upload(request, there, operation);
}

hostkit::CommandResult Client::DeleteFile(const std::string& name) {
    const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
    return connection_.DeleteFile(name);
}

hostkit::CommandResult Client::RemoveDirectory(const std::string& name) {
    const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
    return connection_.RemoveEmptyDirectory(name);
}

hostkit::CommandResult Client::MakeDirectory(const std::string& path) {
    const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
    return connection_.MakeDirectory(path);
}

hostkit::CommandResult Client::Rename(const std::string& oldName, const std::string& newName) {
    const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
    return connection_.Rename(oldName, newName);
}

hostkit::Presence Client::PresenceOf(const std::string& name) {
    hostkit::Presence presence = hostkit::Presence::unknown;
    Work(Watch::Kind::command,
         [&](hostkit::Connection& connection) { presence = connection.PresenceOf(name); });
    CheckVerdict();
    return presence;
}

void Client::Work(Watch::Kind kind,
                  const std::function<void(hostkit::Connection& connection)>& work,
                  std::function<void()> tick) {
    CheckVerdict();
    const Watch::Operation operation(watch_, connection_, kind, std::move(tick));
    work(connection_);
}

std::optional<std::string> Client::TypeLine(const std::string& line) {
    CheckVerdict();
    {
        const std::lock_guard lock(mutex_);
        takesReplies_ = true;
    }
    {
        // The end of the connection waits for the line's replies.
        const Watch::Operation operation(watch_, connection_, Watch::Kind::command);
        if (!connection_.StartTypedLine(line)) {
            throw Failure(ExitStatus::failed, "the line is too long to be sent");
        }
        connection_.Disconnect();
    }
    const std::lock_guard lock(mutex_);
    StandardOutput output;
    hostkit::FailureCause cause;
    for (std::size_t i = 0; i < replies_.size(); ++i) {
        if (replies_[i] != line) {  // the echo
            cause.Take(replies_[i]);
        }
        if (i > 0) {
            output.Write(HarmlessText(replies_[i]) + "\n");
        }
    }
    output.Flush();
    const bool isAgreed =
        cause.Answered() && replies_.back()[0] >= '1' && replies_.back()[0] <= '3';
    return isAgreed ? std::nullopt : std::optional(cause.Text());
}

void Client::TakeLine(const std::string& line) {
    watch_.Moved();
    {
        // The line behind the command is its reply.
        const std::lock_guard lock(mutex_);
        if (listener_) {
            listener_(line);
        }
        takesReplies_ = takesReplies_ && line != "QUIT";
        if (takesReplies_) {
            replies_.push_back(line);
        }
        if (systemComes_) {
            listsBytes_ = line.find("MVS") == line.npos;
        }
        systemComes_ = line == "SYST";
    }
    if (options_.verbose) {
        status_.Line(HoldsPassword(line) ? "***" : line);
    }
}

void Client::Listen(std::function<void(const std::string& line)> listener) {
    const std::lock_guard lock(mutex_);
    listener_ = std::move(listener);
}

bool Client::ListsBytes() const {
    const std::lock_guard lock(mutex_);
    return listsBytes_;
}

void Client::CheckVerdict() const {
    if (watch_.Ended()) {
        throw Failure(ExitStatus::failed, watch_.Reason());
    }
}

hostkit::HostOptions HostOptionsFor(const Options& options, const Url& url, Status& status) {
    const auto tell = [&](hostkit::u32, const std::string& text) {
        if (options.verbose) {
            status.Line(text);
        }
    };
    hostkit::HostOptions host;
    host.showMessage = tell;
    host.reportError = tell;
    host.listingLimit = options.listingLimit;
    if (!url.site.empty()) {
        UseStoredSettings(host);
    }
    return host;
}

std::string WordsOr(const std::string& words, const char* otherwise) {
    return words.empty() ? otherwise : words;
}

Failure NoListing(const hostkit::Connection& connection, const std::string& words) {
    const bool isHint = connection.IsActive() && !words.starts_with("55");
    return {
        ExitStatus::failed,
        "no listing: " + words +
            (isHint ? " (an active connection: the server has to reach this machine; the site's "
                      "box Passive mode, or no --active, changes that)"
                    : "")};
}

}  // namespace cli
