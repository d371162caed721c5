#include "transfer/send.h"

#include "control/command.h"
#include "support/session_test.h"
#include "support/temp_folder.h"

using namespace quennet;
using testing::Contains;
using testing::HasSubstr;

namespace {

class SendTest : public SessionTest {
  protected:
    int Send(const std::string& name) {
        return SendFile(session, ("STOR " + name).c_str(), (folder / name).string().c_str(), 'I');
    }

    static std::string Stor(const std::string& steps) {
        return "-> TYPE I\n<- 200 ok\n-> PASV\n<- 227 ({pasv})\n-> STOR f\n" + steps;
    }

    TempFolder folder;
};

TEST_F(SendTest, AllBytesArriveAndTheServersWordDecides) {
    const std::string bytes = Wire::Pattern(1'000'003);
    folder.Write("f", bytes);
    wire.Data("bytes", bytes);
    LogIn(Stor("<- 150 go\ndata accept\ndata expect bytes\ndata close\n<- 226 done\n") +
          "-> PASV\n<- 227 ({pasv})\n-> STOR f\n<- 150 go\ndata accept\ndata expect bytes\n"
          "data close\n<- 552 quota\n");
    EXPECT_EQ(Send("f"), 0);
    EXPECT_EQ(Send("f"), 5);
    EXPECT_STREQ(session->replyBuffer, "552 quota");
    wire.Finish();
}

TEST_F(SendTest, ARefusedCommandGivesItsClass) {
    folder.Write("f", "x");
    LogIn(Stor("<- 553 no\n"));
    EXPECT_EQ(Send("f"), 5);
    EXPECT_EQ(session->listenSocket, noSocket);
    wire.Finish();
}

TEST_F(SendTest, AServerThatClosesInsteadOfAnsweringHasStoredNothing) {
    folder.Write("f", "x");
    wire.Data("bytes", "x");
    LogIn(Stor("<- 150 go\ndata accept\ndata expect bytes\nclose\n"));
    EXPECT_NE(Send("f"), 0);
    wire.Finish();
}

TEST_F(SendTest, AnEmptyFileIsAnEmptyConnection) {
    folder.Write("f", "");
    wire.Data("nothing", "");
    LogIn(Stor("<- 150 go\ndata accept\ndata expect nothing\ndata close\n<- 226 done\n"));
    EXPECT_EQ(Send("f"), 0);
    wire.Finish();
}

TEST_F(SendTest, AMissingLocalFileIsAFailureWhateverTheServerSays) {
    LogIn(Stor("<- 150 go\ndata accept\ndata expect close\n<- 226 done\n") +
          "-> NOOP\n<- 200 mine\n");
    EXPECT_NE(Send("f"), 0);
    EXPECT_STREQ(session->replyBuffer, "The local file could not be opened.");
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    wire.Finish();
}

TEST_F(SendTest, AnAbortEndsAnUploadThatNobodyReadsWithinTwoSeconds) {
    folder.Write("f", Wire::Pattern(64 << 20));
    LogIn(Stor("<- 150 go\ndata accept\nawait aborted\n<- 226 looks fine\n"));
    AbortAfter(std::chrono::milliseconds(500));
    std::thread later([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(2500));
        wire.Signal("aborted");
    });
    const auto start = std::chrono::steady_clock::now();
    const int result = Send("f");
    const auto waited = std::chrono::steady_clock::now() - start;
    later.join();
    EXPECT_NE(result, 0);
    EXPECT_LT(waited, std::chrono::milliseconds(3500)) << "the abort, then the reply at 2.5 s";
    wire.Finish();
}

}  // namespace
