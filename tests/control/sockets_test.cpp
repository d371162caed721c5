#include "control/sockets.h"

#include "control/command.h"
#include "support/session_test.h"

using namespace quennet;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class SocketsTest : public SessionTest {};

TEST_F(SocketsTest, AnErrorIsToldInWordsOrByItsNumberOrNotAtAll) {
    for (const int code : {10061, 10038, 12345, 11001}) {
        WSASetLastError(code);
        ReportSocketError(session->console);
    }
    EXPECT_THAT(Lines(),
                ElementsAre("Connection refused", "Error 12345", "Authoritive: Host not found"));
    char text[8];
    WSASetLastError(10061);
    SocketErrorText(text, sizeof text);
    EXPECT_STREQ(text, "Connect");
}

TEST_F(SocketsTest, TheLibraryStopsWithItsLastUse) {
    u32 uses = 0;
    ReleaseWinsock(nullptr);
    ReleaseWinsock(&uses);
    EXPECT_EQ(AcquireWinsock(0, &uses), 0);
    EXPECT_EQ(AcquireWinsock(0, &uses), 0);
    ReleaseWinsock(&uses);
    EXPECT_EQ(uses, 1u);
    ReleaseWinsock(&uses);
    EXPECT_EQ(uses, 0u);
}

TEST_F(SocketsTest, AClosedSocketStaysClosed) {
    EXPECT_EQ(CloseSocketGracefully(session, noSocket, 2), noSocket);
    EXPECT_THAT(Lines(), IsEmpty());
}

TEST_F(SocketsTest, AHalfCloseReadsThePeerToItsEnd) {
    Open("expect close\n");
    session->controlSocket = CloseSocketGracefully(session, session->controlSocket, 1);
    EXPECT_EQ(session->controlSocket, noSocket);
    wire.Finish();
}

}  // namespace
