#include "support/session_test.h"

#include <atomic>
#include <future>

#include "control/login.h"
#include "control/sockets.h"
#include "control/watchdog.h"
#include "host/message.h"
#include "host/services.h"
#include "support/wait.h"

using namespace quennet;

HostThread::HostThread(const hostkit::HostOptions& options) {
    std::promise<void> ready;
    thread_ = std::thread([&] {
        hostkit::MessageLoop loop;
        hostkit::Host host(loop, options);
        host.Attach(f, GetModuleHandleA(nullptr));
        loop_ = &loop;
        host_ = &host;
        ready.set_value();
        loop.WaitUntil([this] { return ended_.load(); });
    });
    ready.get_future().wait();
}

HostThread::~HostThread() {
    // The loop's own thread ends it: it is gone as soon as it sees the end.
    loop_->Post([this] { ended_ = true; });
    thread_.join();
}

void Notices::Add(std::string notice) {
    const std::lock_guard lock(mutex_);
    notices_.push_back(std::move(notice));
}

std::vector<std::string> Notices::All() const {
    const std::lock_guard lock(mutex_);
    return notices_;
}

void Notices::Clear() {
    const std::lock_guard lock(mutex_);
    notices_.clear();
}

std::vector<std::string> Notices::Await(std::size_t count) const {
    WaitUntil([&] { return All().size() >= count; });
    return All();
}

bool Notices::AwaitNotice(const std::string& notice) const {
    return WaitUntil([&] {
        const std::vector<std::string> all = All();
        return std::find(all.begin(), all.end(), notice) != all.end();
    });
}

void NoticePanel::Connected(u16 cookie) {
    notices_.Add("connected " + std::to_string(cookie));
}

void NoticePanel::ConnectFailed(const std::string& text) {
    notices_.Add("connect failed: " + text);
}

SessionTest::SessionTest() {
    hostkit::HostOptions options;
    options.showMessage = [this](u32 id, const std::string&) {
        notices.Add("message " + std::to_string(id));
    };
    options.reportError = [this](u32 id, const std::string&) {
        notices.Add("error " + std::to_string(id));
    };
    options.refreshPanel = [this](u16 cookie) { notices.Add("refresh " + std::to_string(cookie)); };
    options.setForeground = [this](HWND) { notices.Add("foreground"); };
    options.askPassword = [this](const std::string& server) -> std::optional<std::string> {
        notices.Add("password for " + server);
        if (passwords.empty()) {
            return std::nullopt;
        }
        std::string password = passwords.front();
        passwords.erase(passwords.begin());
        return password;
    };
    thread_ = std::make_unique<HostThread>(options);
    console_ = std::make_unique<hostkit::Console>(Host(), [this](const std::string& line) {
        const std::lock_guard lock(mutex_);
        lines_.push_back(line);
    });
    MakeSession();
}

SessionTest::~SessionTest() {
    for (std::thread& thread : threads_) {
        thread.join();
    }
    session->controlSocket = CloseSocketGracefully(session, session->controlSocket, 2);
    session->dataSocket = CloseSocketGracefully(session, session->dataSocket, 2);
    session->listenSocket = CloseSocketGracefully(session, session->listenSocket, 2);
    LetGoOfWatchdogWindow(session);
    ReleaseWinsock(&socketUses_);
    void* block = ExchangeHolder(&holder_, nullptr);
    CoreFree(&block);
    Host().GetPanels().Remove(1);
}

void SessionTest::MakeSession() {
    AcquireWinsock(0, &socketUses_);
    auto* handle = static_cast<FtpHandle*>(CoreAlloc(sizeof(FtpHandle) + sizeof(Session)));
    session = reinterpret_cast<Session*>(handle + 1);
    handle->tag = liveHandleTag;
    handle->panelId = Host().GetPanels().Add(panel_);
    handle->session = WordFromPointer(session);
    session->handle = handle;
    session->console = console_->Number();
    session->timeoutSeconds = 30;
    session->wsaUseCount = &socketUses_;
    session->transferType = 'A';
    session->port = wire.port();
    session->controlSocket = session->dataSocket = session->listenSocket = noSocket;
    session->site.siteOptions = SiteOptionPassive;
    StoreText(session->site.name, sizeof session->site.name, "site");
    StoreText(session->site.host, sizeof session->site.host, "127.0.0.1");
    StoreText(session->site.user, sizeof session->site.user, "anna");
    StoreText(session->site.password, sizeof session->site.password, "secret");
    ExchangeHolder(&holder_, handle);
    session->watchdogWindow = thread_->Loop().Invoke([this] {
        return CreateWatchdogWindow(GetModuleHandleA(nullptr), session->console, &holder_);
    });
}

void SessionTest::Open(std::string_view script) {
    wire.Start(script);
    char host[] = "127.0.0.1";
    session->controlSocket = OpenControlSocket(session, host);
    ASSERT_NE(session->controlSocket, noSocket);
    ClearLines();
}

void SessionTest::LogIn(const std::string& script) {
    wire.Start("<- 220 ready\n-> USER anna\n<- 331 password\n-> PASS secret\n<- 230 welcome\n" +
               script);
    ASSERT_EQ(LoginSession(session), loginDone);
    ClearLines();
}

void SessionTest::ClearLines() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
}

std::vector<std::string> SessionTest::Lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
}

void SessionTest::AbortAfter(std::chrono::milliseconds delay) {
    threads_.emplace_back([this, delay] {
        std::this_thread::sleep_for(delay);
        Host().Send(MessageNumber::abortCommand, session->handle);
    });
}

u16 ClosedPort() {
    const Wire closed;
    return closed.port();
}
