// The scripted server: that it plays every step, and that a wrong client makes it complain.

#include "support/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include "loopback/raw_client.h"

namespace {

using std::chrono::milliseconds;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(WireTest, CarriesDataBothWays) {
    Wire wire;
    std::string sent = Wire::Pattern(300'000);
    wire.Data("UPLOAD", sent);
    wire.Data("SMALL", std::string("a\0b", 3));
    wire.Start(R"(
        -> PASV
        <- 227 ok ({pasv})
        data accept
        data fill 100000
        data fill 5
        data <- x\0y
        data send SMALL
        data close
        -> PORT *
        <- 200 ok
        data connect
        data -> head
        data expect UPLOAD
        <- 226 done
        -> PASV
        <- 227 ok ({pasv})
        data accept
        data flood
        -> PASV
        <- 227 ok ({pasv})
        data accept
        data expect close
    )");
    RawClient client(wire.port());
    ASSERT_TRUE(client.OpenPassive());
    EXPECT_EQ(client.ReadData(), Wire::Pattern(100'005) + std::string("x\0ya\0b", 6));
    ASSERT_TRUE(client.OpenActive());
    ASSERT_TRUE(client.AcceptActive());
    EXPECT_TRUE(client.SendData("head" + sent));
    client.CloseData();
    EXPECT_EQ(client.Reply(), "226 done");
    ASSERT_TRUE(client.OpenPassive());
    EXPECT_EQ(client.ReadData(1), Wire::Pattern(1));
    client.CloseData();
    ASSERT_TRUE(client.OpenPassive());
    EXPECT_TRUE(client.SendData("whatever"));
    client.CloseData();
    wire.Finish();
}

struct WrongClient {
    const char* script;
    std::string says;  // all that the client says, in one piece
    bool closes;       // and then closes
    const char* complaint;
};

class WrongClientTest : public testing::TestWithParam<WrongClient> {};

TEST_P(WrongClientTest, MakesTheWireComplain) {
    Wire wire;
    wire.Limit(milliseconds(300));
    wire.Start(GetParam().script);
    RawClient client(wire.port());
    client.SendBytes(GetParam().says);
    if (GetParam().closes) {
        client.Close();
    }
    std::string outcome = wire.Outcome();
    EXPECT_THAT(outcome, HasSubstr(GetParam().complaint));
}

INSTANTIATE_TEST_SUITE_P(
    WireTest, WrongClientTest,
    testing::Values(
        WrongClient{"-> USER anna", "USER bert\r\n", false, "-> USER anna\ncame: USER bert"},
        WrongClient{"-> USER anna", "USER anna\n", false, "came: USER anna\\n"},
        WrongClient{"-> USER anna", "user anna\r\n", false, "came: user anna"},
        WrongClient{"-> USER a*", "USER\r\n", false, "came: USER"},
        WrongClient{"-> USER anna", "", false, "nothing came"},
        WrongClient{"-> USER anna", "US", true, "closed the control connection behind US"},
        WrongClient{"-> USER anna", "USER anna\r\nNOOP\r\n", false, "has sent more: NOOP"},
        WrongClient{"silent 0.2", "NOOP\r\n", false, "has sent more: NOOP"},
        WrongClient{"silent 0.2", "", true, "closed the control connection"},
        WrongClient{"expect close", "NOOP\r\n", true, "has sent more: NOOP"},
        WrongClient{"expect close", "", false, "nothing came"},
        WrongClient{"-> NOOP\nclose", "NOOP\r\nQUIT\r\n", false, "has sent more: QUIT"},
        WrongClient{"accept\naccept", "", true, "no connection came"},
        WrongClient{"-> PORT *", "PORT 1,2,3\r\n", false, "six numbers"},
        WrongClient{"<- 227 ({pasv})\ndata accept", "", false, "no data connection came"},
        WrongClient{"data accept", "", false, "no reply has named"},
        WrongClient{"flood 220-x", "", false, "did not close the control connection"},
        WrongClient{"await never", "", false, "no such signal"},
        WrongClient{"<- 220 x\n<~ 230", "", false, "no such step: <~ 230"},
        WrongClient{"<- 220 \\q", "", false, "unknown escape"},
        WrongClient{"pause soon", "", false, "a number is missing"},
        WrongClient{"data send NAME", "", false, "no buffer was registered as NAME"}));

TEST(WireTest, ComplainsOfWrongData) {
    struct Case {
        const char* script;
        const char* sends;
        const char* complaint;
    };
    for (const Case& wrong :
         {Case{"data expect BUFFER", "0123x56789", "from byte 4 on came: x56789\nwanted: 456789"},
          Case{"data expect BUFFER", "0123", "4 bytes came, wanted were 10"},
          Case{"data expect BUFFER", "0123456789a", "11 bytes came, wanted were 10"},
          Case{"data -> 0123", "012", "came: 012"}}) {
        Wire wire;
        wire.Data("BUFFER", "0123456789");
        wire.Start("-> PASV\n<- 227 ({pasv})\ndata accept\n" + std::string(wrong.script));
        RawClient client(wire.port());
        ASSERT_TRUE(client.OpenPassive());
        client.SendData(wrong.sends);
        client.CloseData();
        EXPECT_THAT(wire.Outcome(), HasSubstr(wrong.complaint));
    }
}

TEST(WireTest, AConnectionAfterTheEndIsAFailure) {
    Wire wire;
    wire.Start("<- 220 ready\nexpect close");
    RawClient(wire.port()).Close();
    RawClient again(wire.port());
    EXPECT_THAT(wire.Outcome(), HasSubstr("connected once more"));
}

void LeaveAScriptUnplayed() {
    Wire wire;
    wire.Start("<- 220 ready\n-> NOOP");
    RawClient client(wire.port());
    client.Line();
}

TEST(WireTest, FinishAndTheDestructorFailTheTest) {
    EXPECT_NONFATAL_FAILURE(LeaveAScriptUnplayed(), "<- 220 ready");
    Wire wire;
    wire.Limit(milliseconds(50));
    wire.Start("<- 220 ready\n-> NOOP");
    RawClient client(wire.port());
    EXPECT_NONFATAL_FAILURE(wire.Finish(), "-> NOOP\nnothing came");
    EXPECT_THAT(wire.Saw(), IsEmpty());
}

}  // namespace
