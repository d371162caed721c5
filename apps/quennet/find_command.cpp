// quennet find: a search through the find window, unseen or with a person at it.

#include <unistd.h>

#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "client.h"
#include "commands.h"
#include "failure.h"
#include "find_export.h"
#include "find_omissions.h"
#include "hostkit/search.h"
#include "module_host.h"
#include "server_use.h"
#include "standard_output.h"
#include "stored_settings.h"
#include "terminal_display.h"
#include "terminal_text.h"

namespace cli {

namespace {

using hostkit::Connection;
using hostkit::Search;
using hostkit::SearchBox;

std::string LineOf(const std::string& path, const Options& options) {
    return (options.porcelain ? PorcelainText(path) : HarmlessText(path)) + "\n";
}

/// A search, and the thread that may have to end it. The connection works on it as long as `Work`
/// runs; the search outlives that.
class Finder {
  public:
    Finder(hostkit::Host& host, Client& client, Watch& watch, const Options& options)
        : host_(host), client_(client), watch_(watch), options_(options) {}

    /// Opens the window and works it on behalf of the connection.
    void Work(Watch::Kind kind, const std::function<void(Search& search)>& work) {
        const auto end = [this] {
            if (Search* search = watch_.Ended() ? open_.load() : nullptr) {
                search->Stop();
            }
        };
        client_.Work(
            kind,
            [&](Connection& connection) {
                search_ =
                    std::make_unique<Search>(host_, connection, filter_, connection.Directory());
                search_->SetMask(options_.mask);
                search_->SetBox(SearchBox::subfolders, options_.subfolders);
                search_->SetBox(SearchBox::allEntries, options_.allEntries);
                open_ = search_.get();
                work(*search_);
                lost_ = !connection.CheckDirectory(connection.Directory()).Done();
            },
            end);
    }

    Search& Result() { return *search_; }
    bool Lost() const { return lost_; }

  private:
    hostkit::Host& host_;
    Client& client_;
    Watch& watch_;
    const Options& options_;
    hostkit::FilterRecord filter_ = hostkit::openFilter;
    std::unique_ptr<Search> search_;
    std::atomic<Search*> open_ = nullptr;
    bool lost_ = false;
};

void Find(Finder& finder, Client& client, const Options& options) {
    bool ended = false;
    Omissions omissions;
    client.Listen([&](const std::string& line) { omissions.TakeLine(line); });
    finder.Work(Watch::Kind::data, [&](Search& search) { ended = search.Run(); });
    client.Listen({});
    StandardOutput output;
    finder.Result().ForEachPath(
        [&](const std::string& path) { output.Write(LineOf(path, options)); });
    output.Flush();
    client.CheckVerdict();
    if (finder.Lost() || omissions.AnyUnanswered() || !ended) {
        throw Failure(ExitStatus::failed, "the connection was lost, so this is not all");
    }
    WriteExports(options, finder.Result());
    omissions.Check();
}

/// Gives the path that the person went to, empty without one.
std::string FindInWindow(Finder& finder, const Options& options, Status& status) {
    std::string path;
    const Status::Hold hold(status);  // until the terminal is free
    const TerminalDisplay display;
    finder.Work(Watch::Kind::untimed, [&](Search& search) {
        if (!options.mask.empty()) {
            search.Start();
        }
        path = search.AwaitClose();
    });
    return path;
}

void ShowInWindow(Finder& finder, Client& client, const Options& options, Status& status) {
    Omissions omissions;
    client.Listen([&](const std::string& line) { omissions.TakeLine(line); });
    const std::string path = FindInWindow(finder, options, status);
    client.Listen({});
    if (const std::string tooLong = omissions.TooLong(); !tooLong.empty()) {
        status.Line(tooLong);
    }
    client.CheckVerdict();
    if (!path.empty()) {
        StandardOutput output;
        output.Write(LineOf(path, options));
        output.Flush();
    }
}

/// The window of a person keeps its place in the settings, that of a command leaves none there.
hostkit::HostOptions HostFor(const Options& options, const Url& url, Status& status) {
    hostkit::HostOptions host = HostOptionsFor(options, url, status);
    if (options.window) {
        UseStoredSettings(host);
        host.reportError = [&status](hostkit::u32, const std::string& text) {
            status.Line("quennet: " + text);
        };
        host.setForeground = quennet::RaiseInTerminal;
    } else if (host.settings != nullptr) {
        host.settings = host.settings->PrivateCopy();
    }
    return host;
}

void CheckWindow(const Options& options) {
    if (options.textFile || options.csvFile || options.htmlFile) {
        throw Failure(ExitStatus::usage, "the window of --window writes lists itself");
    }
    if (isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) {
        throw Failure(ExitStatus::usage, "--window wants a terminal");
    }
}

}  // namespace

void RunFind(const Options& options, Watch& watch, Status& status) {
    const Url url = WithoutEndSlashes(ParseUrl(options.url));
    if (options.window) {
        CheckWindow(options);
    }
    CheckExports(options);
    RunWithModule(HostFor(options, url, status), [&](hostkit::Host& host) {
        Client client(host, watch, status, options);
        client.Connect(url);
        EnterOrFail(client, url.path);
        Finder finder(host, client, watch, options);
        if (options.window) {
            ShowInWindow(finder, client, options, status);
        } else {
            Find(finder, client, options);
        }
    });
}

}  // namespace cli
