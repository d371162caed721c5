#include "transfer/send.h"

#include <filesystem>

#include "control/command.h"
#include "support/replaced_services.h"
#include "support/session_test.h"
#include "support/temp_folder.h"

using namespace quennet;
using namespace steps;

namespace {

int reads = 0;
/// The file that ShrinkBeforeTheThirdRead cuts, to less than the reads before.
std::filesystem::path shrinking;

extern "C" i32 FailTheThirdRead(ShellFile file, void* buffer, u32 size) {
    const auto read = ReplacedServices::Hosts<ShellReadFileFunction>(ShellService::readFile);
    return ++reads == 3 ? 5 : read(file, buffer, size);
}

extern "C" i32 ShrinkBeforeTheThirdRead(ShellFile file, void* buffer, u32 size) {
    if (++reads == 3) {
        std::filesystem::resize_file(shrinking, 1000);
    }
    return ReplacedServices::Hosts<ShellReadFileFunction>(ShellService::readFile)(file, buffer,
                                                                                  size);
}

extern "C" i32 FailToClose(ShellFile file) {
    ReplacedServices::Hosts<ShellCloseFileFunction>(ShellService::closeFile)(file);
    return 5;
}

const std::string stores = passive + "-> STOR f\n<- 150 go\n";

class SendTest : public SessionTest {
  protected:
    int Send(const std::string& name) {
        return SendFile(session, ("STOR " + name).c_str(), (folder / name).string().c_str(), 'I');
    }

    TempFolder folder;
};

TEST_F(SendTest, AllBytesArriveAndTheServersWordDecides) {
    const std::string bytes = Wire::Pattern(1'000'003);
    wire.Data("bytes", bytes);
    wire.Data("nothing", "");
    LogIn(binary + stores + "data accept\ndata expect bytes\n<- 226 done\n" + stores +
          "data accept\ndata expect nothing\n<- 552 quota\n");
    folder.Write("f", bytes);
    EXPECT_EQ(Send("f"), 0);
    folder.Write("f", "");
    EXPECT_EQ(Send("f"), 5);
    EXPECT_STREQ(session->replyBuffer, "552 quota");
    wire.Finish();
}

TEST_F(SendTest, ALocalFileThatFailsInTheMiddleIsAFailureWhateverTheServerSays) {
    const auto failing = [](auto function) { return reinterpret_cast<HostWord>(function); };
    const struct {
        ShellService service;
        HostWord function;
        const char* text;
    } rows[] = {
        {ShellService::readFile, failing(FailTheThirdRead), "The local file could not be read."},
        {ShellService::readFile, failing(ShrinkBeforeTheThirdRead),
         "The local file could not be read."},
        {ShellService::closeFile, failing(FailToClose), "The local file could not be closed."},
    };
    const std::string upload = stores + "data accept\ndata expect close\n<- 226 stored\n";
    LogIn(binary + upload + upload + upload + upload + inStep);
    shrinking = folder / "f";
    EXPECT_EQ(Send("f"), -1);
    EXPECT_STREQ(session->replyBuffer, "The local file could not be opened.");
    for (const auto& row : rows) {
        folder.Write("f", Wire::Pattern(1 << 20));
        reads = 0;
        ReplacedServices services;
        services.Replace(row.service, row.function);
        EXPECT_EQ(Send("f"), -1);
        EXPECT_STREQ(session->replyBuffer, row.text);
    }
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    wire.Finish();
}

TEST_F(SendTest, AnAbortEndsAnUploadThatNobodyReadsWithinTwoSecondsWhateverTheServerSays) {
    folder.Write("f", Wire::Pattern(64 << 20));
    LogIn(binary + stores + "data accept\nawait silent\n<- 426 late\n" + stores +
          "<- 226 looks fine\ndata accept\nawait hasty\n" + inStep);
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
