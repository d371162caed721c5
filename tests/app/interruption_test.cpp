// What ends a run before its time: Ctrl-C, and a connection on which nothing moves.

#include <signal.h>

#include <thread>

#include "app/program_test.h"
#include "support/wait.h"

namespace {

namespace fs = std::filesystem;
using loopback::FaultAction;
using Clock = std::chrono::steady_clock;

// Well below the thirty seconds after which a silent server is given up without a signal.
constexpr auto soon = std::chrono::seconds(20);

class InterruptionTest : public ProgramTest {
  protected:
    InterruptionTest() {
        bytes = Bytes(2'000'000);
        served.Write("file", bytes);
        served.Write("other", "1");
        Serve();
    }

    void ExpectPart(std::uintmax_t least) {
        const std::string part = home.Read("file");
        EXPECT_GE(part.size(), least);
        EXPECT_LT(part.size(), bytes.size());
        EXPECT_TRUE(bytes.starts_with(part));
    }

    std::string bytes;
};

TEST_F(InterruptionTest, CtrlCEndsAStalledDownloadAndKeepsThePart) {
    for (const int signals : {1, 2}) {
        server->ClearFaults();
        server->Add({"RETR", 1, FaultAction::stallData, "", 1'000'000});
        ProgramRun run(home, {"get", Url("file")});
        ASSERT_TRUE(AwaitSize(home / "file", 500'000));
        const auto start = Clock::now();
        for (int i = 0; i < signals; ++i) {
            run.Signal(SIGINT);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
        const RunResult result = run.Finish();
        EXPECT_LT(Clock::now() - start, soon);
        EXPECT_EQ(result.status, exitFailed);
        EXPECT_EQ(result.errors, "quennet: interrupted\n");
        ExpectPart(500'000);
        EXPECT_EQ(Quennet(home, {"get", "--resume", Url("file")}).status, exitDone);
        EXPECT_TRUE(home.Read("file") == bytes);
        fs::remove(home / "file");
    }
}

TEST_F(InterruptionTest, CtrlCEndsADownloadThatMoves) {
    server->Add({"RETR", 1, FaultAction::slowData, "", 10'000, std::chrono::milliseconds(50)});
    ProgramRun run(home, {"get", Url("file")});
    ASSERT_TRUE(AwaitSize(home / "file", 100'000));
    const auto start = Clock::now();
    run.Signal(SIGTERM);
    EXPECT_EQ(run.Finish().status, exitFailed);
    EXPECT_LT(Clock::now() - start, soon);
    ExpectPart(100'000);
}

TEST_F(InterruptionTest, CtrlCEndsSilenceAtEachStep) {
    struct Row {
        const char* command;
        const char* line;
        const char* url;
        FaultAction action;
    };
    const Row table[] = {
        {"USER", "USER anonymous", "file", FaultAction::silent},
        {"SYST", "SYST", "file", FaultAction::silent},
        {"CWD", "CWD pub", "pub/file", FaultAction::silent},
        {"LIST", "LIST", "file", FaultAction::stallData},
        {"RETR", "RETR file", "file", FaultAction::silent},
    };
    fs::create_directories(served / "pub");
    served.Write("pub/file", "1");
    for (const Row& row : table) {
        server->ClearFaults();
        server->ClearLog();
        server->Add({row.command, 1, row.action, "", 10});
        ProgramRun run(home, {"get", Url(row.url)});
        EXPECT_TRUE(WaitUntil([&] { return Heard(row.line); })) << row.line;
        const auto start = Clock::now();
        run.Signal(SIGINT);
        const RunResult result = run.Finish();
        EXPECT_LT(Clock::now() - start, soon) << row.line;
        EXPECT_EQ(result.status, exitFailed) << row.line;
        EXPECT_EQ(result.errors, "quennet: interrupted\n") << row.line;
        EXPECT_EQ(NamesIn(home / ""), std::vector<std::string>{".netrc"}) << row.line;
    }
}

TEST_F(InterruptionTest, ADataConnectionOnWhichNothingMovesIsGivenUp) {
    server->Add({"RETR", 1, FaultAction::stallData, "", 1'000'000});
    const auto start = Clock::now();
    RunResult result = Quennet(home, {"--idle-timeout", "1", "get", Url("file")});
    EXPECT_LT(Clock::now() - start, soon);
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_EQ(result.errors, "quennet: no data for 1 s, given up\n");
    ExpectPart(900'000);

    server->ClearFaults();
    server->Add({"LIST", 1, FaultAction::stallData, "", 10});
    result = Quennet(home, {"--idle-timeout", "1", "ls", Url("")});
    EXPECT_EQ(result.status, exitFailed);
    EXPECT_EQ(result.output, "");

    // One that is slow is not idle.
    server->ClearFaults();
    server->Add({"RETR", 1, FaultAction::slowData, "", 200'000, std::chrono::milliseconds(500)});
    result = Quennet(home, {"--idle-timeout", "4", "get", "--overwrite", Url("file")});
    EXPECT_EQ(result.status, exitDone) << result.errors;
}

}  // namespace
