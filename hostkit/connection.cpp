#include "hostkit/connection.h"

#include <strings.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "hostkit/connection_dialog.h"
#include "hostkit/connection_use.h"
#include "hostkit/directory_change.h"
#include "hostkit/directory_name.h"
#include "hostkit/directory_read.h"
#include "hostkit/remote_tree.h"
#include "hostkit/services.h"

namespace hostkit {

namespace {

using quennet::FtpHandle;
using quennet::MessageNumber;
using quennet::SiteRecord;

constexpr auto disconnectPatience = std::chrono::seconds(2);
/// A text for which there is no memory is left out: the end that it tells of is not.
template <typename Text>
std::string OrEmpty(Text text) {
    try {
        return text();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

// Longer than any single wait of the module for a server: a change of directory of which nothing is
// heard for so long could not be started.
constexpr auto longestSilence = std::chrono::seconds(100);

/// Where a change of directory leads when it meets no link.
std::string StepTo(const std::string& path, const std::string& from) {
    return path.starts_with('/') ? path
                                 : JoinPath(from, path.starts_with("./") ? path.substr(2) : path);
}

}  // namespace

bool Connection::InAnyCase::operator()(const std::string& left, const std::string& right) const {
    return strcasecmp(left.c_str(), right.c_str()) < 0;
}

Connection::Connection(Host& host, ConnectionOptions options)
    : host_(host),
      options_(std::move(options)),
      console_(host, [this](const std::string& line) { TakeLine(line); }),
      panelId_(host.GetPanels().Add(*this)) {}

Connection::~Connection() {
    Disconnect();
    host_.GetPanels().Remove(panelId_);
}

FtpHandle* Connection::Handle() const {
    auto& holder = const_cast<HostWord&>(holder_);
    return quennet::PointerFromWord<FtpHandle>(std::atomic_ref(holder).load());
}

ConnectResult Connection::Connect(const ConnectRequest& request) {
    if (const std::string refusal = RefusalOf(host_, request); !refusal.empty()) {
        return {ConnectOutcome::failed, refusal};
    }
    return ConnectThrough([&] { RunUnseenDialog(request); });
}

ConnectResult Connection::ConnectAsked(HWND owner) {
    const auto initDialog = host_.Options().initDialog;
    return ConnectThrough([&] {
        RunDialog(owner, [&](HWND dialog) {
            HelpAtDialog(dialog);
            if (initDialog) {
                initDialog(dialog);
            }
        });
        const std::lock_guard lock(mutex_);
        cancelled_ = !Connected();
    });
}

/// Runs a dialog on the loop's thread and waits for the end of the login. A dialog that leaves no
/// handle was cancelled.
template <typename Dialog>
ConnectResult Connection::ConnectThrough(Dialog dialog) {
    Disconnect();
    BeginOperation();
    keptListings_.clear();
    unnamed_.clear();
    knowsDates_ = knowsSizes_ = true;
    {
        const std::lock_guard lock(mutex_);
        state_ = State::connecting;
        failureText_ = "the connection could not be started";
        cancelled_ = false;
    }
    {
        const std::lock_guard lock(host_.DialogMutex());
        host_.Loop().Invoke(dialog);
    }
    if (Connected()) {
        host_.Loop().WaitUntil([&] {
            const std::lock_guard lock(mutex_);
            return state_ != State::connecting;
        });
    }
    std::unique_lock lock(mutex_);
    if (state_ == State::connected) {
        return {ConnectOutcome::connected, {}};
    }
    const auto outcome = cancelled_ ? ConnectOutcome::cancelled : ConnectOutcome::failed;
    const ConnectResult result = {outcome, failureText_};
    lock.unlock();
    Disconnect();
    return result;
}

void Connection::RunUnseenDialog(const ConnectRequest& request) {
    const PrivateSettings settings(request.settings != nullptr ? request.settings
                                                               : UnseenSettings(host_, request));
    ConnectionDialogUser user(host_.Loop(), request);
    RunDialog(nullptr, [&](HWND dialog) { user.Take(dialog); });
}

/// Sends the connect message, on the loop's thread; `take` gets each dialog that opens.
void Connection::RunDialog(HWND owner, const std::function<void(HWND dialog)>& take) {
    const DialogHook hook([&](HWND dialog) {
        {
            const std::lock_guard lock(mutex_);
            site_ = params_.site;
        }
        take(dialog);
    });
    params_.section = quennet::WordFromPointer(host_.Options().section.c_str());
    params_.instance = quennet::WordFromPointer(host_.Instance());
    params_.watchdogInstance = params_.instance;
    host_.Send(MessageNumber::connect, owner != nullptr ? owner : host_.MainWindow(), &holder_,
               console_.Number(), panelId_, host_.SocketUseCounter(),
               host_.GetPanels().NextCookie(), &params_);
    const std::lock_guard lock(mutex_);
    block_ = quennet::WordFromPointer(Handle());
    // Without a handle the record is gone, and another connection's may get its address.
    site_ = block_ != 0 ? site_ : 0;
}

void Connection::Disconnect() {
    {
        const std::lock_guard lock(mutex_);
        if (block_ == 0) {
            state_ = State::idle;
            return;
        }
        state_ = State::closing;
    }
    // A second message does nothing; it counts when there was no thread for the first.
    do {
        host_.Send(MessageNumber::disconnect, &holder_);
    } while (!host_.Loop().WaitUntil([&] { return BlockIsGone(); }, disconnectPatience));
    const std::lock_guard lock(mutex_);
    state_ = State::idle;
}

bool Connection::BlockIsGone() const {
    const std::lock_guard lock(mutex_);
    return block_ == 0;
}

void Connection::Abort() {
    abortPending_ = true;
    const Use use(*this, true);
    if (use.Handle() != nullptr) {
        host_.Send(MessageNumber::abortCommand, use.Handle());
    }
}

std::string Connection::Directory() {
    if (!unnamed_.empty()) {
        return unnamed_;
    }
    char directory[pathSize] = "";
    const Use use(*this);
    if (use.Handle() != nullptr) {
        host_.Send(MessageNumber::getDirectory, use.Handle(), directory, sizeof(directory));
    }
    return directory;
}

DirectoryResult Connection::CheckDirectory(const std::string& path) {
    DirectoryResult result;
    const std::string step = StepTo(path, Directory());
    const Use use(*this);
    if (use.Handle() == nullptr) {
        result.text = notConnected;
        return result;
    }
    BeginOperation();
    // The reply in the log has the whole name, which the message's own buffer has no room for.
    result.result = host_.Send(MessageNumber::changeDirSync,
                               (unnamed_.empty() ? path : step).c_str(), use.Handle(), 0);
    if (result.Done() && !path.empty()) {
        if (const auto directory = DirectoryIn(LastReply(), step)) {
            result.directory = *directory;
            return result;
        }
        result.result = -1;  // the server has not said where it stands
        ExplainFailure(result);
        ReturnFromCheck(use.Handle());
    } else if (!result.Done()) {
        ExplainFailure(result);
    }
    return result;
}

DirectoryResult Connection::ChangeDirectory(const std::string& path) {
    DirectoryResult result = CheckDirectory(path);
    if (!result.Done() || result.directory.empty()) {
        return result;
    }
    if (result.directory.size() >= pathSize || result.directory.find('"') != std::string::npos) {
        unnamed_ = result.directory;
        return result;
    }
    unnamed_.clear();
    const Use use(*this);
    const u16 cookie = host_.GetPanels().NextCookie();
    BeginOperation();
    {
        const std::lock_guard lock(mutex_);
        wantedCookie_ = cookie;
        changeDone_.reset();
    }
    if (use.Handle() != nullptr) {
        StartDirectoryChange(host_, use.Handle(), result.directory, cookie);
    }
    if (use.Handle() == nullptr || !WaitForChange()) {
        result.result = -1;
        ExplainFailure(result);
        ReturnFromCheck(use.Handle());
    }
    return result;
}

/// Takes the server back from a directory that was checked and did not become the session's own.
void Connection::ReturnFromCheck(FtpHandle* handle) {
    const std::string own = Directory();
    if (handle != nullptr && !own.empty() && !abortPending_) {
        host_.Send(MessageNumber::changeDirSync, own.c_str(), handle, 0);
    }
}

/// The path of what is in the session's directory, where only whole paths will do.
std::string Connection::Named(const std::string& name) const {
    return unnamed_.empty() ? name : StepTo(name, unnamed_);
}

std::string Connection::LastReply() const {
    const std::lock_guard lock(mutex_);
    return cause_.LastReply();
}

bool Connection::EnterUnnamed() {
    const DirectoryResult entered = CheckDirectory(unnamed_);
    return entered.Done() && entered.directory == unnamed_;
}

/// A listing that met a repair is another directory's.
bool Connection::ListUnnamed(u32 option, Listing& entries, FtpHandle* handle) {
    constexpr int attempts = 2;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const u32 logins = logins_;
        Listing read;
        const bool done =
            EnterUnnamed() && ReadDirectoryThrough(host_, unnamed_.c_str(), handle, option, read);
        if (logins_ == logins) {
            entries = std::move(read);
            return done;
        }
    }
    return false;
}

bool Connection::WaitForChange() {
    const auto ended = [&] {
        const std::lock_guard lock(mutex_);
        return changeDone_ || state_ == State::closing;
    };
    const auto isSilent = [&] {
        const std::lock_guard lock(mutex_);
        return std::chrono::steady_clock::now() - lastLineTime_ > longestSilence;
    };
    while (!host_.Loop().WaitUntil(ended, longestSilence) && !isSilent()) {
    }
    const std::lock_guard lock(mutex_);
    wantedCookie_ = 0;
    return changeDone_.value_or(false);
}

ListResult Connection::List(bool longForm) {
    ListResult result;
    const Use use(*this);
    if (use.Handle() == nullptr) {
        result.text = notConnected;
        return result;
    }
    BeginOperation();
    ClearFileFailure();
    const u32 option = longForm ? 1 : 0;
    if (!unnamed_.empty()) {
        result.done = ListUnnamed(option, result.entries, use.Handle());
    } else {
        KeptListing& kept = TakeKeptListing(use.Handle());
        result.done = ReadDirectoryThrough(host_, nullptr, use.Handle(), option, result.entries,
                                           kept.mayTellMore);
    }
    if (!result.done) {
        result.text = LastFileFailure() ? LastFileFailure()->Text() : Cause();
    }
    return result;
}

/// By its name: without one the message means what was listed last, which after a change of
/// directory is nothing.
void Connection::InvalidateListing() {
    const std::string directory = Directory();
    const Use use(*this);
    if (use.Handle() != nullptr) {
        host_.Send(MessageNumber::invalidateCacheEntry, use.Handle(), directory.c_str());
    }
}

/// What is known of the listing that is kept of the session's directory. The module finds it
/// without regard to case: that of another directory must not be taken for it.
Connection::KeptListing& Connection::TakeKeptListing(FtpHandle* handle) {
    const std::string directory = Directory();
    KeptListing& kept = keptListings_[directory];
    if (!kept.directory.empty() && kept.directory != directory) {
        host_.Send(MessageNumber::invalidateCacheEntry, handle, directory.c_str());
    }
    kept.directory = directory;
    return kept;
}

void Connection::InvalidateAllListings() {
    const Use use(*this);
    if (use.Handle() != nullptr) {
        host_.Send(MessageNumber::invalidateCache, use.Handle());
    }
}

int Connection::SaveRawListing(LocalFile& file) {
    const Use use(*this);
    if (use.Handle() == nullptr) {
        return ENOTCONN;
    }
    ClearFileFailure();
    host_.Send(MessageNumber::saveRawListing, console_.Window(), &file, use.Handle());
    return LastFileFailure() ? LastFileFailure()->code : 0;
}

void Connection::BeginOperation() {
    const std::lock_guard lock(mutex_);
    abortPending_ = false;
    cause_.Begin();
    lastLineTime_ = std::chrono::steady_clock::now();
}

void Connection::TakeLine(const std::string& line) {
    binaryType_.TakeLine(line);
    {
        const std::lock_guard lock(mutex_);
        cause_.Take(line);
        logins_ += line.starts_with("Connecting to ") ? 1 : 0;
        lastLineTime_ = std::chrono::steady_clock::now();
    }
    if (options_.console) {
        options_.console(line);
    }
}

std::string Connection::Cause() const {
    const std::lock_guard lock(mutex_);
    return cause_.Text();
}

void Connection::Connected(u16) {
    {
        const std::lock_guard lock(mutex_);
        if (state_ == State::connecting) {
            state_ = State::connected;
        }
    }
    host_.Loop().Wake();
}

void Connection::ConnectFailed(const std::string& text) {
    std::string reason = OrEmpty([&] {
        const std::string cause = Cause();
        return cause.empty() ? text : cause;
    });
    {
        const std::lock_guard lock(mutex_);
        if (state_ == State::connecting) {
            state_ = State::failed;
            failureText_.swap(reason);
        }
    }
    host_.Loop().Wake();
}

/// A connection that is lost behind its first login, for good, has no other end.
void Connection::ReconnectFailed() {
    ConnectFailed({});
    if (options_.reconnectFailed) {
        options_.reconnectFailed();
    }
}

void Connection::DirectoryChangeEnded(u16 cookie, bool done) {
    {
        const std::lock_guard lock(mutex_);
        if (cookie != wantedCookie_) {
            return;
        }
        changeDone_ = done;
    }
    host_.Loop().Wake();
}

bool Connection::OwnsHandle(const void* handle) const {
    const std::lock_guard lock(mutex_);
    return handle == quennet::PointerFromWord<void>(block_);
}

/// The holder is empty by now, but an operation may have read it before.
void Connection::BeforeFree() {
    {
        std::unique_lock lock(mutex_);
        state_ = State::closing;
        unused_.wait(lock, [&] { return uses_ == 0; });
        block_ = 0;
        site_ = 0;
    }
    host_.Loop().Wake();
}

bool Connection::OwnsServerName(const char* name) const {
    const std::lock_guard lock(mutex_);
    return site_ != 0 && quennet::PointerFromWord<const SiteRecord>(site_)->host == name;
}

bool Connection::IsActive() const {
    const std::lock_guard lock(mutex_);
    return site_ != 0 && (quennet::PointerFromWord<const SiteRecord>(site_)->siteOptions &
                          quennet::SiteOptionPassive) == 0;
}

PasswordFunction Connection::PasswordSource() const {
    return options_.askPassword;
}

void Connection::PasswordCancelled() {
    const std::lock_guard lock(mutex_);
    cancelled_ = true;
}

}  // namespace hostkit
