#pragma once
// One connection to one server, driven through the module's function.
//
// Its operations block and are meant for a job's thread (message_loop.h) while the loop's thread
// serves messages; on the loop's thread itself only `Abort` and `Directory` are of use. One
// operation at a time; `Abort` may come from any thread at any time, `Disconnect` from any thread:
// it waits for an operation that runs.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "host/records.h"
#include "hostkit/binary_type.h"
#include "hostkit/console.h"
#include "hostkit/failure_cause.h"
#include "hostkit/files.h"
#include "hostkit/host.h"
#include "hostkit/listing.h"
#include "hostkit/panels.h"
#include "hostkit/transfer.h"

namespace hostkit {

/// What goes into the firewall dialog.
struct FirewallRequest {
    u32 type = 1;          // 1 to 6, as the dialog lists them
    std::string host;      // at most 79 bytes, may carry ":port"
    std::string user;      // at most 79 bytes
    std::string password;  // at most 79 bytes
};

/// What goes into the connection dialog.
struct ConnectRequest {
    /// A site of the book, by its name without regard to case. Its fields count where those below
    /// are empty.
    std::string site;

    std::string name;       // label in the log; empty: the host
    std::string host;       // at most 79 bytes, may carry ":port"
    std::string user;       // at most 79 bytes; empty or "anonymous": anonymous
    std::string password;   // at most 79 bytes; empty: asked for, but a mail address when anonymous
    std::string directory;  // to begin in, at most 258 bytes; empty: the login directory. A
                            // directory that cannot be entered goes unnoticed: see ChangeDirectory
    std::optional<bool> passive;  // nothing: as the site has it, else passive
    std::optional<FirewallRequest> firewall;

    /// The dialog's settings; null: a private copy of the host's, never written back.
    std::shared_ptr<SettingsStore> settings;
};

enum class ConnectOutcome {
    connected,
    failed,     // with a text
    cancelled,  // the dialog or the password question
};

struct ConnectResult {
    ConnectOutcome outcome = ConnectOutcome::failed;
    std::string text;  // the cause, if it failed
    bool Connected() const { return outcome == ConnectOutcome::connected; }
};

/// Result of an operation that the server answers with a reply class.
struct CommandResult {
    i32 result = -1;   // the message's
    std::string text;  // the cause, if it failed: the server's refusal, or what else the log tells
    bool answered = false;  // the last command has its reply, so the connection stands
    bool Done() const { return result == 0; }
};

struct DirectoryResult : CommandResult {
    std::string directory;  // where the server stands now
};

struct ListResult {
    bool done = false;
    Listing entries;
    std::string text;  // the cause, if it failed
};

/// What a server is known to have under a name.
enum class Presence { there, missing, unknown };

struct DownloadRequest {
    std::string source;       // the server's path, at most 259 bytes
    std::string destination;  // the local path
    u64 size = 0;             // as listed; 0 (unknown) never resumes
    u16 date = 0;             // DOS date and time for the local file; 0 leaves it as it is
    u16 time = 0;
};

struct UploadRequest {
    std::string source;  // the local path
    std::string name;    // in the session's directory, at most 259 bytes
};

enum class TransferOutcome { done, leftOut, failed };

struct TransferResult {
    TransferOutcome outcome = TransferOutcome::failed;
    std::string text;                         // the cause, if it failed
    bool answered = false;                    // the last command has its reply
    std::optional<FileFailure> localFailure;  // if a local operation failed
    bool Done() const { return outcome == TransferOutcome::done; }
};

struct ServerCopyRequest;
struct ServerCopyResult;

struct ConnectionOptions {
    Console::Sink console;  // the log
    /// Instead of the host's; nothing is a cancel.
    PasswordFunction askPassword;
    /// The connection was lost and could not be made again.
    std::function<void()> reconnectFailed;
};

class Connection final : private Panel {
  public:
    explicit Connection(Host& host, ConnectionOptions options = {});
    /// Disconnects.
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Opens the connection dialog unseen, fills it in, and waits until the login has ended. A
    /// connection that is live is disconnected first.
    ConnectResult Connect(const ConnectRequest& request);

    /// The same with a person at the dialog, who edits the site book there, and is told when OK
    /// comes without a host.
    ConnectResult ConnectAsked(HWND owner);

    /// Ends the connection, after the operation that runs; waits until all of it is gone.
    void Disconnect();

    /// Ends the wait or the transfer in progress. Until the running operation has returned, no
    /// local file is created for it. Any thread; one call may not be enough, so a host repeats it.
    void Abort();

    bool Connected() const { return Handle() != nullptr; }

    /// The directory in which the session stands, with the server's words; empty if not connected.
    std::string Directory();

    /// Goes to a directory and finds out what the server calls it; the session stays where it was.
    DirectoryResult CheckDirectory(const std::string& path);

    /// Makes a directory the session's own. It is checked first; then the worker of the change is
    /// waited for.
    DirectoryResult ChangeDirectory(const std::string& path);

    /// The server opens its data connections, and must be able to reach this machine.
    bool IsActive() const;

    /// Lists the session's directory, from the cache if it is there. `longForm` asks the server for
    /// all entries.
    ListResult List(bool longForm = false);

    void InvalidateListing();  // of the session's directory
    void InvalidateAllListings();

    /// Downloads one file. An existing local file is asked about.
    TransferResult Download(const DownloadRequest& request, TransferOperation& operation);

    /// Uploads one file into the session's directory. A name that is in `there`, the directory's
    /// listing, is asked about. A local file that can't be opened is a failure before anything is
    /// sent.
    TransferResult Upload(const UploadRequest& request, const Listing& there,
                          TransferOperation& operation);

