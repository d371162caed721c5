// Connections through the module itself, to the loopback server.

#include "hostkit/connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "apps/loopback/server.h"
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
