#include "transfer/receive.h"

#include <span>

#include "control/command.h"
#include "control/sockets.h"
#include "host/services.h"
#include "support/session_test.h"
#include "support/temp_folder.h"
#include "transfer/get_file.h"

using namespace quennet;
using namespace steps;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;

namespace {

// Steps of the server, in the order in which they stand on the wire.
const std::string opensFile = "-> RETR f\n<- 150 here\ndata accept\n";
const std::string retrieves = passive + opensFile;
const std::string restarts = passive + "-> REST 1536\n<- 350 go on\n";
const std::string resumes = restarts + opensFile;
const std::string confirms = "data close\n<- 226 done\n";
const std::string breaksOff = "data <- part\ndata expect close\n<- 426 broken\n";

class ReceiveTest : public SessionTest {
  protected:
    ~ReceiveTest() override { CoreFreeWord(&buffer.base); }

    std::string Path(const std::string& name) { return (folder / name).string(); }

    int Receive(const std::string& name, HostWord resumeOffset = 0, char type = 'I') {
        return ReceiveFile(session, ("RETR " + name).c_str(), Path(name).c_str(), nullptr,
                           resumeOffset, type);
    }

    void ExpectInStep() {
        EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
        EXPECT_STREQ(session->replyBuffer, "200 mine");
    }

    int List() { return ReceiveFile(session, "LIST", nullptr, &buffer, 0, 'A'); }

    std::string BufferText() {
        return buffer.base != 0 ? PointerFromWord<const char>(buffer.base) : "(empty)";
    }

    TempFolder folder;
    GrowBuffer buffer = {};
};

TEST_F(ReceiveTest, TypeGoesOutOnAChangeOnlyAndCountsAlsoWhenItIsRefused) {
    LogIn(passive + "-> LIST\n<- 150 here\ndata accept\ndata <- one\\r\\ntwo\n" + confirms +
          "-> TYPE I\n<- 504 no\n-> PASV\n<- 227 ok {pasv}\n" + opensFile +
          "data <- \\x00\\r\\n\\xff\ndata close\n<- 125 nearly\n<- 226 done\n" + retrieves +
          confirms);
    EXPECT_EQ(List(), 2);
    EXPECT_EQ(BufferText(), "one\r\ntwo");
    EXPECT_EQ(Receive("f"), 2);
    EXPECT_EQ(folder.Read("f"), std::string("\0\r\n\xff", 4));
    EXPECT_EQ(Receive("f"), 2);
    EXPECT_EQ(folder.Read("f"), "");
    wire.Finish();
}

TEST_F(ReceiveTest, WhatDoesNotStartLeavesTheLocalFileAlone) {
    folder.Write("f", "mine");
    std::string script = binary + passive + "-> RETR f\n<- 550 no such file\n";
    const std::string refusals[] = {"550 no such file", "502 not here", "227 (127,0,0,1,7)",
                                    "227 nothing", "227 1 (127,0,0,1,7,138)"};
    for (const std::string& refusal : std::span(refusals).subspan(1)) {
        script += "-> PASV\n<- " + refusal + "\n";
    }
    LogIn(script);
    for (const std::string& refusal : refusals) {
        EXPECT_EQ(Receive("f"), 0);
        EXPECT_EQ(session->replyBuffer, refusal);
        EXPECT_EQ(session->listenSocket, noSocket);
    }
    EXPECT_EQ(folder.Read("f"), "mine");
    wire.Finish();
}

TEST_F(ReceiveTest, ThePassiveConnectionGoesToTheControlPeerWhateverAddressIsNamed) {
    // The scripted server names itself; its six numbers are rewritten to another host.
    Wire data;
    LogIn("-> PASV\n<- 227 (" + loopback::HostPortText(0x0A010203, data.port()) +
          ")\n-> LIST\n<- 150 here\n<- 226 done\n");
    data.Start("<< hello\nclose\n");
    EXPECT_EQ(List(), 2);
    EXPECT_EQ(BufferText(), "hello");
    wire.Finish();
}

TEST_F(ReceiveTest, ARefusedPassiveConnectionIsToldWithItsPort) {
    const u16 port = ClosedPort();
    LogIn("-> PASV\n<- 227 (" + loopback::HostPortText(INADDR_LOOPBACK, port) + ")\n");
    EXPECT_EQ(List(), 0);
    const std::string text =
        "Can't connect to 127.0.0.1 ftp service port " + std::to_string(port) + ".";
    EXPECT_EQ(session->replyBuffer, text);
    EXPECT_EQ(Lines().back(), "Connection refused");
    wire.Finish();
}

TEST_F(ReceiveTest, PortIsTriedTwiceUnlessItIsNotUnderstood) {
    session->site.siteOptions = 0;
    std::string script;
    for (const char* reply : {"500 what", "501 no", "425 still no", "501 no", "200 yes"}) {
        script += std::string("-> PORT *\n<- ") + reply + "\n";
    }
    LogIn(script + "-> LIST\n<- 550 no\n");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(List(), 0);
    }
    wire.Finish();
}

