// Copies between two loopback servers.

#include "hostkit/server_copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "apps/loopback/server.h"
#include "support/temp_folder.h"

using namespace hostkit;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::StartsWith;

namespace {

class ServerCopyTest : public ::testing::Test {
  protected:
    ServerCopyTest() {
        for (const char* name : {"from/pub", "to/up"}) {
            std::filesystem::create_directories(folder / name);
        }
        WriteWhole(folder / "from/pub/a", content);
        host.LoadModule(MODULE_PATH);
        loopback::Options options;
        options.root = folder / "from";
        sender = std::make_unique<loopback::Server>(options);
        options.root = folder / "to";
        taker = std::make_unique<loopback::Server>(options);
    }

    void Converse(const std::function<void(Connection& source, Connection& destination)>& job) {
        RunJob(loop, [&] {
            Connection source(host);
            Connection destination(host);
            for (auto [connection, server] :
                 {std::pair(&source, sender.get()), std::pair(&destination, taker.get())}) {
                ConnectRequest request;
                request.host = "127.0.0.1:" + std::to_string(server->Port());
                ASSERT_TRUE(connection->Connect(request).Connected());
            }
            job(source, destination);
        });
    }

    static ServerCopyResult Copy(Connection& source, Connection& destination,
                                 const ServerCopyRequest& request) {
        TransferOperation operation;
        return CopyBetween(source, destination, request, operation);
    }

    TempFolder folder;
    const std::string content = std::string(300'000, 'a') + "end";
    std::unique_ptr<loopback::Server> sender;
    std::unique_ptr<loopback::Server> taker;
    MessageLoop loop;
    Host host{loop, {}};
};

TEST_F(ServerCopyTest, APathEntersItsDirectoryAndANameStaysThere) {
    Converse([&](Connection& source, Connection& destination) {
        const ServerCopyResult first = Copy(source, destination, {"/pub/a", "up/b"});
        EXPECT_TRUE(first.Done()) << first.sourceText << first.destinationText;
        EXPECT_EQ(ReadWhole(folder / "to/up/b"), content);
        EXPECT_EQ(source.Directory(), "/pub");
        EXPECT_TRUE(Copy(source, destination, {"a", "c"}).Done());
        EXPECT_EQ(ReadWhole(folder / "to/up/c"), content);
        EXPECT_TRUE(Copy(source, destination, {"a", "/d\\e:f"}).Done());
        EXPECT_EQ(ReadWhole(folder / "to/d\\e:f"), content);
        EXPECT_TRUE(Copy(destination, source, {"d\\e:f", "x:b"}).Done());
        EXPECT_EQ(ReadWhole(folder / "from/pub/x:b"), content);
    });
}

TEST_F(ServerCopyTest, AFailureHasTheWordsOfTheSideThatFailed) {
    Converse([&](Connection& source, Connection& destination) {
        EXPECT_THAT(Copy(source, destination, {"/pub/none", "x"}).sourceText, StartsWith("550"));
        taker->Add({.command = "STOR", .action = loopback::FaultAction::failData});
        const ServerCopyResult lost = Copy(source, destination, {"a", "x"});
        EXPECT_FALSE(lost.Done());
        EXPECT_THAT(lost.destinationText, StartsWith("426"));
        EXPECT_THAT(Copy(source, destination, {"a", "none/x"}).destinationText, StartsWith("550"));
        EXPECT_THAT(Copy(source, source, {"a", "x"}).sourceText, StartsWith("FxP between same"));

        const std::size_t before = sender->Commands().size() + taker->Commands().size();
        EXPECT_EQ(Copy(source, destination, {"pub/", "x"}).sourceText, "the path names no file");
        EXPECT_THAT(Copy(source, destination, {"a", std::string(260, 'x')}).destinationText,
                    StartsWith("the path is longer"));
        EXPECT_EQ(sender->Commands().size() + taker->Commands().size(), before);
        destination.Disconnect();
        EXPECT_EQ(Copy(source, destination, {"a", "x"}).destinationText, "not connected");
        EXPECT_TRUE(source.List().done);
    });
}

TEST_F(ServerCopyTest, AnAbortOnBothEndsIt) {
    sender->Add({.command = "RETR", .action = loopback::FaultAction::stallData, .bytes = 1000});
    Converse([&](Connection& source, Connection& destination) {
        std::atomic<bool> ended = false;
        std::thread person([&] {
            while (!ended) {
                std::this_thread::sleep_for(100ms);
                if (std::filesystem::exists(folder / "to/x")) {
                    source.Abort();
                    destination.Abort();
                }
            }
        });
        const ServerCopyResult result = Copy(source, destination, {"/pub/a", "x"});
        ended = true;
        person.join();
        EXPECT_FALSE(result.Done());
        EXPECT_EQ(result.sourceText, "The transfer was aborted.");
        EXPECT_EQ(result.destinationText, "The transfer was aborted.");
        EXPECT_TRUE(Copy(source, destination, {"/pub/a", "x"}).Done());
        EXPECT_EQ(ReadWhole(folder / "to/x"), content);
    });
}

}  // namespace
