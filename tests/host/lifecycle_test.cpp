// The messages of the module, and the life of a connection.

#include <memory>

#include "control/watchdog.h"
#include "support/module_test.h"
#include "support/wait.h"

using namespace quennet;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

const std::string login = R"(
    <- 220 ready
    -> USER anna
    <- 331 password
    -> PASS secret
    <- 230 welcome
    -> SYST
    <- 215 UNIX Type: L8
    -> PWD
    <- 257 "/"
)";

const std::string quit = R"(
    -> QUIT
    <- 221 bye
    expect close
)";

/// A connection dialog that fills itself in and is accepted.
class LifecycleTest : public ModuleTest {
  protected:
    LifecycleTest() {
        hostkit::HostOptions options;
        options.initDialog = [this](HWND dialog) {
            // Once it is open, which includes what the book puts into its fields.
            Host().Loop().Post([this, dialog] { FillIn(dialog); });
        };
        StartHost(options);
    }

    void Connect(const std::string& host) {
        host_ = host;
        Host().Loop().Invoke([this] { SendConnect(); });
    }

    /// Starts a script that goes on behind the login, and plays that.
    void LogIn(Wire& server, const std::string& script) {
        server.Start(login + script);
        Connect("127.0.0.1:" + std::to_string(server.port()));
        ASSERT_TRUE(notices.AwaitNotice("connected 7"));
    }

  private:
    void FillIn(HWND dialog) const {
        SetDlgItemTextA(dialog, 14203, host_.c_str());
        SetDlgItemTextA(dialog, 14302, "anna");
        SetDlgItemTextA(dialog, 15202, "secret");
        CheckDlgButton(dialog, 14306, BST_CHECKED);
        PostMessageA(dialog, WM_COMMAND, 99, 0);
    }

    std::string host_;
};

TEST_F(LifecycleTest, NumbersWithoutAHandlerGiveMinusOne) {
    for (const int number : {0, -1, 49, 2, 20, 35, 36, 4711}) {
        EXPECT_EQ(Host().Send(static_cast<MessageNumber>(number), 1, 2, 3, 4, 5, 6, 7), -1);
    }
}

TEST_F(LifecycleTest, AHandleThatIsNotLiveIsLeftAlone) {
    FtpHandle dead = {};
    dead.tag = liveHandleTag + 1;
    char buffer[pathSize] = "as it was";
    for (FtpHandle* handle : {static_cast<FtpHandle*>(nullptr), &dead}) {
        for (const MessageNumber number :
             {MessageNumber::listDirectory, MessageNumber::changeDirSync, MessageNumber::getFile,
              MessageNumber::putFile, MessageNumber::copyBetweenServers,
              MessageNumber::remoteDelete, MessageNumber::remoteRemoveDir,
              MessageNumber::remoteMakeDir}) {
            EXPECT_EQ(Host().Send(number, buffer, handle, handle, 0, 0), -1);
        }
        TransferRecord record = {};
        record.sourceHandle = WordFromPointer(handle);
        EXPECT_EQ(Host().Send(MessageNumber::applyPermissions, &record, 0x8000), -1);
        EXPECT_EQ(u32{record.status}, 0u);
        EXPECT_EQ(Host().Send(MessageNumber::remoteRename, "x", "y", handle), -1);
        Host().Send(MessageNumber::rawCommand, 0, handle, "x", 1);
        Host().Send(MessageNumber::gotoDirectory, 0, "x", "y", 1, nullptr, nullptr);
        Host().Send(MessageNumber::getDirectory, handle, buffer, sizeof buffer);
        Host().Send(MessageNumber::changeDirAsync, "x", 1, handle, nullptr);
        Host().Send(MessageNumber::abortCommand, handle);
        Host().Send(MessageNumber::invalidateCache, handle);
        Host().Send(MessageNumber::saveRawListing, nullptr, nullptr, handle);
    }
    EXPECT_STREQ(buffer, "as it was");
}

TEST_F(LifecycleTest, TheHostsTextStaysWithItsSessionAndIsCutToItsField) {
    LogIn(wire, quit);
    const std::string longest(pathSize - 1, 'x');
    char buffer[pathSize] = "";
    Host().Send(MessageNumber::setHostText, SessionOfHandle(), "before");
    Host().Send(MessageNumber::setHostText, SessionOfHandle(), (longest + "y").c_str());
    Host().Send(MessageNumber::getHostText, SessionOfHandle(), buffer);
    EXPECT_EQ(buffer, longest);
    char directory[4] = "";
    StoreText(SessionOfHandle()->site.directory, pathSize, "/pub");
    Host().Send(MessageNumber::getDirectory, Handle(), directory, sizeof directory);
    EXPECT_STREQ(directory, "/pu") << "a buffer that is too small is not run over";
    Disconnect();
    wire.Finish();
}

