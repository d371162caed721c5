#include "control/login.h"

#include "control/connect.h"
#include "control/exchange.h"
#include "control/firewall.h"
#include "control/reconnect.h"
#include "control/server_family.h"
#include "control/sockets.h"
#include "host/message.h"
#include "host/services.h"
#include "support/session_test.h"

using namespace quennet;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

struct LoginCase {
    std::string rule;
    u32 firewallType;  // 0 to 6, or noFirewall
    const char* script;
    int result;
};

constexpr u32 noFirewall = 99;

class LoginTableTest : public SessionTest, public testing::WithParamInterface<LoginCase> {};

TEST_P(LoginTableTest, PlaysTheWire) {
    SiteRecord& site = session->site;
    StoreText(site.host, sizeof site.host, "server");
    StoreText(site.firewallUser, sizeof site.firewallUser, "gateuser");
    StoreText(site.firewallPassword, sizeof site.firewallPassword, "gatepass");
    StoreText(site.firewallHost, sizeof site.firewallHost,
              ("127.0.0.1:" + std::to_string(wire.port())).c_str());
    if (GetParam().firewallType == noFirewall) {
        StoreText(site.host, sizeof site.host, "127.0.0.1");
    } else {
        site.siteOptions |= SiteOptionFirewall;
        site.firewallType = GetParam().firewallType;
    }
    wire.Start(GetParam().script);
    EXPECT_EQ(LoginSession(session), GetParam().result);
    EXPECT_EQ(session->controlSocket == noSocket, GetParam().result != loginDone);
    EXPECT_EQ(session->stopRetrying.IsSet(), GetParam().result != loginDone);
    EXPECT_THAT(Lines(), testing::Not(Contains(testing::HasSubstr("secret"))));
    wire.Finish();
}

const LoginCase loginCases[] = {
    {"Plain", noFirewall, "<- 220 a\n-> USER anna\n<- 331 b\n-> PASS secret\n<- 230 c\n",
     loginDone},
    {"PlainWithoutAPassword", noFirewall, "<- 220 a\n-> USER anna\n<- 230 b\n", loginDone},
    {"PlainWithAnAccount", noFirewall,
     "<- 220 a\n-> USER anna\n<- 331 b\n-> PASS secret\n<- 332 c\n-> ACCT anna\n<- 230 d\n",
     loginDone},
    {"PlainRefusedUser", noFirewall, "<- 220 a\n-> USER anna\n<- 530 b\nexpect close\n",
     loginFailed},
    {"PlainRefusedPassword", noFirewall,
     "<- 220 a\n-> USER anna\n<- 331 b\n-> PASS secret\n<- 530 c\nexpect close\n", loginFailed},
    {"ABusyServerIsAnsweredWithNothing", noFirewall, "<- 421 busy\nexpect close\n", loginFailed},
    {"AUserThatIsAnsweredWith421IsNotRepeated", noFirewall,
     "<- 220 a\n-> USER anna\n<- 421 b\nexpect close\n", loginFailed},
    {"AConnectionLostAtTheUserIsNotRepaired", noFirewall, "<- 220 a\n-> USER anna\nreset\n",
     loginFailed},
    {"NorIsOneLostAtThePassword", noFirewall,
     "<- 220 a\n-> USER anna\n<- 331 b\n-> PASS secret\nreset\n", loginFailed},
    {"NorIsOneLostAtTheFirewallsUser", 2,
     "<- 220 a\n-> USER gateuser\n<- 230 b\n-> USER anna@server\nreset\n", loginFailed},
    {"APatientWelcome", noFirewall, "<- 120 wait\n<- 220-a\n<- 220 b\n-> USER anna\n<- 230 c\n",
     loginDone},
    {"AWelcomeWithoutACode", noFirewall, "<- hello\nexpect close\n", loginFailed},
    {"AServerThatClosesAtOnce", noFirewall, "close\n", loginFailed},
    {"Type0WithAnAccount", 0,
     "<- 220 a\n-> USER anna\n<- 331 b\n-> PASS secret\n<- 332 c\n-> ACCT anna\n<- 202 d\n",
     loginDone},
    {"Type1", 1, "<- 220 a\n-> USER anna@server\n<- 331 b\n-> PASS secret\n<- 230 c\n", loginDone},
    {"Type1WithAnAccount", 1, "<- 220 a\n-> USER anna@server\n<- 532 b\nexpect close\n",
     loginFailed},
    {"Type2", 2, "<- 220 a\n-> USER gateuser\n<- 230 b\n-> USER anna@server\n<- 230 c\n",
     loginDone},
    {"Type2ThatAsksForAPassword", 2, "<- 220 a\n-> USER gateuser\n<- 331 b\nexpect close\n",
     loginFailed},
    {"Type2WhoseServerAsksForMore", 2,
     "<- 220 a\n-> USER gateuser\n<- 230 b\n-> USER anna@server\n<- 331 c\nexpect close\n",
     loginFailed},
    {"Type3", 3, "<- 220 a\n-> USER gateuser\n<- 202 b\n-> SITE server\n<- 220 c\n", loginDone},
    {"Type4", 4, "<- 220 a\n-> USER gateuser\n<- 230 b\n-> OPEN server\n<- 220 c\n", loginDone},
    {"Type5", 5,
     "<- 220 a\n-> USER anna@gateuser@server\n<- 331 b\n-> PASS secret@gatepass\n<- 230 c\n",
     loginDone},
    {"Type6", 6,
     "<- 220 a\n-> USER gateuser@server\n<- 331 b\n-> PASS gatepass\n<- 230 c\n"
     "-> USER gateuser@server\n<- 230 d\n",
     loginDone},
    {"AnUnknownType", 7, "<- 220 a\nexpect close\n", loginFailed},
    {"AFirewallThatSays230AtOnce", 1, "<- 230 in\n", loginDone},
    {"AFirewallThatClosesAtTheUser", 1, "<- 220 a\n-> USER anna@server\nclose\n", loginFailed},
};

