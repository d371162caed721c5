// The scripted server: that a wrong client makes it complain. That it plays each step is proved by
// the tests that use it.

#include "support/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest-spi.h>

#include "loopback/raw_client.h"

namespace {

using testing::HasSubstr;

struct WrongClient {
    const char* script;
    std::string says;  // all that the client says, in one piece
    bool closes;       // and then closes
    const char* complaint;
};

const WrongClient wrongClients[] = {
    {"-> USER anna", "USER bert\r\n", false, "-> USER anna\ncame: USER bert"},
    {"-> USER anna", "USER anna\n", false, "came: USER anna\\n"},
    {"-> USER a*", "USER\r\n", false, "came: USER"},
    {"-> USER anna", "", false, "nothing came"},
    {"-> USER anna", "US", true, "closed the control connection behind US"},
    {"-> USER anna", "USER anna\r\nNOOP\r\n", false, "has sent more: NOOP"},
    {"expect close", "NOOP\r\n", true, "has sent more: NOOP"},
    {"expect close", "", false, "nothing came"},
    {"-> NOOP\nclose", "NOOP\r\nQUIT\r\n", false, "has sent more: QUIT"},
    {"accept\naccept", "", true, "no connection came"},
    {"<- 227 ({pasv})\ndata accept", "", false, "no data connection came"},
    {"await never", "", false, "no such signal"},
    {"<- 220 x\n<~ 230", "", false, "no such step: <~ 230"},
};

TEST(WireTest, ComplainsOfAWrongClient) {
    for (const WrongClient& row : wrongClients) {
        Wire wire;
        RawClient client(wire.port());
        client.Send(row.says);
        if (row.closes) {
            client.Close();
        }
        // All that will ever come is on its way: the limit ends only the waits for nothing.
        wire.Limit(std::chrono::milliseconds(300));
        wire.Start(row.script);
        EXPECT_THAT(wire.Outcome(), HasSubstr(row.complaint)) << row.script;
    }
}

TEST(WireTest, ComplainsOfWrongData) {
    for (const auto& [sends, complaint] :
         {std::pair("0123x56789", "from byte 4 on came: x56789\nwanted: 456789"),
          {"0123", "4 bytes came, wanted were 10"},
          {"0123456789a", "11 bytes came, wanted were 10"}}) {
        Wire wire;
        wire.Data("BUFFER", "0123456789");
        wire.Start("-> PASV\n<- 227 {pasv}\ndata accept\ndata expect BUFFER");
        RawClient client(wire.port());
        std::uint32_t address = 0;
        std::uint16_t port = 0;
        ASSERT_TRUE(loopback::ParseHostPort(client.Command("PASV").substr(4), &address, &port));
        RawClient data(port);
        data.Send(sends);
        data.Close();
        EXPECT_THAT(wire.Outcome(), HasSubstr(complaint));
    }
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
    wire.Start("<- 220 ready\nexpect close");
    RawClient(wire.port()).Close();
    RawClient again(wire.port());
    EXPECT_NONFATAL_FAILURE(wire.Finish(), "connected once more");
}

}  // namespace
