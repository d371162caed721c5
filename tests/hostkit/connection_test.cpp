// Connections through the module itself, to the loopback server, and copies between two of them.

#include "hostkit/connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <latch>
#include <thread>

#include "apps/loopback/server.h"
#include "hostkit/server_copy.h"
#include "support/temp_folder.h"

using namespace hostkit;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::StartsWith;

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

    /// Works on a connection that stands in /pub.
    void Converse(const std::function<void(Connection& connection)>& job) {
        RunJob(loop, [&] {
            Connection connection(host);
            ASSERT_TRUE(connection.Connect(request).Connected());
            job(connection);
        });
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
    Converse([&](Connection& connection) {
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

TEST_F(ConnectionTest, ADirectoryThatDiffersInCaseAloneHasItsOwnListing) {
    std::filesystem::create_directories(folder / "served/PUB");
    Converse([&](Connection& connection) {
        const std::size_t entries = connection.List().entries.Count();
        ASSERT_TRUE(connection.ChangeDirectory("/PUB").Done());
        EXPECT_NE(connection.List().entries.Count(), entries);
        ASSERT_TRUE(connection.ChangeDirectory("/pub").Done());
        EXPECT_EQ(connection.List().entries.Count(), entries);
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
    Converse([&](Connection& connection) {
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
    Converse([&](Connection& connection) {
        TransferOperation operation;
        std::latch moved(1);
        operation.progress = [&](const quennet::TransferRecord&, u32) {
            if (!moved.try_wait()) {
                moved.count_down();
            }
        };
        std::jthread ending([&] {
            moved.wait();
            connection.Disconnect();
        });
        EXPECT_TRUE(connection.Download(Download(), operation).Done());
        ending.join();
        EXPECT_EQ(ReadWhole(target), content);
        EXPECT_FALSE(connection.Connected());
    });
}

TEST_F(ConnectionTest, NoFileIsMovedInATypeThatWasRefused) {
    server->Add({.command = "TYPE", .occurrence = 0, .text = "504 no"});
    WriteWhole(target, "mine");
    Converse([&](Connection& connection) {
        TransferOperation operation;
        operation.confirm = [](const quennet::TransferItem&, u32) { return ConfirmAnswer::goOn; };
        for (int turn = 0; turn < 2; ++turn) {
            EXPECT_EQ(connection.Download(Download(), operation).text,
                      "504 no (the binary type was refused)");
            EXPECT_EQ(ReadWhole(target), "mine");
        }
        EXPECT_FALSE(connection.Upload({target, "up"}, {}, operation).Done());
        EXPECT_FALSE(std::filesystem::exists(folder / "served/pub/up"));
    });
}

TEST_F(ConnectionTest, ManyConnectionsAtOnce) {
    RunJob(loop, [&] {
        std::vector<std::jthread> threads;
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
    });
    EXPECT_EQ(*host.SocketUseCounter(), 0u);
}

/// Copies between that server and another one.
class ServerCopyTest : public ConnectionTest {
  protected:
    ServerCopyTest() {
        std::filesystem::create_directories(folder / "to/up");
        loopback::Options options;
        options.root = folder / "to";
        taker = std::make_unique<loopback::Server>(options);
        request.directory = "";
    }

    void ConverseWithBoth(
        const std::function<void(Connection& source, Connection& destination)>& job) {
        Converse([&](Connection& source) {
            Connection destination(host);
            request.host = "127.0.0.1:" + std::to_string(taker->Port());
            ASSERT_TRUE(destination.Connect(request).Connected());
            job(source, destination);
        });
    }

    static ServerCopyResult Copy(Connection& source, Connection& destination,
                                 const ServerCopyRequest& request) {
        TransferOperation operation;
        return CopyBetween(source, destination, request, operation);
    }

    std::unique_ptr<loopback::Server> taker;
};

TEST_F(ServerCopyTest, APathEntersItsDirectoryAndANameStaysThere) {
    ConverseWithBoth([&](Connection& source, Connection& destination) {
        for (const auto& [from, to] :
             {std::pair("/pub/file", "up/b"), {"file", "c"}, {"file", "/d\\e:f"}}) {
            EXPECT_TRUE(Copy(source, destination, {from, to}).Done());
            EXPECT_EQ(source.Directory(), "/pub");
        }
        EXPECT_TRUE(Copy(destination, source, {"d\\e:f", "x:b"}).Done());
    });
    for (const char* path : {"to/up/b", "to/up/c", "to/d\\e:f", "served/pub/x:b"}) {
        EXPECT_EQ(ReadWhole(folder / path), content) << path;
    }
}

TEST_F(ServerCopyTest, AFailureHasTheWordsOfTheSideThatFailed) {
    ConverseWithBoth([&](Connection& source, Connection& destination) {
        EXPECT_THAT(Copy(source, destination, {"/pub/none", "x"}).sourceText, StartsWith("550"));
        taker->Add({.command = "STOR", .action = loopback::FaultAction::failData});
        const ServerCopyResult lost = Copy(source, destination, {"file", "x"});
        EXPECT_FALSE(lost.Done());
        EXPECT_THAT(lost.destinationText, StartsWith("426"));
        EXPECT_THAT(Copy(source, destination, {"file", "none/x"}).destinationText,
                    StartsWith("550"));
        EXPECT_THAT(Copy(source, source, {"file", "x"}).sourceText, StartsWith("FxP between same"));

        const std::size_t before = server->Commands().size() + taker->Commands().size();
        EXPECT_EQ(Copy(source, destination, {"pub/", "x"}).sourceText, "the path names no file");
        EXPECT_THAT(Copy(source, destination, {"file", std::string(260, 'x')}).destinationText,
                    StartsWith("the path is longer"));
        EXPECT_EQ(server->Commands().size() + taker->Commands().size(), before);
        destination.Disconnect();
        EXPECT_EQ(Copy(source, destination, {"file", "x"}).destinationText, "not connected");
        EXPECT_TRUE(source.List().done);
    });
}
