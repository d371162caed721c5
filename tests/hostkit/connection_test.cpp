// Connections through the module itself, to the loopback server.

#include "hostkit/connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>

#include <fstream>
#include <thread>

#include "apps/loopback/server.h"
#include "hostkit/child_process.h"
#include "support/temp_folder.h"

using namespace hostkit;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::HasSubstr;

class ConnectionTest : public ::testing::Test {
  protected:
    ConnectionTest() {
        std::filesystem::create_directories(folder / "served/pub/deep");
        WriteWhole(folder / "served/pub/file", content);
        host.LoadModule(MODULE_PATH);
        loopback::Options options;
        options.root = folder / "served";
        server = std::make_unique<loopback::Server>(options);
        request.host = "127.0.0.1:" + std::to_string(server->Port());
        request.directory = "/pub";
    }

    DownloadRequest Download() {
        DownloadRequest download;
        download.source = "file";
        download.destination = target;
        download.size = content.size();
        return download;
    }

    TempFolder folder;
    const std::string content = MixedBytes(300000);
    const std::string target = folder / "local";
    std::unique_ptr<loopback::Server> server;
    ConnectRequest request;
    MessageLoop loop;
    Host host{loop, {}};
};

TEST_F(ConnectionTest, AListingIsKeptUntilItIsInvalidatedAndCanBeSavedRaw) {
    RunJob(loop, [&] {
        Connection connection(host);
        ASSERT_TRUE(connection.Connect(request).Connected());
        EXPECT_TRUE(connection.List().done && connection.List().done);
        connection.InvalidateListing();
        EXPECT_TRUE(connection.List(true).done && connection.List().done);
        connection.InvalidateAllListings();
        EXPECT_TRUE(connection.List().done);
        EXPECT_THAT(server->Commands(), Contains("LIST").Times(2));
        EXPECT_THAT(server->Commands(), Contains("LIST -la").Times(1));
        auto raw = LocalFile::Create(folder / "raw");
        EXPECT_EQ(connection.SaveRawListing(*raw), 0);
        EXPECT_EQ(raw->Close(), 0);
        EXPECT_THAT(ReadWhole(folder / "raw"), HasSubstr("file"));
    });
}

TEST_F(ConnectionTest, AConnectionThatIsLostBehindItsLoginForGoodIsAFailedOne) {
    server->Add({.command = "PWD", .action = loopback::FaultAction::resetBefore});
    server->Add({.command = "USER", .occurrence = 2, .text = "421 too late"});
    RunJob(loop, [&] {
        Connection connection(host);
        const ConnectResult lost = connection.Connect(request);
        EXPECT_EQ(lost.outcome, ConnectOutcome::failed);
        EXPECT_EQ(lost.text, "421 too late");
        EXPECT_TRUE(connection.Connect(request).Connected());
    });
}

TEST_F(ConnectionTest, AChangeThatFailsBehindItsCheckIsTold) {
    RunJob(loop, [&] {
        Connection connection(host);
        ASSERT_TRUE(connection.Connect(request).Connected());
        // The check succeeds and the change does not, which no callback tells.
        server->Add({.command = "CWD", .occurrence = 2, .text = "550 gone meanwhile"});
        const DirectoryResult gone = connection.ChangeDirectory("deep");
        EXPECT_FALSE(gone.Done());
        EXPECT_EQ(gone.text, "550 gone meanwhile");
        EXPECT_EQ(connection.Directory(), "/pub");
    });
}

TEST_F(ConnectionTest, TheEndOfAConnectionWaitsForItsDownload) {
    server->Add({.command = "RETR",
                 .action = loopback::FaultAction::slowData,
                 .bytes = 30000,
                 .time = 50ms});
    RunJob(loop, [&] {
        Connection connection(host);
        ASSERT_TRUE(connection.Connect(request).Connected());
        TransferOperation operation;
        std::atomic<u64> moved = 0;
        operation.progress = [&](const quennet::TransferRecord&, u32 bytes) { moved += bytes; };
        std::thread ending([&] {
            while (moved == 0) {
                std::this_thread::sleep_for(1ms);
            }
            connection.Disconnect();
        });
        EXPECT_TRUE(connection.Download(Download(), operation).Done());
        ending.join();
        EXPECT_EQ(ReadWhole(target), content);
        EXPECT_FALSE(connection.Connected());
    });
}

TEST_F(ConnectionTest, ManyConnectionsAtOnce) {
    RunJob(loop, [&] {
        std::vector<std::thread> threads;
        for (int number = 0; number < 8; ++number) {
            threads.emplace_back([&, number] {
                Connection connection(host);
                ConnectRequest own = request;
                own.passive = number % 2 == 0;
                ASSERT_TRUE(connection.Connect(own).Connected());
                TransferOperation operation;
                DownloadRequest download = Download();
                download.destination = folder / ("local" + std::to_string(number));
                EXPECT_TRUE(connection.Download(download, operation).Done());
                EXPECT_TRUE(connection.List().done);
                EXPECT_EQ(ReadWhole(download.destination), content);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    });
    EXPECT_EQ(*host.SocketUseCounter(), 0u);
}

namespace {

bool WriteNumberMap(const char* path, const std::string& text) {
    return (std::ofstream(path) << text << std::flush).good();
}

/// Gives the process, which must have one thread, a disk of its own with room for 200,000 bytes.
bool MountSmallDisk(const std::string& folder) {
    const std::string user = "0 " + std::to_string(geteuid()) + " 1\n";
    const std::string group = "0 " + std::to_string(getegid()) + " 1\n";
    return unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 &&
           WriteNumberMap("/proc/self/setgroups", "deny") &&
           WriteNumberMap("/proc/self/uid_map", user) &&
           WriteNumberMap("/proc/self/gid_map", group) &&
           mount("none", folder.c_str(), "tmpfs", 0, "size=200k") == 0;
}

class SmallDiskUser : public ConnectionTest {
  public:
    explicit SmallDiskUser(const std::string& disk) : disk_(disk) {}

    void TestBody() override {
        RunJob(loop, [&] {
            Connection connection(host);
            ASSERT_TRUE(connection.Connect(request).Connected());
            TransferOperation operation;
            DownloadRequest download = Download();
            download.destination = disk_ + "/local";
            const TransferResult full = connection.Download(download, operation);
            EXPECT_EQ(full.outcome, TransferOutcome::failed);
            EXPECT_EQ(full.text, "The local file could not be written.");
            ASSERT_TRUE(full.localFailure);
            EXPECT_THAT(full.localFailure->Text(), HasSubstr("/local: No space left on device"));
            EXPECT_TRUE(connection.List().done);
        });
    }

  private:
    const std::string disk_;
};

TEST(SmallDiskTest, ADiskThatFillsUpDuringADownloadIsNamed) {
    constexpr int notMounted = 77;
    const TempFolder folder;
    ChildProcess child([&] {
        if (!MountSmallDisk(folder / "")) {
            return notMounted;
        }
        SmallDiskUser(folder / "").TestBody();
        return ::testing::Test::HasFailure() ? 1 : 0;
    });
    const int status = child.Wait();
    if (status == notMounted) {
        GTEST_SKIP() << "no disk can be mounted here";
    }
    EXPECT_EQ(status, 0);
}

}  // namespace
