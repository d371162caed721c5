// Both engines of the ping tool against a scripted platform: what they send, and what they print.

#include <cstring>

#include "host/services.h"
#include "ping/echo_packet.h"
#include "ping/ping_worker.h"
#include "ping/scripted_platform.h"
#include "support/session_test.h"

using namespace quennet;

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const std::string noLibrary =
    "No echo request can be sent: this user may not, or the host is unknown.";

class EchoTest : public testing::Test {
  protected:
    EchoTest() { platform.state = &state; }
    ~EchoTest() override { Reset(); }

    static void Reset() {
        platform.~ScriptedPlatform();
        new (&platform) ScriptedPlatform;
    }

    /// Pings until the last turn, and gives what was printed.
    std::vector<std::string> Ping(const std::string& target, const std::vector<Turn>& turns = {}) {
        lines_.clear();
        state.stopRequests.Store(0);
        std::strcpy(state.target, target.c_str());
        platform.turns = turns;
        platform.requests.clear();
        PingHost(console_.Number(), &state);
        EXPECT_EQ(platform.opened, platform.closed);
        return lines_;
    }

    EchoMessage Request(std::size_t index) const {
        EchoMessage message{};
        std::memcpy(&message, platform.requests.at(index).data(), sizeof message);
        return message;
    }

    PingState state = {};
    HostThread thread_{hostkit::HostOptions{}};

  private:
    std::vector<std::string> lines_;
    hostkit::Console console_{thread_.Host(),
                              [this](const std::string& line) { lines_.push_back(line); }};
};

TEST_F(EchoTest, ARawAnswerIsToldForWhatItIs) {
    EXPECT_THAT(Ping("named", {{.milliseconds = 3},
                               {.otherProcess = 1},
                               {.receiveError = 10060},
                               {.sendError = 10060},
                               {.type = 3},
                               {.type = 11, .length = 27},
                               {.length = 24},
                               {.sent = 11, .headerSize = 60, .milliseconds = 12}}),
                ElementsAre("#0, 32 bytes from: 10.0.0.1, time: 3 ms", "Someone else's packet!",
                            "No answer in time.", "No answer in time.", "Non-echo type 3 recvd",
                            "Too few bytes from 10.0.0.1", "Non-echo type 11 recvd",
                            "Too few bytes from 10.0.0.1", "Someone else's packet!",
                            "Wrote 11 bytes", "#7, 72 bytes from: 10.0.0.1, time: 12 ms"));
    EXPECT_EQ(platform.pauses, 5) << "none behind a time-out, none behind a stop";

    ASSERT_EQ(platform.requests.size(), 8u);
    const EchoMessage last = Request(7);
    EXPECT_EQ(last.type, 8);
    EXPECT_EQ(last.code, 0);
    EXPECT_EQ(last.identifier, static_cast<u16>(GetCurrentProcessId()));
    EXPECT_EQ(last.sequence, 7);
    EXPECT_EQ(last.timestamp, 1003u);
    EXPECT_EQ(InternetChecksum(&last, sizeof last), 0) << "the sum with the checksum in it";
    // The example of RFC 1071, section 3: 2ddf0, folded ddf2, and an odd byte behind it.
    const u8 example[] = {0x00, 0x01, 0xF2, 0x03, 0xF4, 0xF5, 0xF6, 0xF7, 0x03};
    EXPECT_EQ(InternetChecksum(example, 8), htons(0x220D));
    EXPECT_EQ(InternetChecksum(example, 9), htons(0x1F0D));
}

TEST_F(EchoTest, TheNumberOfARawRequestWraps) {
    const auto lines = Ping("10.0.0.2", std::vector<Turn>(65537));
    ASSERT_EQ(lines.size(), 65537u);
    EXPECT_EQ(lines[65535], "#65535, 32 bytes from: 10.0.0.1, time: 0 ms");
    EXPECT_EQ(lines[65536], "#0, 32 bytes from: 10.0.0.1, time: 0 ms");
}

TEST_F(EchoTest, AFailureEndsTheRawEngine) {
    EXPECT_THAT(Ping("named", {{}, {.sendError = 10065}, {}}),
                ElementsAre("#0, 32 bytes from: 10.0.0.1, time: 0 ms", "Host unreachable",
                            "Sendto failed: 10065"));
    EXPECT_THAT(Ping("named", {{.receiveError = 10040}, {}}),
                ElementsAre("Recvfrom failed: 10040"));
    EXPECT_THAT(Ping("no%s%n"), ElementsAre("There is no host no%s%n."));
    platform.refusedOption = SO_RCVTIMEO;
    EXPECT_THAT(Ping("named"), ElementsAre("Failed to set recv timeout: 10042"));
    platform.refusedOption = SO_SNDTIMEO;
    EXPECT_THAT(Ping("named"), ElementsAre("Failed to set send timeout: 10042"));
    EXPECT_THAT(platform.requests, IsEmpty());
}

TEST_F(EchoTest, TheLibraryAnswersWhereThereIsNoRawSocket) {
    platform.hasRawSocket = false;
    for (const char* target : {"named", "10.0.0.1"}) {
        platform.pauses = 0;
        EXPECT_THAT(Ping(target, {{.milliseconds = 7}, {.status = 11003}, {.answers = 0}, {}}),
                    ElementsAre("#1 from: 10.0.0.1, time: 7 ms", "Someone else's packet!",
                                "No answer in time.", "#4 from: 10.0.0.1, time: 0 ms"));
        EXPECT_EQ(platform.pauses, 3);
        EXPECT_EQ(platform.requests[3], "1 0 ttl 255 tos 0 1 1000 ms, status 0");
    }
}

TEST_F(EchoTest, WhereTheLibraryCantBeUsedTheHostsTextSaysSo) {
    platform.hasRawSocket = false;
    for (const char* target : {"unknown", "10.0.0.2"}) {
        EXPECT_THAT(Ping(target), ElementsAre(noLibrary));
    }
    platform.hasFile = false;
    EXPECT_THAT(Ping("named"), ElementsAre(noLibrary));
    platform.hasFile = true;
    for (const char* function : {"IcmpCreateFile", "IcmpCloseHandle", "IcmpSendEcho"}) {
        platform.missingFunction = function;
        EXPECT_THAT(Ping("named"), ElementsAre(noLibrary)) << function;
    }
    platform.missingFunction = "";
    platform.hasLibrary = false;
    EXPECT_THAT(Ping("named"), ElementsAre(noLibrary));
}

TEST_F(EchoTest, TheHostMayForbidTheLibrary) {
    platform.hasRawSocket = false;
    *PointerFromWord<u32>(hostTables.core->words[0]) = 1;
    EXPECT_THAT(Ping("named"), ElementsAre(noLibrary));
    EXPECT_EQ(platform.opened, 0);
}

}  // namespace