TEST_F(ReceiveTest, AServerThatDoesNotConnectBackEndsTheWaitAndStaysInStep) {
    session->site.siteOptions = 0;
    session->timeoutSeconds = 1;
    LogIn("-> PORT *\n<- 200 ok\n-> LIST\n<- 150 here\npause 2\n<- 425 can't open\n" + inStep);
    EXPECT_EQ(List(), 0);
    EXPECT_THAT(Lines(), Contains("Blocking call cancelled"));
    EXPECT_EQ(session->dataSocket, noSocket);
    ExpectInStep();
    wire.Finish();
}

TEST_F(ReceiveTest, AResumeComparesTheLast512Bytes) {
    const std::string whole = Wire::Pattern(5000);
    folder.Write("f", whole.substr(0, 2048));
    wire.Data("rest", whole.substr(1536));
    LogIn(binary + resumes + "data send rest\n" + confirms);
    TransferRecord record = {};
    record.bytesTotal = 5000;
    session->progress = &record;
    EXPECT_EQ(Receive("f", 2048), 2);
    EXPECT_EQ(folder.Read("f"), whole);
    EXPECT_EQ(u64{record.bytesDone}, 5000u);
    EXPECT_EQ(u64{record.bytesTotal}, 5000u - 1536u);
    session->progress = nullptr;
    wire.Finish();
}

TEST_F(ReceiveTest, ARepairBehindTheRestartDoesNotAppendTheWholeFile) {
    folder.Write("f", std::string(2048, 'x'));
    LogIn(binary + restarts + "-> RETR f\n" + lost + opensFile +
          "data expect close\n<- 426 broken\n" + inStep);
    EXPECT_EQ(Receive("f", 2048), 0);
    EXPECT_EQ(folder.Read("f"), std::string(2048, 'x'));
    ExpectInStep();
    wire.Finish();
}

TEST_F(ReceiveTest, ARepairThatFailedIsTriedAgainBeforeATransfer) {
    LogIn("expect close\n" + relogin + passive + "-> LIST\n<- 150 here\ndata accept\n" + confirms);
    session->controlSocket = CloseSocketGracefully(session, session->controlSocket, shutdownBoth);
    EXPECT_EQ(List(), 2);
    wire.Finish();
}

TEST_F(ReceiveTest, NoTransferBeginsInAnotherDirectoryThanTheSessions) {
    const std::string gone = lost + "-> CWD /pub\n<- 550 gone\n";
    const std::string back = "-> CWD /pub\n<- 250 there again\n";
    const std::string mine(2048, 'x');
    folder.Write("f", mine);
    StoreText(session->site.directory, pathSize, "/pub");
    LogIn("-> TYPE I\n" + gone + back + binary + passive + "-> REST 1536\n" + gone + back +
          "-> PORT *\n" + gone);
    EXPECT_EQ(Receive("f"), 0);
    EXPECT_EQ(Receive("f", 2048), 0);
    EXPECT_EQ(session->listenSocket, noSocket);
    session->site.siteOptions = 0;
    EXPECT_EQ(List(), 0);
    EXPECT_EQ(folder.Read("f"), mine);
    wire.Finish();
}

