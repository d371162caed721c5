// Aborts in the middle of what a real server sends, and servers that fall silent or die there.
// What counts each time: it ends soon, and afterwards session and server mean the same exchange.

#include <chrono>
#include <thread>

#include "interop/interop_test.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;
using hostkit::Connection;
using hostkit::TransferOutcome;
using Clock = std::chrono::steady_clock;

constexpr std::uint64_t big = 100'000'000;

// One aborted wait takes two seconds at most. What follows a first one (a restart, a repair) runs
// into the next call of Abort, with the wait for replies that are owed in between.
constexpr auto abortTime = std::chrono::seconds(10);

class InteropAbort : public InteropTest {
  protected:
    void SetUp() override {
        WriteBytes(served / "small", MixedBytes(1000));
        WriteSparse(served / "big", big);
        InteropTest::SetUp();
    }

    // An operation that does something once so many bytes have come.
    static hostkit::TransferOperation After(std::uint64_t bytes, std::function<void()> act) {
        hostkit::TransferOperation operation = GoOn();
        operation.progress = [bytes, act, moved = std::uint64_t{0}](const TransferRecord&,
                                                                    u32 count) mutable {
            const std::uint64_t before = moved;
            moved += count;
            if (before < bytes && moved >= bytes) {
                act();
            }
        };
        return operation;
    }

    // Aborts at this very block, and goes on with it: the restart that follows is to end too.
    static void Abort(Connection& connection, std::optional<RepeatedAbort>& repeated) {
        connection.Abort();
        repeated.emplace(connection);
    }

    // What came before the end is kept, and is the beginning of the file.
    void ExpectPrefix(const std::string& name, std::uint64_t atLeast) {
        const std::string kept = ReadBytes(local / name);
        const std::string whole = ReadBytes(served / name);
        EXPECT_GE(kept.size(), atLeast);
        EXPECT_LE(kept.size(), whole.size());
        EXPECT_TRUE(whole.compare(0, kept.size(), kept) == 0);
    }
};
INSTANTIATE_TEST_SUITE_P(Servers, InteropAbort, testing::ValuesIn(AllCases()), CaseName);

TEST_P(InteropAbort, OfABigDownloadKeepsWhatCameAndLeavesTheSessionInStep) {
    Converse([&](Connection& connection) {
        std::optional<RepeatedAbort> abort;
        auto operation = After(big / 10, [&] { Abort(connection, abort); });
        const Clock::time_point start = Clock::now();
        EXPECT_EQ(Download(connection, "big", operation).outcome, TransferOutcome::failed);
        abort.reset();
        EXPECT_LT(Clock::now() - start, abortTime);
        ExpectPrefix("big", big / 10);
        ExpectInStep(connection);

        // And the rest of the file is still to be had.
        EXPECT_TRUE(Download(connection, "big").Done());
        EXPECT_TRUE(SameContent(local / "big", served / "big"));
    });
}

TEST_P(InteropAbort, AtAnyMomentOfASmallDownloadLeavesTheSessionInStep) {
    Converse([&](Connection& connection) {
        for (int round = 0; round < 20; ++round) {
            const Clock::time_point start = Clock::now();
            std::optional<RepeatedAbort> abort;
            abort.emplace(connection, std::chrono::microseconds(200 * round));
            const hostkit::TransferResult result = Download(connection, "small");
            abort.reset();
            EXPECT_LT(Clock::now() - start, abortTime) << "round " << round;
            if (result.Done()) {
                EXPECT_TRUE(SameContent(local / "small", served / "small"));
            }
            fs::remove(local / "small");
        }
        ExpectInStep(connection);
    });
}

TEST_P(InteropAbort, EndsADownloadFromAServerThatHasFallenSilent) {
    Converse([&](Connection& connection) {
        Clock::time_point halted;
        std::optional<RepeatedAbort> abort;
        auto operation = After(big / 10, [&] {
            server->Halt();
            halted = Clock::now();
            abort.emplace(connection);
        });
        EXPECT_EQ(Download(connection, "big", operation).outcome, TransferOutcome::failed);
        EXPECT_LT(Clock::now() - halted, abortTime);
        abort.reset();
        server->Resume();
        ExpectPrefix("big", 1);
        ExpectInStep(connection);
    });
}

TEST_P(InteropAbort, OfOneConnectionDoesNotDisturbTheOther) {
    std::atomic<int> running = 0;
    auto waitForBoth = [&] {
        ++running;
        for (const auto end = Clock::now() + abortTime; running < 2 && Clock::now() < end;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    };
    fs::copy_file(served / "big", served / "other");
    Converse([&](Connection& first) {
        Connection second(host, transcript.Options());
        ASSERT_TRUE(second.Connect(Request()).Connected());

        for (const bool firstIsAborted : {true, false}) {
            running = 0;
            Connection& aborted = firstIsAborted ? first : second;
            Connection& other = firstIsAborted ? second : first;
            std::thread otherThread([&] {
                auto operation = After(1, waitForBoth);
                EXPECT_TRUE(Download(other, "other", operation).Done());
            });
            std::optional<RepeatedAbort> abort;
            auto operation = After(1 << 20, [&] {
                waitForBoth();
                Abort(aborted, abort);
            });
            EXPECT_EQ(Download(aborted, "big", operation).outcome, TransferOutcome::failed);
            abort.reset();
            otherThread.join();
            EXPECT_TRUE(SameContent(local / "other", served / "other"));
            ExpectInStep(aborted);
            ExpectInStep(other);
            fs::remove(local / "big");
            fs::remove(local / "other");
        }
    });
}

TEST_P(InteropAbort, AServerThatDiesInADownloadEndsItAndIsFoundAgainWhenItIsBack) {
    Converse([&](Connection& connection) {
        auto operation = After(big / 10, [&] { server->Stop(); });
        const Clock::time_point start = Clock::now();
        const hostkit::TransferResult result = Download(connection, "big", operation);
        EXPECT_EQ(result.outcome, TransferOutcome::failed);
        EXPECT_LT(Clock::now() - start, abortTime);
        ExpectPrefix("big", big / 10);

        // No server: each command says so. A server again: the next command logs in and goes on.
        EXPECT_FALSE(connection.CheckDirectory("sub").Done());
        loop.Invoke([&] { server->Restart(); });
        ASSERT_TRUE(server->Running()) << server->Failure();
        ExpectInStep(connection);
        EXPECT_TRUE(Download(connection, "big").Done());
        EXPECT_TRUE(SameContent(local / "big", served / "big"));
    });
}

}  // namespace
}  // namespace quennet::interop
