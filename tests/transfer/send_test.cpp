#include "transfer/send.h"

#include <filesystem>

#include "control/command.h"
#include "host/services.h"
#include "support/session_test.h"
#include "support/temp_folder.h"

using namespace quennet;
namespace {

/// Puts another service in the host's place while it stands.
class OtherService {
  public:
    OtherService(ShellService service, HostWord function)
        : shell_(hostTables.shell), other_(*shell_) {
        if (service != ShellService::count) {
            other_.words[static_cast<u32>(service)] = function;
        }
        original = shell_;
        reads = 0;
        hostTables.shell = &other_;
    }
    ~OtherService() { hostTables.shell = shell_; }

    static inline const ShellServices* original;
    static inline int reads;

  private:
    const ShellServices* shell_;
    ShellServices other_;
};

template <typename Function>
Function Original(ShellService service) {
    return reinterpret_cast<Function>(OtherService::original->words[static_cast<u32>(service)]);
}

extern "C" i32 FailTheThirdRead(ShellFile* file, void* buffer, u32 size) {
    const auto read = Original<ShellReadFileFunction>(ShellService::readFile);
    return ++OtherService::reads == 3 ? 5 : read(file, buffer, size);
}

/// The file that ShrinkBeforeTheThirdRead cuts, to less than the reads before.
std::filesystem::path shrinking;

extern "C" i32 ShrinkBeforeTheThirdRead(ShellFile* file, void* buffer, u32 size) {
    if (++OtherService::reads == 3) {
        std::filesystem::resize_file(shrinking, 1000);
    }
    return Original<ShellReadFileFunction>(ShellService::readFile)(file, buffer, size);
}

extern "C" i32 FailToClose(ShellFile* file) {
    Original<ShellCloseFileFunction>(ShellService::closeFile)(file);
    return 5;
}

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

TEST_F(SendTest, ALocalFileThatFailsInTheMiddleIsAFailureWhateverTheServerSays) {
    const struct {
        ShellService service;
        HostWord function;
        const char* text;
    } rows[] = {
        {ShellService::readFile, reinterpret_cast<HostWord>(FailTheThirdRead),
         "The local file could not be read."},
        {ShellService::closeFile, reinterpret_cast<HostWord>(FailToClose),
         "The local file could not be closed."},
        {ShellService::readFile, reinterpret_cast<HostWord>(ShrinkBeforeTheThirdRead),
         "The local file could not be read."},
    };
    constexpr char steps[] =
        "-> PASV\n<- 227 ({pasv})\n-> STOR f\n<- 150 go\ndata accept\ndata expect close\n"
        "<- 226 stored\n";
    LogIn(std::string("-> TYPE I\n<- 200 ok\n") + steps + steps + steps + "-> NOOP\n<- 200 mine\n");
    shrinking = folder / "f";
    for (const auto& row : rows) {
        folder.Write("f", Wire::Pattern(1 << 20));
        const OtherService other(row.service, row.function);
        EXPECT_EQ(Send("f"), -1);
        EXPECT_STREQ(session->replyBuffer, row.text);
    }
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    wire.Finish();
}

TEST_F(SendTest, AnAbortEndsAnUploadThatNobodyReadsWithinTwoSecondsWhateverTheServerSays) {
    folder.Write("f", Wire::Pattern(64 << 20));
    LogIn(Stor("<- 150 go\ndata accept\nawait silent\n<- 426 late\n") +
          "-> PASV\n<- 227 ({pasv})\n-> STOR f\n<- 150 go\n<- 226 looks fine\ndata accept\n"
          "await hasty\n-> NOOP\n<- 200 mine\n");
    constexpr auto delay = std::chrono::milliseconds(700);
    for (const char* server : {"silent", "hasty"}) {
        AbortAfter(delay);
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(Send("f"), -1);
        EXPECT_LT(std::chrono::steady_clock::now() - start, delay + std::chrono::seconds(2));
        EXPECT_STREQ(session->replyBuffer, "The transfer was aborted.");
        wire.Signal(server);
    }
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    EXPECT_STREQ(session->replyBuffer, "200 mine");
    wire.Finish();
}

}  // namespace
