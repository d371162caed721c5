#include "hostkit/connection.h"

#include <cerrno>
#include <cstring>
#include <new>
#include <utility>

#include "hostkit/connection_dialog.h"
#include "hostkit/connection_use.h"
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

}  // namespace

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
    SetUnnamed({});
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

std::string Connection::LastReply() const {
    const std::lock_guard lock(mutex_);
    return cause_.LastReply();
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
