// Waits that last as long as they do for users.

#include "control/command.h"
#include "control/reply.h"
#include "control/sockets.h"
#include "support/session_test.h"

using namespace quennet;
using testing::IsEmpty;

namespace {

class TimeoutTest : public SessionTest {};

TEST_F(TimeoutTest, ASocketThatNobodyReadsIsGivenUpAfterTenTests) {
    Open("pause 60\nreset\n");
    const std::string block(64 * 1024, 'x');
    u_long nonBlocking = 1;
    ioctlsocket(session->controlSocket, static_cast<long>(FIONBIO), &nonBlocking);
    // The system's own buffers grow while they fill.
    for (int refusals = 0; refusals < 10;) {
        if (send(session->controlSocket, block.data(), static_cast<int>(block.size()), 0) <= 0) {
            ++refusals;
            Sleep(50);
        }
    }
    SharedWord abortFlag = {};
    abortFlag.Store(1);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(WaitSocketWritable(session->console, session->controlSocket, &abortFlag), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
    EXPECT_EQ(WaitSocketWritable(session->console, session->controlSocket, nullptr), 0);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_THAT(Lines(), IsEmpty());

    nonBlocking = 0;
    ioctlsocket(session->controlSocket, static_cast<long>(FIONBIO), &nonBlocking);
    EXPECT_EQ(SendLine(session, "NOOP"), -1) << "nor does a command wait for ever";
}

TEST_F(TimeoutTest, AReplyHasTenTimesTheTimeOut) {
    std::string script;
    for (int line = 0; line < 18; ++line) {
        script += "<- 257-more\npause 0.6\n";
    }
    session->timeoutSeconds = 1;
    Open(script);
    EXPECT_EQ(ReadReply(session), -1);
    EXPECT_EQ(Lines().back(), "Reply without an end.");
    wire.Finish();
}

}  // namespace
