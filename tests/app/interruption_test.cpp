// What ends a run before its time: Ctrl-C, and a connection on which nothing moves.

#include <signal.h>

#include <thread>

#include "app/program_test.h"
#include "support/wait.h"

namespace {

namespace fs = std::filesystem;
using loopback::FaultAction;
using Clock = std::chrono::steady_clock;

// A signal has its effect within one second; the machine may be busy.
constexpr auto soon = std::chrono::seconds(2);

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

TEST_F(InterruptionTest, CtrlCEndsADownloadAndKeepsThePart) {
    const loopback::Fault stalled = {"RETR", 1, FaultAction::stallData, "", 1'000'000};
    const loopback::Fault slow = {"RETR", 1,      FaultAction::slowData,
                                  "",     10'000, std::chrono::milliseconds(50)};
    for (const auto& [fault, signals] : {std::pair(stalled, std::vector{SIGINT}),
                                         {stalled, {SIGINT, SIGINT}},
                                         {slow, {SIGTERM}}}) {
        server->ClearFaults();
        server->Add(fault);
        ProgramRun run(home, {"get", Url("file")});
        ASSERT_TRUE(AwaitSize(home / "file", 100'000));
        const auto start = Clock::now();
        for (const int signal : signals) {
            run.Signal(signal);
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
        result = run.Finish();
        EXPECT_LT(Clock::now() - start, soon);
        EXPECT_EQ(result.status, exitFailed);
        EXPECT_EQ(result.errors, "quennet: interrupted\n");
        ExpectPart(100'000);
        server->ClearFaults();
        Run({"get", "--resume", Url("file")});
        EXPECT_TRUE(home.Read("file") == bytes);
        fs::remove(home / "file");
    }
}

TEST_F(InterruptionTest, CtrlCEndsSilenceAtEachStep) {
    Make("pub/file", "1");
    for (const std::string line : {"USER anonymous", "SYST", "CWD pub", "LIST", "RETR file"}) {
        SCOPED_TRACE(line);
        server->ClearFaults();
        server->ClearLog();
        server->Add({line.substr(0, line.find(' ')), 1,
                     line == "LIST" ? FaultAction::stallData : FaultAction::silent, "", 10});
        ProgramRun run(home, {"get", Url("pub/file")});
        EXPECT_TRUE(WaitUntil([&] { return Heard(line); }));
        const auto start = Clock::now();
        run.Signal(SIGINT);
        result = run.Finish();
        EXPECT_LT(Clock::now() - start, soon);
        EXPECT_EQ(result.status, exitFailed);
        EXPECT_EQ(result.errors, "quennet: interrupted\n");
        ExpectAtHome({});
    }
}

TEST_F(InterruptionTest, ASignalEndsAProgramWhoseOutputNobodyTakes) {
    for (const char* stream : {"2>&3", ">&3"}) {
        for (const char* signal : {"INT", "TERM", "HUP"}) {
            const auto start = Clock::now();
            result = Shell(home, std::string("mkfifo full; exec 3<>full; rm full\n"
                                             "head -c 65536 /dev/zero >&3\n") +
                                     "\"$0\" -v ls " + Url("") + " " + stream +
                                     " & sleep 0.4; kill -" + signal + " $!; wait $!");
            EXPECT_LT(Clock::now() - start, 2 * soon);
            EXPECT_EQ(result.status, exitFailed) << stream << signal;
        }
    }
}

TEST_F(InterruptionTest, ADataConnectionOnWhichNothingMovesIsGivenUp) {
    server->Add({"RETR", 1, FaultAction::stallData, "", 1'000'000});
    const auto start = Clock::now();
    Fails({"--idle-timeout", "1", "get", Url("file")});
    EXPECT_LT(Clock::now() - start, 10 * soon);
    EXPECT_EQ(result.errors, "quennet: no data for 1 s, given up\n");
    ExpectPart(900'000);

    server->ClearFaults();
    server->Add({"LIST", 1, FaultAction::stallData, "", 10});
    Fails({"--idle-timeout", "1", "ls", Url("")});
    EXPECT_EQ(result.output, "");

    server->ClearFaults();
    server->Add({"PWD", 1, FaultAction::silent});
    Fails({"--reply-timeout", "1", "ls", Url("")}, "no answer within 1 s, given up");

    // One that is slow is not idle.
    server->ClearFaults();
    server->Add({"RETR", 1, FaultAction::slowData, "", 200'000, std::chrono::milliseconds(500)});
    Run({"--idle-timeout", "4", "get", "--overwrite", Url("file")});
}

}  // namespace