TEST_F(ReceiveTest, AServerThatCannotRestartSendsTheWholeFile) {
    const std::string whole = Wire::Pattern(3000);
    folder.Write("f", std::string(2048, 'x'));
    wire.Data("whole", whole);
    LogIn(binary + passive + "-> REST 1536\n<- 502 no\n" + opensFile + "data send whole\n" +
          confirms);
    EXPECT_EQ(Receive("f", 2048), 2);
    EXPECT_EQ(folder.Read("f"), whole);
    wire.Finish();
}

TEST_F(ReceiveTest, AnotherFileIsAbortedKeptAsItIsAndLeavesTheSessionInStep) {
    const std::string mine(2048, 'x');
    folder.Write("f", mine);
    std::string other = mine.substr(1536);
    other[300] = 'y';
    wire.Data("other", other + std::string(100'000, 'z'));
    LogIn(binary + resumes +
          "data send other\n-> ABOR\ndata expect close\n<- 426 aborted\npause 0.3\n<- 226 done\n" +
          inStep);
    EXPECT_EQ(Receive("f", 2048), 5);
    EXPECT_TRUE(session->abortFlag.IsSet());
    EXPECT_EQ(folder.Read("f"), mine);
    EXPECT_THAT(Lines(), Contains("Not the same file!"));
    EXPECT_THAT(Lines(), Not(Contains(HasSubstr("received in"))));
    session->abortFlag.Store(0);
    ExpectInStep();
    wire.Finish();
}

TEST_F(ReceiveTest, AStreamShorterThanTheOverlapLeavesTheFileItsLength) {
    const std::string mine(2048, 'x');
    folder.Write("f", mine);
    LogIn(binary + resumes + "data <- xxxx\n" + confirms);
    EXPECT_EQ(Receive("f", 2048), 2);
    EXPECT_EQ(folder.Read("f"), mine);
    wire.Finish();
}

TEST_F(ReceiveTest, AnAbortEndsAStalledTransferWithinTwoSecondsAndItsReplyIsNotTakenForAnother) {
    LogIn(binary + retrieves + breaksOff + inStep);
    AbortAfter(std::chrono::milliseconds(300));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(Receive("f"), 5);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(2300));
    session->abortFlag.Store(0);
    ExpectInStep();
    wire.Finish();
}

TEST_F(ReceiveTest, AResetDataConnectionIsNoSuccessWhateverTheServerSays) {
    const std::string resets = "data <- part\npause 0.3\ndata reset\n<- 226 done\n";
    LogIn(binary + retrieves + resets + resumes + resets);
    for (const u32 resumeOffset : {0u, 2048u}) {
        folder.Write("f", std::string(1536, 'x') + "part" + std::string(508, 'x'));
        EXPECT_EQ(Receive("f", resumeOffset), 0);
        EXPECT_STREQ(session->replyBuffer, "The data connection was lost.");
    }
    const std::vector<std::string> lines = Lines();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Connection reset"), 2);
    wire.Finish();
}

TEST_F(ReceiveTest, AListingEndsAtOneGibibyte) {
    LogIn(passive + "-> LIST\n<- 150 here\ndata accept\ndata <- all\ndata close\n<- 226 done\n" +
          inStep);
    buffer.used = 1U << 30;
    EXPECT_EQ(List(), 0);
    EXPECT_EQ(Lines().back(), "The listing is longer than 1 GiB.");
    ExpectInStep();
    wire.Finish();
}

TEST_F(ReceiveTest, ALocalFileThatCannotBeMadeIsAFailureAndStaysInStep) {
    LogIn(binary + retrieves + "data expect close\n<- 226 done\n" + inStep);
    std::filesystem::create_directory(Path("f"));
    EXPECT_EQ(Receive("f"), 0);
    EXPECT_STREQ(session->replyBuffer, "The local file could not be opened.");
    ExpectInStep();
    wire.Finish();
}

TEST_F(ReceiveTest, TypeIsSaidAgainWhenTheConnectionWasRepairedDuringTheSetUp) {
    LogIn(binary + "-> PASV\n" + lost + passive + binary + opensFile + confirms);
    EXPECT_EQ(Receive("f"), 2);
    wire.Finish();
}

// --- Message 39 ------------------------------------------------------------------------------

u32 confirmStatus;
std::vector<HostWord> confirmedOffsets;

extern "C" void Confirm(TransferItem* item, HostWord resumeOffset) {
    confirmedOffsets.push_back(resumeOffset);
    PointerFromWord<TransferRecord>(item->record)->status = confirmStatus;
}

class GetFileTest : public ReceiveTest {
  protected:
    GetFileTest() {
        confirmStatus = 0;
        confirmedOffsets.clear();
    }

    i32 Get(const std::string& name, u64 sourceSize) {
        item = {};
        StoreText(item.source, sizeof item.source, name.c_str());
        StoreText(item.destination, sizeof item.destination, Path(name).c_str());
        item.record = WordFromPointer(&record);
        item.sourceSize = sourceSize;
        return GetFile(&item, session->handle, Confirm);
    }

    TransferItem item = {};
    TransferRecord record = {};
};

TEST_F(GetFileTest, OnlyAPartOfMoreThan1024BytesIsResumed) {
    constexpr bool isWide = sizeof(HostWord) > sizeof(u32);
    constexpr u64 largeSize = u64{5} << 30;
    struct {
        u64 local;
        u64 source;
        HostWord offset;
    } cases[] = {{1024, 5000, 0},
                 {1025, 5000, 1025},
                 {5000, 5000, 0},
                 {5001, 5000, 0},
                 {0xFFFFFFFE, u64{5} << 32, 0xFFFFFFFE},
                 {0xFFFFFFFF, u64{5} << 32, isWide ? 0xFFFFFFFF : 0},
                 {largeSize, u64{5} << 32, isWide ? static_cast<HostWord>(largeSize) : 0}};
    confirmStatus = 1;  // leaves every file out
    LogIn("");
    for (const auto& row : cases) {
        folder.Write("f", "");
        std::filesystem::resize_file(Path("f"), row.local);
        EXPECT_EQ(Get("f", row.source), 0);
        EXPECT_EQ(confirmedOffsets.back(), row.offset) << row.local;
    }
    EXPECT_EQ(wire.Saw().size(), 2u) << "nothing goes out for a file that is left out";
    wire.Finish();
}

TEST_F(GetFileTest, AnotherFileIsFetchedWhole) {
    folder.Write("f", std::string(2048, 'x'));
    const std::string whole = Wire::Pattern(4000);
    wire.Data("whole", whole);
    wire.Data("tail", whole.substr(1536));
    LogIn(binary + resumes +
          "data send tail\n-> ABOR\ndata expect close\n<- 426 aborted\n<- 226 done\n" + retrieves +
          "data send whole\n" + confirms);
    EXPECT_EQ(Get("f", 4000), 0);
    EXPECT_EQ(folder.Read("f"), whole);
    wire.Finish();
}

TEST_F(GetFileTest, AFailureHandsOverTheServersWordsWithoutARestart) {
    LogIn(binary + passive + "-> RETR f\n<- 550 no such file\n");
    EXPECT_EQ(Get("f", 4000), 1);
    EXPECT_STREQ(session->handle->errorText, "550 no such file");
    EXPECT_EQ(session->progress, nullptr);
    EXPECT_EQ(folder.Read("f"), "(none)");
    wire.Finish();
}

TEST_F(GetFileTest, AnAbortLeadsToOneRestartWhichASecondOneEnds) {
    LogIn(binary + retrieves + breaksOff + retrieves + breaksOff);
    AbortAfter(std::chrono::milliseconds(300));
    AbortAfter(std::chrono::milliseconds(3500));
    EXPECT_EQ(Get("f", 4000), 1);
    EXPECT_FALSE(session->abortFlag.IsSet());
    EXPECT_STREQ(session->handle->errorText, "The transfer was aborted.");
    wire.Finish();
}

}  // namespace