    // Commands on the server's files, each with the server's words when it fails. Names are those
    // in the session's directory, or paths.
    CommandResult DeleteFile(const std::string& name);
    CommandResult RemoveDirectory(const std::string& name);  // a file where it is none
    CommandResult RemoveEmptyDirectory(const std::string& name);
    CommandResult MakeDirectory(const std::string& path);  // with the parents that are missing
    CommandResult Rename(const std::string& oldName, const std::string& newName);

    /// Sends a line as it is typed; its replies stand in the log. `Disconnect` waits for them.
    /// False when it was not sent: without a connection, and for more than 1,023 bytes.
    bool StartTypedLine(const std::string& line);
    static constexpr std::size_t longestTypedLine = 1023;

    /// Sends such a line, waits for its end and gives the last line of its replies; empty without
    /// any. All listings are stale after one that the server has carried out.
    std::string Ask(const std::string& line);

    /// Whether the server has something under a name, or a path from the session's directory, that
    /// the listing does not show: hidden ones may not be listed, nor names in another case. Asks by
    /// MDTM and SIZE where the server knows them, else by the whole listing; `isListed` says that
    /// this one was looked at already. A directory may be `missing`.
    Presence PresenceOf(const std::string& name, bool isListed = false);

    /// Changes the permissions of an entry of the session's directory, which has `attributes` now:
    /// the record's masks and name say how and of which.
    CommandResult ChangePermissions(quennet::TransferRecord& record, u16 attributes);

    /// Has a person say what is to change, in the module's permission dialog; the record says of
    /// what, and takes the masks. False when it was cancelled. For a host whose windows can be
    /// seen.
    bool AskPermissions(HWND owner, quennet::TransferRecord& record);

    /// Writes the raw text of the session's listing to a file, if there is one. 0 or an errno
    /// value.
    int SaveRawListing(LocalFile& file);

    /// The handle for messages that have no operation here; null when there is none. It is good
    /// until `Disconnect`.
    quennet::FtpHandle* Handle() const;

    Console& GetConsole() { return console_; }

  private:
    class Use;
    friend ServerCopyResult CopyBetween(Connection& source, Connection& destination,
                                        const ServerCopyRequest& request,
                                        TransferOperation& operation);
    enum class State { idle, connecting, connected, failed, closing };

    // Panel: what the module tells.
    void PanelConnected(quennet::SiteRecord*) override {}
    void PanelClosed() override {}
    void Connected(u16 cookie) override;
    void ConnectFailed(const std::string& text) override;
    void ReconnectFailed() override;
    void DirectoryChangeBegan(u16 cookie) override;
    void DirectoryChangeEnded(u16 cookie, bool done) override;
    bool OwnsHandle(const void* handle) const override;
    void BeforeFree() override;
    bool OwnsServerName(const char* name) const override;
    PasswordFunction PasswordSource() const override;
    void PasswordCancelled() override;

    using Time = std::chrono::steady_clock::time_point;

    TransferResult Transfer(quennet::TransferItem& item, TransferOperation& operation,
                            const std::function<i32(quennet::FtpHandle* handle)>& send);
    template <typename... Arguments>
    CommandResult Command(quennet::MessageNumber message, Arguments... arguments);
    void TakeLine(const std::string& line);
    void BeginOperation();
    bool BlockIsGone() const;
    template <typename Dialog>
    ConnectResult ConnectThrough(Dialog dialog);
    void RunUnseenDialog(const ConnectRequest& request);
    void RunDialog(HWND owner, const std::function<void(HWND dialog)>& take);
    bool WaitForChange();
    void SetUnnamed(const std::string& directory);
    ListResult ListHidden();
    void ReturnFromCheck(quennet::FtpHandle* handle);
    std::string Cause() const;
    template <typename Result>
    void ExplainFailure(Result& result) const;
    struct InAnyCase {
        bool operator()(const std::string& left, const std::string& right) const;
    };
    struct KeptListing {
        std::string directory;
        bool mayTellMore = true;  // than the module's entries
    };
    KeptListing& TakeKeptListing(quennet::FtpHandle* handle);

    bool EnterUnnamed();
    bool ListUnnamed(u32 option, Listing& entries, quennet::FtpHandle* handle);
    std::string Named(const std::string& name) const;
    std::string LastReply() const;

    Host& host_;
    const ConnectionOptions options_;
    HostWord holder_ = 0;  // the module writes it
    quennet::ConnectParams params_ = {};
    std::atomic<bool> abortPending_ = false;
    BinaryType binaryType_;
    /// A directory whose name the session has no room for, or loses at a quote; empty when its own
    /// is meant. Names in it are told as whole paths, as a repair leads elsewhere.
    /// The job's thread alone writes it, inside the lock, under which others read it.
    std::string unnamed_;
    std::atomic<u32> logins_ = 0;  // seen in the log
    bool knowsDates_ = true;       // that is MDTM, as far as is known
    bool knowsSizes_ = true;       // SIZE
    std::map<std::string, KeptListing, InAnyCase> keptListings_;  // by their directories

    mutable std::mutex mutex_;  // of all that follows
    std::condition_variable unused_;
    State state_ = State::idle;
    std::string failureText_;
    bool cancelled_ = false;
    HostWord block_ = 0;              // address of the handle until it is given back
    HostWord site_ = 0;               // address of the session's SiteRecord
    int uses_ = 0;                    // operations that may look at the handle
    u16 wantedCookie_ = 0;            // of the change of directory that is awaited
    bool changeBegun_ = false;        // that change has its thread
    std::optional<bool> changeDone_;  // once it has ended
    FailureCause cause_;              // should the operation that runs fail
    Time lastLineTime_;               // of the console

    Console console_;  // behind what its lines go into
    u8 panelId_;
};

}  // namespace hostkit
