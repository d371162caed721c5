// Two scripted servers and the copy between them.

#include <cstring>
#include <future>

#include "control/login.h"
#include "control/sockets.h"
#include "host/message.h"
#include "host/services.h"
#include "support/session_test.h"

using namespace quennet;
using testing::Contains;
using testing::Not;

namespace {

class ServerToServerTest : public SessionTest {
  protected:
    ServerToServerTest() {
        auto* handle = static_cast<FtpHandle*>(CoreAlloc(sizeof(FtpHandle) + sizeof(Session)));
        std::memcpy(static_cast<void*>(handle), session->handle,
                    sizeof(FtpHandle) + sizeof(Session));
        destination = reinterpret_cast<Session*>(handle + 1);
        handle->session = WordFromPointer(destination);
        destination->handle = handle;
        destination->console = 0;
        destination->watchdogWindow = 0;
        destination->port = destinationWire.port();
        destination->transferType = 'I';
        StoreText(item.source, sizeof item.source, "/pub/a.txt");
        StoreText(item.destination, sizeof item.destination, "/up/b.txt");
        item.record = WordFromPointer(&record);
    }

    ~ServerToServerTest() override {
        CloseSocketGracefully(destination, destination->controlSocket, 2);
        void* block = destination->handle;
        CoreFree(&block);
    }

    void Join(const std::string& sourceScript, const std::string& destinationScript) {
        LogIn("-> TYPE I\n<- 200 ok\n" + sourceScript);
        destinationWire.Start("<- 220 ready\n-> USER anna\n<- 230 in\n" + destinationScript);
        ASSERT_EQ(LoginSession(destination), loginDone);
        destination->transferType = 'I';
    }

    i32 Copy() {
        session->handle->errorText[0] = 0;
        destination->handle->errorText[0] = 0;
        return Host().Send(MessageNumber::copyBetweenServers, &item, session->handle,
                           destination->handle);
    }

    std::string SourceError() const { return session->handle->errorText; }
    std::string DestinationError() const { return destination->handle->errorText; }

    void Finish() {
        wire.Finish();
        destinationWire.Finish();
    }

