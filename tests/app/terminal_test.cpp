// The program on a terminal: questions, and what it shows meanwhile.

#include "app/program_test.h"

namespace {

using loopback::FaultAction;
using testing::HasSubstr;
using testing::Not;

class TerminalTest : public ProgramTest {
  protected:
    TerminalTest() {
        bytes = Bytes(100'000);
        served.Write("file", bytes);
        options.accounts = {{"anna", "secret"}};
        Serve();
    }

    std::string bytes;
};

TEST_F(TerminalTest, APasswordIsAskedForAndDoesNotShow) {
    TerminalRun run(home, {"ls", Url("", "anna")});
    ASSERT_TRUE(run.Await("Password of anna@127.0.0.1:")) << run.Shown();
    run.Type("secret\n");
    EXPECT_EQ(run.Finish(), exitDone) << run.Shown();
    EXPECT_THAT(run.Shown(), HasSubstr("file"));
    EXPECT_THAT(run.Shown(), Not(HasSubstr("secret")));

    TerminalRun interrupted(home, {"ls", Url("", "anna")});
    ASSERT_TRUE(interrupted.Await("Password"));
    interrupted.Type("\x03");
    EXPECT_EQ(interrupted.Finish(), exitFailed);
    EXPECT_THAT(interrupted.Shown(), HasSubstr("interrupted"));
}

TEST_F(TerminalTest, AnExistingFileIsAskedAbout) {
    const std::string part = bytes.substr(0, 40'000);
    const struct {
        std::string there;
        std::string answer;
        int status;
        bool whole;
        bool resumed;
    } table[] = {
        {part, "r\n", exitDone, true, true},         {part, "o\n", exitDone, true, false},
        {part, "what\ns\n", exitDone, false, false}, {part, "\x04", exitFailed, false, false},
        {part, "\x03", exitFailed, false, false},    {"short", "r\no\n", exitDone, true, false},
    };
    for (const auto& row : table) {
        home.Write("file", row.there);
        server->ClearLog();
        TerminalRun run(home, {"get", Url("file")});
        ASSERT_TRUE(run.Await("the server's file has 100000")) << run.Shown();
        ASSERT_TRUE(run.Await("? ")) << run.Shown();
        run.Type(row.answer);
        EXPECT_EQ(run.Finish(), row.status) << row.answer << run.Shown();
        EXPECT_TRUE(home.Read("file") == (row.whole ? bytes : row.there));
        EXPECT_EQ(Heard("REST 39488"), row.resumed);
    }
}

TEST_F(TerminalTest, ProgressShowsUnlessItIsNotWanted) {
    server->Add({"RETR", 0, FaultAction::slowData, "", 20'000, std::chrono::milliseconds(100)});
    TerminalRun run(home, {"get", Url("file")});
    ASSERT_TRUE(run.Await("%")) << run.Shown();
    EXPECT_EQ(run.Finish(), exitDone);
    EXPECT_THAT(run.Shown(), HasSubstr(" left"));
    EXPECT_THAT(run.Shown(), HasSubstr("file: 97.7 KiB in "));

    TerminalRun quiet(home, {"-q", "get", "--overwrite", Url("file")});
    EXPECT_EQ(quiet.Finish(), exitDone);
    EXPECT_EQ(quiet.Shown(), "");
}

}  // namespace