TEST_F(LifecycleTest, AFailedLoginIsEndedWithoutAQuit) {
    wire.Start("<- 421 busy\nexpect close\n");
    Connect(WireHost());
    EXPECT_TRUE(notices.AwaitNotice("connect failed: 421 busy"));
    Disconnect();
    EXPECT_EQ(socketUses, 0u);
    EXPECT_THAT(wire.Saw(), IsEmpty());
    wire.Finish();
}

TEST_F(LifecycleTest, TwoEndsAreOne) {
    LogIn(wire, quit);
    Host().Send(MessageNumber::disconnect, &holder);
    Disconnect();
    EXPECT_THAT(notices.All(), ElementsAre("panel connected", "connected 7", "panel closed"));
    wire.Finish();
}

TEST_F(LifecycleTest, AnEndNeedsNoMessageLoopAndLeavesNoTimerBehind) {
    LogIn(wire, quit);
    struct Block {
        FtpHandle handle;
        Session session;
    };
    const auto next = std::make_unique<Block>();
    next->handle.session = WordFromPointer(&next->session);
    Host().Loop().Invoke([&] {
        HWND watchdog = WindowFromNumber(SessionOfHandle()->watchdogWindow);
        PostMessageA(watchdog, WM_TIMER, 1, 0);
        Host().Send(MessageNumber::disconnect, &holder);
        EXPECT_TRUE(WaitUntil([&] { return HandleInHolder(&holder) == nullptr; }));
        ExchangeHolder(&holder, &next->handle);
        EXPECT_TRUE(IsWindow(watchdog));
        // What is on its way comes now.
        Host().Loop().WaitUntil([&] { return !IsWindow(watchdog); });
        ExchangeHolder(&holder, nullptr);
    });
    EXPECT_FALSE(next->session.abortFlag.IsSet());
    EXPECT_THAT(notices.All(), Contains("panel closed"));
    wire.Finish();
}

TEST_F(LifecycleTest, AnEndDuringTheLoginWaitsForItAndLeavesNoConnection) {
    wire.Start("<- 220 ready\n-> USER anna\nmark user\nawait ended\n<- 230 in\nexpect close\n");
    Connect(WireHost());
    ASSERT_TRUE(wire.AwaitMark("user"));
    Host().Send(MessageNumber::disconnect, &holder);
    while (!SessionOfHandle()->stopRetrying.IsSet()) {
        Sleep(1);
    }
    wire.Signal("ended");
    Disconnect();
    EXPECT_THAT(notices.All(), Not(Contains("connected 7")));
    wire.Finish();
}

extern "C" void NothingBegins(u16, u8) {}
extern "C" void NothingIsDone(u16, const char*) {}

TEST_F(LifecycleTest, AnEndWaitsForTheWorkersOfTypedLinesAndOfDirectories) {
    for (const auto message :
         {MessageNumber::rawCommand, MessageNumber::gotoDirectory, MessageNumber::changeDirAsync}) {
        const bool typed = message == MessageNumber::rawCommand;
        Wire server;
        LogIn(server, (typed ? "-> NOOP\n" : "-> CWD /a\n") +
                          ("mark sent\nawait ended\n<- 550 late\n" + quit));
        notices.Clear();
        if (typed) {
            Host().Send(message, 0, Handle(), "NOOP", 1);
        } else if (message == MessageNumber::gotoDirectory) {
            Host().Send(message, SessionOfHandle(), "a", "/a", 1,
                        reinterpret_cast<HostWord>(NothingBegins),
                        reinterpret_cast<HostWord>(NothingIsDone));
        } else {
            Host().Send(message, "/a", 1, Handle(), reinterpret_cast<HostWord>(NothingIsDone));
        }
        EXPECT_TRUE(server.AwaitMark("sent"));
        Host().Send(MessageNumber::disconnect, &holder);
        server.Signal("ended");
        Disconnect();
        server.Finish();
    }
}

TEST_F(LifecycleTest, ANewConnectionEndsTheOneThatStandsInItsHolder) {
    LogIn(wire, quit + "accept\n" + login + quit);
    Connect(WireHost());
    EXPECT_EQ(socketUses, 1u);
    while (wire.Saw().size() < 9) {
        Sleep(10);
    }
    Disconnect();
    wire.Finish();
}

TEST_F(LifecycleTest, AQuitOnADeadConnectionGoesOutOnANewOne) {
    LogIn(wire, "reset\nmark reset\n" + steps::relogin + "-> CWD /\n<- 250 ok\n" + quit);
    ASSERT_TRUE(wire.AwaitMark("reset"));
    Disconnect();
    wire.Finish();
}

}  // namespace