    Wire destinationWire;
    Session* destination = nullptr;
    TransferItem item = {};
    TransferRecord record = {};
};

const std::string passive = "-> PASV\n<- 227 ok (10,1,2,3,4,5)\n";
const std::string port = "-> PORT 10,1,2,3,4,5\n";

struct CopyCase {
    std::string source;
    std::string destination;
    i32 result;
    std::string sourceError;
    std::string destinationError;
};

const CopyCase copyCases[] = {
    {passive + "-> RETR a.txt\n<- 150 go\n<- 226 sent\n",
     port + "<- 200 ok\n-> STOR b.txt\n<- 150 go\n<- 250 stored\n", 0, "", ""},
    {passive + "-> RETR a.txt\n<- 550 none\n",
     port + "<- 200 ok\n-> STOR b.txt\n<- 150 go\n-> ABOR\n<- 426 cut\n<- 226 abort\n", -1,
     "550 none", "426 cut"},
    {passive + "-> RETR a.txt\n<- 150 go\n<- 226 sent\n",
     port + "<- 200 ok\n-> STOR b.txt\n<- 150 go\n<- 426 lost\n", -1, "", "426 lost"},
    {passive + "-> RETR a.txt\n<- 150 go\n<- 451 disk\n",
     port + "<- 200 ok\n-> STOR b.txt\n<- 150 go\n<- 226 stored\n", -1, "451 disk", ""},
    {"-> PASV\n<- 502 no\n", "", -1, "502 no", "226 stored"},
    {"-> PASV\n<- 227 nowhere\n", "", -1, "227 nowhere", "226 stored"},
    {passive, port + "<- 504 no\n" + port + "<- 504 never\n", -1, "227 ok (10,1,2,3,4,5)",
     "504 never"},
    {passive, port + "<- 200 ok\n-> STOR b.txt\n<- 553 no\n", -1, "227 ok (10,1,2,3,4,5)",
     "553 no"},
    {passive + "-> RETR a.txt\n<- 150 go\nclose\n",
     port + "<- 200 ok\n-> STOR b.txt\n<- 150 go\n<- 226 empty\n", -1, "The server did not answer.",
     ""},
};

TEST_F(ServerToServerTest, EachConversationHasItsResultAndItsTexts) {
    std::string source;
    std::string target = "expect close\n" + steps::relogin + "-> TYPE I\n<- 200 ok\n";
    for (const CopyCase& each : copyCases) {
        source += each.source;
        target += each.destination;
    }
    Join(source, target);
    // As after a repair that failed: it is tried again.
    destination->controlSocket = CloseSocketGracefully(destination, destination->controlSocket, 2);
    for (const CopyCase& each : copyCases) {
        EXPECT_EQ(Copy(), each.result) << each.source << each.destination;
        EXPECT_EQ(SourceError(), each.sourceError);
        EXPECT_EQ(DestinationError(), each.destinationError);
        EXPECT_EQ(session->progress, nullptr);
    }
    Finish();
}

TEST_F(ServerToServerTest, TheDestinationIsReadyFirstAndNobodyHurriesTheLastWords) {
    session->timeoutSeconds = 1;
    Join(passive + "-> RETR a.txt\n<- 150 go\npause 2.5\n<- 226 sent\n",
         port + "<- 200 ok\n-> STOR b.txt\nmark store\nawait looked\n<- 150 go\n" +
             "mark wait\nawait seen\n<- 226 stored\n");
    auto result = std::async(std::launch::async, [this] { return Copy(); });
    ASSERT_TRUE(destinationWire.AwaitMark("store"));
    EXPECT_THAT(wire.Saw(), Not(Contains("RETR a.txt")));
    destinationWire.Signal("looked");
    ASSERT_TRUE(destinationWire.AwaitMark("wait"));
    while (!session->busy.IsSet() || !destination->busy.IsSet()) {
        Sleep(5);
    }
    EXPECT_EQ(Host().Send(MessageNumber::remoteDelete, "x", session->handle), -1)
        << "its reply would be taken for the source's last word";
    destinationWire.Signal("seen");
    EXPECT_EQ(result.get(), 0);
    EXPECT_EQ(session->timeoutSeconds, 1u);
    Finish();
}

TEST_F(ServerToServerTest, ADestinationThatIsDeafToABORIsLeftSoonForANewConnection) {
    Join(passive + "-> RETR a.txt\n<- 550 none\n",
         port + "<- 200 ok\n-> STOR b.txt\n<- 150 go\n-> ABOR\naccept\n<- 220 again\n" +
             "-> USER anna\n<- 230 in\n-> DELE y\n<- 250 ok\n");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Copy(), -1);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(SourceError(), "550 none");
    EXPECT_EQ(Host().Send(MessageNumber::remoteDelete, "y", destination->handle), 0);
    Finish();
}

TEST_F(ServerToServerTest, WhatCannotBeCopiedSendsNothing) {
    LogIn("");
    destination->controlSocket = 4711;
    for (char* path : {item.destination, item.source}) {
        std::strcpy(path, "a\nDELE b");
        EXPECT_EQ(Copy(), -1);
        EXPECT_EQ(path == item.source ? SourceError() : DestinationError(),
                  "Line holds a line end, not sent.");
    }
    destination->controlSocket = session->controlSocket;
    EXPECT_EQ(Copy(), -1);
    EXPECT_EQ(SourceError(), "FxP between same hosts not supported.");
    EXPECT_EQ(Lines().back(), "FxP between same hosts not supported.");
    destination->controlSocket = 4711;
    destination->busy.Store(1);
    destination->abortFlag.Store(1);
    EXPECT_EQ(Copy(), -1);
    EXPECT_EQ(Lines().back(), "Command in progress, ignored.");
    EXPECT_EQ(SourceError(), "");
    EXPECT_TRUE(destination->abortFlag.IsSet());
    destination->busy.Store(0);
    destination->exchangeThread.Store(1);  // of another thread, between two commands
    const std::size_t before = Lines().size();
    EXPECT_EQ(Copy(), -1);
    EXPECT_EQ(Lines().size(), before + 1) << "the source's console says why";
    destination->controlSocket = noSocket;
    wire.Finish();
}

}  // namespace
