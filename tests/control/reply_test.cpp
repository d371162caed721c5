#include "control/reply.h"

#include <cstring>

#include "control/command.h"
#include "control/server_family.h"
#include "support/session_test.h"

using namespace quennet;
using testing::ElementsAre;

namespace {

class ReplyTest : public SessionTest {};

struct ReplyCase {
    const char* rule;
    std::string script;
    int result;
    int firstCode;
    std::string buffer;
    std::string console;  // its lines, each behind a '|'
};

class ReplyTableTest : public SessionTest, public testing::WithParamInterface<ReplyCase> {};

TEST_P(ReplyTableTest, GivesResultCodeAndLines) {
    const ReplyCase& expected = GetParam();
    Open(expected.script);
    EXPECT_EQ(ReadReply(session), expected.result);
    EXPECT_EQ(session->firstCode, expected.firstCode);
    EXPECT_EQ(session->replyBuffer, expected.buffer);
    std::string shown;
    for (const std::string& line : Lines()) {
        shown += "|" + line;
    }
    EXPECT_EQ(shown, expected.console);
    EXPECT_EQ(session->replyDepth, 0);
    EXPECT_EQ(session->busy.Load(), 0u);
    wire.Finish();
}

const std::string hundred = "220 " + std::string(96, 'x');

const ReplyCase replyCases[] = {
    {"ACodeAlone", "<- 220", 2, 220, "220", "|220"},
    {"TheTailIsTrimmed", "<- 220 ready  ", 2, 220, "220 ready", "|220 ready"},
    {"LinesWithADashGoOn", "<- 230-a\n<- 230-b\n<- 230 c", 2, 230, "230 c", "|230-a|230-b|230 c"},
    {"OnlyALineWithTheFirstCodeEndsTheReply", "<- 150-x\n<- text\n<- 226 y\n<- 150 z", 1, 150,
     "150 z", "|150-x|text|226 y|150 z"},
    {"AFirstLineWithoutANumberEndsAtOnce", "<- hello", 0, 0, "hello", "|hello"},
    {"ANumberThatNoReplyHasIsText", "<- 42 x\n<- 900 y\n<- 220 z", 2, 220, "220 z",
     "|42 x|900 y|220 z"},
    {"ASignMakesNoCode", "<- -1 x", 0, 0, "-1 x", "|-1 x"},
    {"SplitBytesAreOneLine", "<< 22\npause 0.1\n<< 0 re\npause 0.1\n<< ady\\r\\n", 2, 220,
     "220 ready", "|220 ready"},
    {"ANulEndsTheTextOfItsLine", "<< 220 a\\0b\\r\\n", 2, 220, "220 a", "|220 a"},
    {"AClosedConnectionIsNoReply", "close", 0, 0, "", ""},
    {"ACloseInsideAReplyLeavesItsClass", "<- 230-a\n<- bb\nclose", 2, 230, "", "|230-a|bb"},
    {"AResetInsideAReplyLeavesItsClass", "<- 230-a\npause 0.2\nreset", 2, 230, "",
     "|230-a|Connection reset"},
    {"ALineOf100BytesIsWhole", "<- " + hundred, 2, 220, hundred, "|" + hundred},
};

INSTANTIATE_TEST_SUITE_P(Replies, ReplyTableTest, testing::ValuesIn(replyCases),
                         [](const auto& info) { return std::string(info.param.rule); });

TEST_F(ReplyTest, ALineOf100000BytesIsCutAndTheReplyEndsWithItsLastPiece) {
    const std::string line = "220-" + std::string(100'000, 'x');
    Open("<- " + line + "\n<- 220 end");
    EXPECT_EQ(ReadReply(session), 2);
    EXPECT_STREQ(session->replyBuffer, "220 end");
    const std::vector<std::string> lines = Lines();
    ASSERT_GT(lines.size(), 2u);
    EXPECT_GE(lines[0].size(), 4000u);
    EXPECT_LT(lines[0].size(), std::size_t{replyBufferSize});
    std::string all;
    for (const std::string& piece : lines) {
        all += piece;
    }
    EXPECT_EQ(all, line + "220 end");
    wire.Finish();
}

TEST_F(ReplyTest, AReplyWithoutAnEndIsAFailedRead) {
    std::string flood = "<< ";
    for (int line = 0; line < 21'000; ++line) {
        flood += "220-more\\r\\n";
    }
    Open(flood);
    EXPECT_EQ(ReadReply(session), -1);
    EXPECT_EQ(Lines().back(), "Reply without an end.");
    EXPECT_EQ(Lines().size(), 10'001u);
    EXPECT_EQ(session->firstCode, 0);
    EXPECT_FALSE(SettleOwedReplies(session)) << "its rest is nobody's reply";
    session->controlSocket = (closesocket(session->controlSocket), noSocket);
    wire.Finish();
}

TEST_F(ReplyTest, AnExosLineEndsWithACarriageReturnInsideThePeekOnly) {
    session->serverType.Store(static_cast<u32>(ServerFamily::exos));
    // CR at 60: the first read takes 62 bytes, the line goes on to its LF. CR at 90 lies outside.
    const std::string inside = "220 " + std::string(56, 'a') + "\\r" + std::string(40, 'b');
    const std::string outside = "221 " + std::string(86, 'c') + "\\r" + std::string(29, 'd');
    Open("<- " + inside + "\n<- " + outside + "\n<- 222 next");
    EXPECT_EQ(ReadReply(session), 2);
    EXPECT_EQ(std::strlen(session->replyBuffer), 101u);
    EXPECT_EQ(ReadReply(session), 2);
    EXPECT_EQ(session->firstCode, 221);
    EXPECT_EQ(ReadReply(session), 2);
    EXPECT_STREQ(session->replyBuffer, "222 next");
    wire.Finish();
}

TEST_F(ReplyTest, TheWatchdogEndsAWaitForALineOrItsRestWith421) {
    session->timeoutSeconds = 1;
    Open("await line\n<< 220 " + std::string(100, 'x') + "\nhang");
    for (int wait = 0; wait < 2; ++wait) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(ReadReply(session), 4);
        EXPECT_EQ(session->firstCode, 421);
        EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(900));
        wire.Signal("line");
    }
    wire.Finish();
}

TEST_F(ReplyTest, AnAbortBeforeTheWaitHasNoEffect) {
    Open("<- 220 ready");
    session->abortFlag.Store(1);
    EXPECT_EQ(ReadReply(session), 2);
    wire.Finish();
}

TEST_F(ReplyTest, AReplyThatComesTooLateIsNotTakenForTheNextOne) {
    Open("await aborted\n<- 226 late\n" + steps::inStep + "-> NOOP\n<- 201 mine too\n");
    AbortAfter(std::chrono::milliseconds(200));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(ReadReply(session), 4);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
    EXPECT_EQ(session->stopRetrying.Load(), 1u);
    wire.Signal("aborted");
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    EXPECT_EQ(session->firstCode, 200);
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    EXPECT_EQ(session->firstCode, 201);
    EXPECT_THAT(Lines(), ElementsAre("NOOP", "226 late", "200 mine", "NOOP", "201 mine too"));
    wire.Finish();
}

TEST_F(ReplyTest, AReplyThatMayNotComeHoldsTheNextCommandForTwoSeconds) {
    Open(steps::inStep);
    session->doubtfulReplies = 1;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1900));
    EXPECT_EQ(session->doubtfulReplies, 0u);
    wire.Finish();
}

TEST_F(ReplyTest, AReplyThatMustComeAndDoesNotIsNotMistakenOnANewConnection) {
    Open("expect close\n" + steps::relogin + steps::inStep);
    session->owedReplies = 1;
    EXPECT_EQ(SendCommandText(session, "NOOP"), 2);
    EXPECT_STREQ(session->replyBuffer, "200 mine");
    wire.Finish();
}

}  // namespace
