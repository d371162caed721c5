#include "control/command.h"

#include "control/login.h"
#include "control/reply.h"
#include "control/sockets.h"
#include "control/working_directory.h"
#include "support/session_test.h"

using namespace quennet;
using testing::ElementsAre;

namespace {

class CommandTest : public SessionTest {};

const std::string repairedLogin = steps::relogin + "-> CWD /pub\n<- 250 there\n";

TEST_F(CommandTest, OnlyAPasswordLineIsHidden) {
    const std::pair<std::string, std::string> lines[] = {{"PASS hunter2", "***"},
                                                         {"PASSWORD x", "PASSWORD x"},
                                                         {"ACCT anna", "ACCT anna"},
                                                         {"XYZ 100%s %n", "XYZ 100%s %n"}};
    std::string script;
    for (const auto& [line, shown] : lines) {
        script += "-> " + line + "\n<- 230 a\n";
    }
    LogIn(script);
    std::vector<std::string> console;
    for (const auto& [line, shown] : lines) {
        SendCommandText(session, line.c_str());
        console.insert(console.end(), {shown, "230 a"});
    }
    EXPECT_EQ(Lines(), console);
    wire.Finish();
}

TEST_F(CommandTest, ALineThatCannotGoOutWholeIsNotSentAndBreaksNothing) {
    const std::string longest = "SITE " + std::string(4088, 'x');
    LogIn("-> " + longest + "\n<- 200 ok\n");
    for (const std::string& line :
         {std::string("DELE a\r\nDELE b"), std::string("DELE a\nb"), longest + "y"}) {
        EXPECT_EQ(SendCommandText(session, line.c_str()), -1);
        EXPECT_EQ(SendCommand(session, "%s", line.c_str()), -1);
    }
    EXPECT_EQ(SendCommand(session, "%s %s", "DELE", std::string(5000, 'x').c_str()), -1);
    EXPECT_EQ(SendCommandText(session, longest.c_str()), 2);
    wire.Finish();
}

TEST_F(CommandTest, TheAlternativeIsForAnAnswerOf500Alone) {
    LogIn(
        "-> PWD\n<- 502 no\n-> PWD\n<- 500 what\n-> XPWD\n<- 257 here\n"
        "-> MKD a b\n<- 500 what\n-> XMKD a b\n<- 550 no\n-> DELE c\n<- 500 what\n");
    EXPECT_EQ(SendCommandAlt(session, "PWD", "XPWD"), 5);
    EXPECT_EQ(SendCommandAlt(session, "PWD", "XPWD"), 2);
    EXPECT_EQ(SendCommandAltArg(session, "MKD", "XMKD", "a b"), 5);
    EXPECT_EQ(SendCommandAltArg(session, "DELE", nullptr, "c"), 5);
    wire.Finish();
}

TEST_F(CommandTest, DuringAnExchangeOnlyAnAbortGetsOut) {
    LogIn("-> ABOR\n<- 226 ok\n");
    {
        const BusyMark busy(session);
        EXPECT_EQ(SendLine(session, "NOOP"), -1);
        EXPECT_THAT(Lines(), ElementsAre("Command in progress, ignored."));
        session->abortFlag.Store(1);
        EXPECT_GT(SendLine(session, "ABOR"), 0);
    }
    EXPECT_EQ(ReadReply(session), 2);
    EXPECT_EQ(session->busy.Load(), 0u);
    wire.Finish();
}

struct LossCase {
    const char* moment;
    const char* loss;  // behind the login, up to the end of the first connection
    const char* shown;
};

class LossTest : public SessionTest, public testing::WithParamInterface<LossCase> {};

TEST_P(LossTest, IsRepairedWithOneResend) {
    StoreText(session->site.directory, pathSize, "/pub");
    LogIn(GetParam().loss + repairedLogin + "-> NOOP\n<- 200 done\n");
    session->timeoutSeconds = 1;
    wire.AwaitMark("lost");
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    EXPECT_EQ(session->firstCode, 200);
    EXPECT_STREQ(session->replyBuffer, "200 done");
    const std::vector<std::string> lines = Lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "NOOP"), 1) << "the echo comes once";
    if (GetParam().shown[0] != 0) {
        EXPECT_THAT(lines, testing::Contains(GetParam().shown));
    }
    EXPECT_TRUE(notices.All().empty());
    wire.Finish();
}

