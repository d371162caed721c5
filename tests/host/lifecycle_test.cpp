#include "host/module_test.h"

using namespace quennet;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

namespace {

constexpr char login[] = R"(
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

constexpr char quit[] = R"(
    -> QUIT
    <- 221 bye
    expect close
)";

TEST_F(ModuleTest, ACancelledDialogLeavesNothing) {
    Connect({.host = WireHost(), .button = IDCANCEL});
    EXPECT_EQ(holder, 0u);
    EXPECT_EQ(socketUses, 0u);
    EXPECT_THAT(notices.All(), IsEmpty());
}

TEST_F(ModuleTest, TheDialogFillsTheSiteWithWhatItsFieldsHold) {
    Connect({.name = std::string(30, 'n'),
             .host = "FTP://127.0.0.1:" + std::to_string(ClosedPort()),
             .user = std::string(80, 'u'),
             .password = std::string(80, 'p'),
             .directory = std::string(259, 'd')});
    ASSERT_NE(holder, 0u);
    const Session* session = SessionOfHandle();
    while (session->users.IsSet()) {
        Sleep(10);
    }
    EXPECT_STREQ(session->site.name, std::string(26, 'n').c_str());
    EXPECT_STREQ(session->site.host, "127.0.0.1");
    EXPECT_STREQ(session->site.user, std::string(79, 'u').c_str());
    EXPECT_STREQ(session->site.password, std::string(79, 'p').c_str());
    EXPECT_STREQ(session->site.directory, std::string(258, 'd').c_str());
    EXPECT_EQ(u32{session->site.siteOptions}, SiteOptionPassive);
    EXPECT_EQ(Handle()->panelId, 1);
    Disconnect();
}

TEST_F(ModuleTest, AFailedLoginIsEndedWithoutAQuit) {
    wire.Start("<- 421 busy\nexpect close\n");
    Connect({.host = WireHost()});
    EXPECT_TRUE(Await("connect failed: 421 busy"));
    Disconnect();
    EXPECT_EQ(socketUses, 0u);
    EXPECT_THAT(wire.Saw(), IsEmpty());
    wire.Finish();
}

TEST_F(ModuleTest, TwoEndsAreOne) {
    wire.Start(std::string(login) + quit);
    Connect({.host = WireHost()});
    ASSERT_TRUE(Await("connected 7"));
    Host().Send(MessageNumber::disconnect, &holder);
    Disconnect();
    EXPECT_THAT(notices.All(), ElementsAre("panel connected", "connected 7", "panel closed"));
    wire.Finish();
}

TEST_F(ModuleTest, AnEndDuringTheLoginWaitsForItAndLeavesNoConnection) {
    wire.Start("<- 220 ready\n-> USER anna\nmark user\npause 0.5\n<- 230 in\nexpect close\n");
    Connect({.host = WireHost()});
    ASSERT_TRUE(wire.AwaitMark("user"));
    Disconnect();
    EXPECT_THAT(notices.All(), Not(Contains("connected 7")));
    wire.Finish();
}

extern "C" void NothingBegins(u16, u8) {}
extern "C" void NothingIsDone(u16, const char*) {}

TEST_F(ModuleTest, AnEndWaitsForTheWorkersOfTypedLinesAndOfDirectories) {
    for (const auto message :
         {MessageNumber::rawCommand, MessageNumber::gotoDirectory, MessageNumber::changeDirAsync}) {
        const bool typed = message == MessageNumber::rawCommand;
        Wire server;
        server.Start(std::string(login) + (typed ? "-> NOOP\n" : "-> CWD /a\n") +
                     "mark sent\npause 0.5\n<- 550 late\n" + quit);
        Connect({.host = "127.0.0.1:" + std::to_string(server.port())});
        ASSERT_TRUE(Await("connected 7"));
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
        Disconnect();
        server.Finish();
    }
}

TEST_F(ModuleTest, ANewConnectionEndsTheOneThatStandsInItsHolder) {
    wire.Start(std::string(login) + quit + "accept\n" + login + quit);
    Connect({.host = WireHost()});
    ASSERT_TRUE(Await("connected 7"));
    Connect({.host = WireHost()});
    EXPECT_EQ(socketUses, 1u);
    while (wire.Saw().size() < 9) {
        Sleep(10);
    }
    Disconnect();
    wire.Finish();
}

TEST_F(ModuleTest, AQuitOnADeadConnectionGoesOutOnANewOne) {
    wire.Start(std::string(login) +
               "reset\nmark reset\naccept\n<- 220 again\n-> USER anna\n<- 230 in\n-> CWD /\n"
               "<- 250 ok\n" +
               quit);
    Connect({.host = WireHost()});
    ASSERT_TRUE(Await("connected 7"));
    ASSERT_TRUE(wire.AwaitMark("reset"));
    Disconnect();
    wire.Finish();
}

}  // namespace