INSTANTIATE_TEST_SUITE_P(Logins, LoginTableTest, testing::ValuesIn(loginCases),
                         [](const auto& info) { return info.param.rule; });

class LoginTest : public SessionTest {};

TEST_F(LoginTest, AnEmptyPasswordIsAskedForAndSentWholeOrNotAtAll) {
    session->site.password[0] = 0;
    passwords = {std::string(79, 'p'), std::string(80, 'p')};  // and then a cancelled question
    wire.Start("<- 220 a\n-> USER anna\n<- 331 b\n-> PASS " + passwords[0] +
               "\n<- 230 c\naccept\n<- 220 a\n-> USER anna\n<- 331 b\nexpect close\n"
               "accept\n<- 220 a\n-> USER anna\n<- 331 b\nexpect close\n");
    EXPECT_EQ(LoginSession(session), loginDone);
    for (int turn = 0; turn < 2; ++turn) {
        session->site.password[0] = 0;
        session->controlSocket = CloseSocketGracefully(session, session->controlSocket, 2);
        EXPECT_EQ(LoginSession(session), loginCancelled);
    }
    EXPECT_EQ(notices.All(), std::vector<std::string>(3, "password for 127.0.0.1"));
    wire.Finish();
}

TEST_F(LoginTest, AFirewallGetsAnEmptyPasswordUnasked) {
    session->site.password[0] = 0;
    session->site.siteOptions |= SiteOptionFirewall;
    StoreText(session->site.firewallHost, sizeof session->site.firewallHost, "127.0.0.1");
    wire.Start("<- 220 a\n-> USER anna\n<- 331 b\n-> PASS \n<- 230 c\n");
    EXPECT_EQ(LoginSession(session), loginDone);
    EXPECT_THAT(notices.All(), IsEmpty());
    wire.Finish();
}

TEST_F(LoginTest, AFirewallThatAsksAgainAndAgainIsGivenUpAfter16Answers) {
    session->site.siteOptions |= SiteOptionFirewall;
    session->site.firewallType = 1;
    StoreText(session->site.firewallHost, sizeof session->site.firewallHost, "127.0.0.1");
    std::string script = "<- 220 a\n";
    for (int answer = 1; answer <= 16; ++answer) {
        script += "-> USER anna@127.0.0.1\n<- 220 again\n";
    }
    wire.Start(script + "expect close\n");
    EXPECT_EQ(LoginSession(session), loginFailed);
    wire.Finish();
}

