// Copies between two loopback servers.

#include "hostkit/server_copy.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "apps/loopback/server.h"
#include "support/temp_folder.h"

using namespace hostkit;
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
        for (const auto& [from, to] : {std::pair("/pub/a", "up/b"), {"a", "c"}, {"a", "/d\\e:f"}}) {
            EXPECT_TRUE(Copy(source, destination, {from, to}).Done());
            EXPECT_EQ(source.Directory(), "/pub");
        }
        EXPECT_TRUE(Copy(destination, source, {"d\\e:f", "x:b"}).Done());
    });
    for (const char* path : {"to/up/b", "to/up/c", "to/d\\e:f", "from/pub/x:b"}) {
        EXPECT_EQ(ReadWhole(folder / path), content) << path;
    }
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

}  // namespace
