#pragma once
// A session of the module under test, its host, and the scripted server that it talks to.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "control/session.h"
#include "hostkit/console.h"
#include "hostkit/host.h"
#include "hostkit/message_loop.h"
#include "hostkit/panels.h"
#include "support/wire.h"

/// A message loop on a thread of its own, with a host on it: what a file manager's main thread is.
class HostThread {
  public:
    explicit HostThread(const hostkit::HostOptions& options);
    ~HostThread();

    hostkit::MessageLoop& Loop() { return *loop_; }
    hostkit::Host& Host() { return *host_; }

  private:
    std::thread thread_;
    std::atomic<bool> ended_ = false;
    hostkit::MessageLoop* loop_ = nullptr;
    hostkit::Host* host_ = nullptr;
};

/// What the host heard of the session: "connected COOKIE", "connect failed: TEXT", "reconnect
/// failed", "error ID", "message ID", "refresh COOKIE", "foreground", in their order.
class Notices {
  public:
    void Add(std::string notice);
    std::vector<std::string> All() const;
    void Clear();
    /// Waits until there are so many, for thirty seconds at most, and gives all.
    std::vector<std::string> Await(std::size_t count) const;
    /// Waits for one; false when it does not come.
    bool AwaitNotice(const std::string& notice) const;

  private:
    mutable std::mutex mutex_;
    std::vector<std::string> notices_;
};

/// A panel that notes what it hears.
class NoticePanel : public hostkit::Panel {
  public:
    explicit NoticePanel(Notices& notices) : notices_(notices) {}

    void PanelConnected(quennet::SiteRecord*) override { notices_.Add("panel connected"); }
    void PanelClosed() override { notices_.Add("panel closed"); }
    void Connected(quennet::u16 cookie) override;
    void ConnectFailed(const std::string& text) override;
    void ReconnectFailed() override { notices_.Add("reconnect failed"); }
    void DirectoryChangeBegan(quennet::u16) override {}
    void DirectoryChangeEnded(quennet::u16, bool) override {}
    bool OwnsHandle(const void*) const override { return false; }
    void BeforeFree() override {}
    bool OwnsServerName(const char*) const override { return false; }
    hostkit::PasswordFunction PasswordSource() const override { return {}; }
    void PasswordCancelled() override {}

  private:
    Notices& notices_;
};

/// A session that is not connected yet, of a site on the wire's port.
class SessionTest : public ::testing::Test {
  protected:
    SessionTest();
    ~SessionTest() override;

    /// Starts the script and opens the control connection without reading from it.
    void Open(std::string_view script);

    /// The same for a server whose login is not the point: the script begins behind it.
    void LogIn(const std::string& script);

    /// The console's lines so far.
    std::vector<std::string> Lines() const;

    /// Sets `abortFlag` as message 41 does, after `delay`, on another thread.
    void AbortAfter(std::chrono::milliseconds delay);

    hostkit::Host& Host() { return thread_->Host(); }

    Wire wire;
    Notices notices;
    quennet::Session* session = nullptr;
    /// Answers to the password question, the first one first; none is a cancel.
    std::vector<std::string> passwords;

  private:
    void MakeSession();
    void ClearLines();

    mutable std::mutex mutex_;
    std::vector<std::string> lines_;
    quennet::u32 socketUses_ = 0;
    quennet::HostWord holder_ = 0;
    NoticePanel panel_{notices};
    std::unique_ptr<HostThread> thread_;
    std::unique_ptr<hostkit::Console> console_;
    std::vector<std::thread> threads_;
};

/// Steps of a server that many conversations have in common.
namespace steps {

inline const std::string binary = "-> TYPE I\n<- 200 ok\n";
inline const std::string passive = "-> PASV\n<- 227 ({pasv})\n";
/// A new connection, behind the end of the one before.
inline const std::string relogin = "accept\n<- 220 again\n-> USER anna\n<- 230 in\n";
/// The connection is lost instead of a reply.
inline const std::string lost = "<- 421 bye\nclose\n" + relogin;
inline const std::string inStep = "-> NOOP\n<- 200 mine\n";

}  // namespace steps

/// A port of 127.0.0.1 on which nobody listens.
quennet::u16 ClosedPort();