TEST_F(LoginTest, AWelcomeHasTwiceTheTimeOut) {
    std::string script;
    for (const char* reply : {"120 wait", "120 wait", "220-a", "b", "c"}) {
        script += std::string("<- ") + reply + "\npause 0.6\n";
    }
    session->timeoutSeconds = 1;
    wire.Start(script + "expect close\n");
    EXPECT_EQ(LoginSession(session), loginFailed);
    EXPECT_THAT(Lines(), Contains("Reply without an end."));
    wire.Finish();
}

TEST_F(LoginTest, ALineEndInAUserNameReachesNoWire) {
    StoreText(session->site.user, sizeof session->site.user, "anna\r\nDELE x");
    wire.Start("<- 220 a\nexpect close\n");
    EXPECT_EQ(LoginSession(session), loginFailed);
    wire.Finish();
}

TEST_F(LoginTest, AHostThatIsNotThereFailsWithItsName) {
    StoreText(session->site.host, sizeof session->site.host, "no-such-host.invalid");
    EXPECT_EQ(LoginSession(session), loginFailed);
    EXPECT_STREQ(session->replyBuffer, "Connection to no-such-host.invalid failed.");
    EXPECT_THAT(Lines(), ElementsAre("Connection to no-such-host.invalid failed."));
}

TEST_F(LoginTest, ARefusedPortIsToldInThreeLines) {
    session->port = ClosedPort();
    const std::string port = std::to_string(session->port);
    EXPECT_EQ(LoginSession(session), loginFailed);
    EXPECT_THAT(Lines(), ElementsAre("Connecting to 127.0.0.1:" + port + " (site) ...",
                                     "Can't connect to 127.0.0.1 ftp service port " + port + ".",
                                     "Connection refused", "Connection to 127.0.0.1 failed."));
    EXPECT_EQ(session->replyBuffer, "Can't connect to 127.0.0.1 ftp service port " + port + ".");
}

TEST_F(LoginTest, ThePortStandsBehindTheFirstColon) {
    struct {
        const char* text;
        int port;
        const char* host;
    } cases[] = {{"h:2121", 2121, "h"}, {"h", 0, "h"},    {"h:", 0, "h"},    {"h:x", 0, "h"},
                 {"h:70000", 0, "h"},   {"h:-1", 0, "h"}, {"h:1:2", 1, "h"}, {":5", 5, ""}};
    for (const auto& row : cases) {
        char text[32];
        StoreText(text, sizeof text, row.text);
        EXPECT_EQ(ParsePort(text), row.port) << row.text;
        EXPECT_STREQ(text, row.host);
    }
}

TEST_F(LoginTest, TheSystemsFamilyIsTheFirstTextFound) {
    struct {
        const char* reply;
        u32 before;
        u32 after;
    } cases[] = {{"215 MVS is the operating system", 0, 4},
                 {"215 UNIX emulated by MVS", 0, 4},
                 {"215 OS/2 UNIX", 0, 6},
                 {"215 Windows_NT", 11, 16},
                 {"215 VMS MultiNet V5", 0, 13},
                 {"215 VMS", 0, 14},
                 {"215 unix", 11, 11},
                 {"500 SYST?", 0, 0}};
    for (const auto& row : cases) {
        session->serverType.Store(row.before);
        StoreText(session->replyBuffer, replyBufferSize, row.reply);
        ClassifySystem(session);
        EXPECT_EQ(session->serverType.Load(), row.after) << row.reply;
    }
}

// --- The worker of message 24 and the repair ------------------------------------------------

class ConnectTest : public SessionTest {
  protected:
    void Run(const std::string& script) { Run(wire, script); }

    void Run(Wire& server, const std::string& script) {
        server.Start(script);
        session->backgroundJobs.Store(1);
        session->users.Add(1);
        KeepExchange(session);
        EXPECT_TRUE(Exchange(session).IsRefused()) << "the worker comes first";
        ConnectWorker(session);
        EXPECT_FALSE(Exchange(session).IsRefused());
        EXPECT_EQ(session->backgroundJobs.Load(), 0u);
        EXPECT_EQ(session->users.Load(), 0u);
    }
};

