#pragma once
// One connection to the server of a URL. Failures come as exceptions, with the server's words.

#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "hostkit/connection.h"
#include "hostkit/trees.h"
#include "options.h"
#include "status.h"
#include "url.h"
#include "watch.h"

namespace cli {

class Client {
  public:
    Client(hostkit::Host& host, Watch& watch, Status& status, const Options& options);
    /// Says goodbye to the server.
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    /// Connects and logs in. The password comes from the URL or the site book, else from ~/.netrc,
    /// else the person at the terminal is asked when the server wants one; before the login where a
    /// firewall wants it.
    void Connect(const Url& url);

    /// Goes to a directory; the empty path is where the session stands. Gives the server's words
    /// when it can't be entered.
    std::optional<std::string> Enter(const std::string& path);

    /// Lists the directory entered last; `whole` with the entries that the server hides.
    hostkit::Listing List(bool whole = false);
    /// The same; nothing when the server gives no listing.
    std::optional<hostkit::Listing> TryList(bool whole = false);

    /// Downloads a file. `tick` is called while it runs, on another thread.
    hostkit::TransferResult Download(const hostkit::DownloadRequest& request,
                                     hostkit::TransferOperation& operation,
                                     std::function<void()> tick);

    /// Uploads a file into the directory entered last.
    hostkit::TransferResult Upload(const hostkit::UploadRequest& request,
                                   const hostkit::Listing& there,
                                   hostkit::TransferOperation& operation,
                                   std::function<void()> tick);

    // Commands on names in the directory entered last.
    hostkit::CommandResult DeleteFile(const std::string& name);
    hostkit::CommandResult RemoveDirectory(const std::string& name);
    hostkit::CommandResult MakeDirectory(const std::string& path);
    hostkit::CommandResult Rename(const std::string& oldName, const std::string& newName);

    /// Whether the server has what its listing does not show, see Connection.
    hostkit::Presence PresenceOf(const std::string& name);

    /// Runs operations on the connection, which is aborted when the watch ends the command. `tick`
    /// is called meanwhile, on another thread.
    void Work(Watch::Kind kind, const std::function<void(hostkit::Connection& connection)>& work,
              std::function<void()> tick = {});

    /// Sends a line as it is typed, prints its replies on standard output and disconnects. Gives
    /// why it failed, if it did.
    std::optional<std::string> TypeLine(const std::string& line);

    /// Whether sizes in listings count bytes. MVS lists blocks and lines.
    bool ListsBytes() const;

    /// Has each line of the console told, on whatever thread it comes. An empty function ends that.
    void Listen(std::function<void(const std::string& line)> listener);

    /// Ends the command when the watch has decided so.
    void CheckVerdict() const;

  private:
    hostkit::ConnectRequest RequestFor(const Url& url);
    std::optional<std::string> NetrcPassword(const std::string& host, const std::string& user);
    std::string AskedPassword(const std::string& account);
    hostkit::FirewallRequest FirewallFor(const Firewall& firewall);
    std::optional<std::string> AskPassword();
    void TakeLine(const std::string& line);
    hostkit::ListResult ReadListing(bool whole);

    Watch& watch_;
    Status& status_;
    const Options& options_;
    Url url_;
    std::optional<std::string> password_;  // known without a question

    mutable std::mutex mutex_;  // of what the console tells
    bool systemComes_ = false;
    bool listsBytes_ = true;
    bool takesReplies_ = false;  // to a typed line
    std::vector<std::string> replies_;
    std::function<void(const std::string& line)> listener_;

    hostkit::Connection connection_;  // behind what its lines go into
};

/// What a host does for the commands: failures to reconnect are told with -v alone, since the
/// command that failed tells more. A stored site brings the book with it.
hostkit::HostOptions HostOptionsFor(const Options& options, const Url& url, Status& status);

using hostkit::ServerPath;

/// The server's words, or what takes their place without any.
std::string WordsOr(const std::string& words, const char* otherwise);

/// The end of a command that got no listing, with the server's words. Of a connection that is
/// active it says so, unless the server has refused the directory, and where to change that.
Failure NoListing(const hostkit::Connection& connection, const std::string& words);

}  // namespace cli
