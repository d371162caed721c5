// Copies from one real server to another.

#include <atomic>
#include <thread>

#include "hostkit/server_copy.h"
#include "interop/interop_test.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;
using hostkit::Connection;
using hostkit::ServerCopyResult;
using Clock = std::chrono::steady_clock;

constexpr std::uint64_t big = 100 << 20;

struct Kinds {
    ServerKind from;
    ServerKind to;
};

std::ostream& operator<<(std::ostream& stream, const Kinds& kinds) {
    return stream << ServerName(kinds.from) << "_to_" << ServerName(kinds.to);
}

/// Two servers with a folder each, and a connection to both.
class InteropFxp : public testing::TestWithParam<Kinds> {
  protected:
    InteropFxp() {
        host.LoadModule(QUENNET_MODULE);
        fs::permissions(taken.Path(), fs::perms::all);
        fs::create_directory(served / "sub");
        fs::create_directory(taken / "sub");
        WriteBytes(served / "small", MixedBytes(1000));
    }

    void Connect(Connection& connection, const Server& server) {
        hostkit::ConnectRequest request;
        request.host = "127.0.0.1:" + std::to_string(server.Port());
        request.user = server.GetAccount().user;
        request.password = server.GetAccount().password;
        const hostkit::ConnectResult result = connection.Connect(request);
        ASSERT_TRUE(result.Connected()) << result.text;
    }

    /// Runs the conversation with two servers; skips the test when one of them can't be had.
    void Converse(std::uint64_t bytesPerSecond, const std::function<void()>& conversation) {
        Server::Options options;
        options.foreignAddresses = true;
        options.bytesPerSecond = bytesPerSecond;
        const Server sender(GetParam().from, served.Path(), options);
        const Server taker(GetParam().to, taken.Path(), options);
        for (const Server* server : {&sender, &taker}) {
            if (server->Unavailable() && !SkipsAreFailures()) {
                GTEST_SKIP() << server->Failure();
            }
            ASSERT_TRUE(server->Running()) << server->Failure();
        }
        hostkit::RunJob(loop, [&] {
            Connect(source, sender);
            Connect(destination, taker);
            if (!HasFatalFailure()) {
                conversation();
            }
            source.Disconnect();
            destination.Disconnect();
        });
        if (HasFailure()) {
            std::cerr << "---- the connections' log\n" << transcript.Text();
        }
    }

    ServerCopyResult Copy(const std::string& from, const std::string& to) {
        hostkit::TransferOperation operation;
        return hostkit::CopyBetween(source, destination, {from, to}, operation);
    }

    void ExpectCopies(const std::string& from, const std::string& to) {
        const ServerCopyResult result = Copy(from, to);
        EXPECT_TRUE(result.Done()) << result.sourceText << ", " << result.destinationText;
        EXPECT_TRUE(SameContent(served / from, taken / to));
    }

    /// Each command of both sides gets its own reply.
    void ExpectInStep() {
        for (Connection* each : {&source, &destination}) {
            const std::string home = each->Directory();
            EXPECT_TRUE(each->CheckDirectory("sub").directory.ends_with("/sub"));
            EXPECT_EQ(each->CheckDirectory(home).directory, home);
            EXPECT_EQ(each->DeleteFile("no such file").text.substr(0, 3), "550");
            each->InvalidateListing();
            EXPECT_EQ(ByName(each->List()).count("sub"), 1u);
        }
        ExpectCopies("small", "small");
    }

    TestFolder served;
    TestFolder taken;
    Transcript transcript;
    hostkit::MessageLoop loop;
    hostkit::Host host{loop, hostkit::HostOptions()};
    Connection source{host, transcript.Options()};
    Connection destination{host, transcript.Options()};
};

std::vector<Kinds> AllKinds() {
    std::vector<Kinds> all;
    for (const ServerKind from : allServerKinds) {
        for (const ServerKind to : allServerKinds) {
            if (from != to) {
                all.push_back({from, to});
            }
        }
    }
    return all;
}

std::string KindsName(const testing::TestParamInfo<Kinds>& info) {
    std::string name = testing::PrintToString(info.param);
    std::erase(name, '-');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Servers, InteropFxp, testing::ValuesIn(AllKinds()), KindsName);

TEST_P(InteropFxp, AFileArrivesAndARefusedOneDisturbsNothing) {
    Converse(0, [&] {
        WriteSparse(served / "big", big);
        ExpectCopies("big", "copy");
        const Clock::time_point start = Clock::now();
        const ServerCopyResult refused = Copy("no such file", "other");
        EXPECT_FALSE(refused.Done());
        EXPECT_EQ(refused.sourceText.substr(0, 3), "550") << refused.sourceText;
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
        ExpectInStep();
    });
}

TEST_P(InteropFxp, AnAbortOfBothEndsItAndLeavesThemInStep) {
    Converse(5'000'000, [&] {
        WriteSparse(served / "big", big);
        std::atomic<bool> ended = false;
        std::optional<RepeatedAbort> ofSource;
        std::optional<RepeatedAbort> ofDestination;
        Clock::time_point start;
        std::thread person([&] {
            std::error_code missing;
            while (!ended && (!fs::exists(taken / "copy") ||
                              fs::file_size(taken / "copy", missing) < 1'000'000)) {
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            }
            start = Clock::now();
            ofSource.emplace(source);
            ofDestination.emplace(destination);
        });
        const ServerCopyResult result = Copy("big", "copy");
        ended = true;
        person.join();
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
        EXPECT_FALSE(result.Done());
        ofSource.reset();
        ofDestination.reset();
        ExpectInStep();
    });
}

using InteropSlowFxp = InteropFxp;
INSTANTIATE_TEST_SUITE_P(Servers, InteropSlowFxp,
                         testing::Values(Kinds{ServerKind::pyftpdlib, ServerKind::proFtpd},
                                         Kinds{ServerKind::proFtpd, ServerKind::vsftpd}),
                         KindsName);

TEST_P(InteropSlowFxp, LastsLongerThanAnyOtherWait) {
    Converse(100'000, [&] {
        WriteSparse(served / "big", 3'500'000);
        const Clock::time_point start = Clock::now();
        ExpectCopies("big", "copy");
        EXPECT_GT(Clock::now() - start, std::chrono::seconds(31));
        ExpectInStep();
    });
}

}  // namespace
}  // namespace quennet::interop