TEST_F(ConnectTest, TheHostHearsOfAConnectionInTheServersDirectory) {
    StoreText(session->site.directory, pathSize, "start");
    session->hostCookie = 0x1234;
    Run(R"(
        <- 220 (EXOS
        -> USER anna
        <- 230 in
        -> SYST
        <- 215-Windows_NT
        <- 211-more of it
        <- and more
        <- 215 end
        -> CWD start
        <- 550 no
        -> PWD
        <- 257 "/home/anna/"
    )");
    EXPECT_STREQ(session->site.directory, "/home/anna");
    EXPECT_EQ(session->serverType.Load(), 16u);
    EXPECT_THAT(notices.Await(2), ElementsAre("panel connected", "connected 4660"));
    wire.Finish();
}

/// Message 1074 as it arrives, the block of a failed connection as its text.
std::string NextNotification(HWND window) {
    MSG message = {};
    if (!PeekMessageA(&message, window, notifyMessage, notifyMessage, PM_REMOVE)) {
        return "none";
    }
    std::string text = std::to_string(message.wParam) + ": " + std::to_string(message.lParam);
    if (message.wParam == static_cast<WPARAM>(Notification::connectFailed)) {
        auto* block = reinterpret_cast<unsigned char*>(message.lParam);
        text = "2: " + std::to_string(*block) + " " + reinterpret_cast<char*>(block + 1);
        CoreFreeRecord(block);
    }
    return text;
}

extern "C" void* NoMemory(HostWord) {
    return nullptr;
}

TEST_F(ConnectTest, EveryEndOfALoginIsToldWithThePanel) {
    HWND window =
        CreateWindowExA(0, "STATIC", "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
    const HWND hosts = std::exchange(hostTables.mainWindow, window);
    const CoreServices* real = hostTables.core;
    CoreServices poor = *real;
    poor.words[static_cast<u32>(CoreService::alloc)] = reinterpret_cast<HostWord>(NoMemory);
    const u8 panelId = std::exchange(session->handle->panelId, u8{200});
    session->hostCookie = 0x1234;
    const struct {
        std::string script;
        const CoreServices* core;
        std::vector<std::string> heard;
    } cases[] = {
        {"<- 220 a\nclose\n", real, {"2: 200 Connection to 127.0.0.1 failed."}},
        {"<- 421 busy\nexpect close\n", real, {"2: 200 421 busy"}},
        {"<- 421 busy\nexpect close\n", &poor, {"3: -56"}},
        {"<- 220 a\n-> USER anna\n<- 230 in\n-> SYST\n<- 502 no\n-> PWD\n<- 502 no\n",
         real,
         {"6: 0", "5: " + std::to_string(0x1234C8)}},
    };
    for (const auto& row : cases) {
        Wire server;
        session->port = server.port();
        session->stopRetrying.Store(0);
        hostTables.core = row.core;
        Run(server, row.script);
        hostTables.core = real;
        for (const std::string& heard : row.heard) {
            EXPECT_EQ(NextNotification(window), heard);
        }
        EXPECT_EQ(NextNotification(window), "none");
        server.Finish();
    }
    session->handle->panelId = panelId;
    hostTables.mainWindow = hosts;
    DestroyWindow(window);
}

TEST_F(ConnectTest, ADirectoryThatDoesNotFitIsNotStored) {
    const std::string script =
        "<- 220 a\n-> USER anna\n<- 230 in\n-> SYST\n<- 120 wait\n<- 502 no\n-> PWD\n"
        "<- 257 \"/" +
        std::string(300, 'd') + "\"\n";
    Run(script);
    EXPECT_STREQ(session->site.directory, "");
    EXPECT_THAT(Lines(), Contains("Directory name too long, refused."));
    wire.Finish();
}

TEST_F(ConnectTest, ARepairInsideARepairIsNone) {
    LogIn("");
    session->reconnecting.Store(1);
    EXPECT_TRUE(Reconnect(session));
    session->reconnecting.Store(0);
    wire.Finish();
}

}  // namespace