const LossCase lossCases[] = {
    {"ResetBeforeTheCommand", "reset\nmark lost\n", ""},
    {"ResetWhileWaitingForTheReply", "mark lost\n-> NOOP\nreset\n", "Connection reset"},
    {"TheServersOwn421", "mark lost\n-> NOOP\n<- 421 idle\nclose\n", "421 idle"},
    {"ATimeOut", "mark lost\n-> NOOP\nexpect close\n", ""},
};

INSTANTIATE_TEST_SUITE_P(Moments, LossTest, testing::ValuesIn(lossCases),
                         [](const auto& info) { return std::string(info.param.moment); });

TEST_F(CommandTest, AnOrderlyCloseIsRepairedByTheNextCommand) {
    StoreText(session->site.directory, pathSize, "/pub");
    LogIn("-> NOOP\nclose\n" + repairedLogin + "-> NOOP\n<- 200 done\nclose\nmark idle\n" +
          repairedLogin + "-> NOOP\n<- 200 again\n");
    EXPECT_EQ(SendCommandText(session, "NOOP"), 0);
    EXPECT_EQ(session->firstCode, 0);
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    ASSERT_TRUE(wire.AwaitMark("idle"));
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    wire.Finish();
}

TEST_F(CommandTest, ASecond421IsGivenBack) {
    LogIn("-> NOOP\n" + steps::lost + "-> NOOP\n<- 421 two\n");
    EXPECT_EQ(SendCommandText(session, "NOOP"), 4);
    EXPECT_EQ(session->firstCode, 421);
    wire.Finish();
}

TEST_F(CommandTest, AnEmptyCommandLogsInAgain) {
    StoreText(session->site.directory, pathSize, "/pub");
    LogIn("expect close\n" + repairedLogin);
    EXPECT_EQ(SendCommandText(session, ""), 2);
    wire.Finish();
}

TEST_F(CommandTest, AFailedRepairIsShownEachTimeAndTriedEachTime) {
    LogIn("refuse\nreset\nmark lost\n");
    wire.AwaitMark("lost");
    EXPECT_EQ(SendCommandText(session, "NOOP"), -1);
    EXPECT_EQ(session->controlSocket, noSocket);
    EXPECT_EQ(SendCommandText(session, "NOOP"), -1);
    const std::vector<std::string> all = notices.Await(4);
    EXPECT_EQ(std::count(all.begin(), all.end(), "error 6005"), 2);
    EXPECT_EQ(std::count(all.begin(), all.end(), "reconnect failed"), 2);
    EXPECT_THAT(Lines(), testing::Contains("Connection refused"));
    wire.Finish();
}

TEST_F(CommandTest, CdupThatIsRefusedBecomesCwd) {
    LogIn(
        "-> CDUP\n<- 550 no\n-> CWD ..\n<- 250 ok\n-> CDUP\n<- 450 later\n"
        "-> CWD ..x\n<- 500 what\n-> XCWD ..x\n<- 250 ok\n");
    EXPECT_EQ(ChangeDir(session, ".."), 2);
    EXPECT_EQ(ChangeDir(session, ".."), 4);
    EXPECT_EQ(ChangeDir(session, "..x"), 2);
    wire.Finish();
}

TEST_F(CommandTest, TheDirectoryStandsBetweenQuotes) {
    struct {
        const char* reply;
        const char* directory;
    } cases[] = {
        {R"(257 "/pub/" is current)", "/pub"},
        {R"(257 "/")", "/"},
        {R"(257 "C:\\dir\\")", "C:\\dir"},  // as the script writes it
        {R"(257 "")", ""},
        {"257 /pub", nullptr},
        {R"(257 "/pub)", nullptr},
    };
    std::string script;
    for (const auto& row : cases) {
        script += std::string("-> PWD\n<- ") + row.reply + "\n";
    }
    LogIn(script);
    for (const auto& row : cases) {
        char* directory = session->replyBuffer;
        EXPECT_EQ(GetWorkingDir(session, &directory), 2);
        EXPECT_STREQ(directory, row.directory) << row.reply;
    }
    wire.Finish();
}

}  // namespace
