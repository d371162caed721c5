// Aborted transfers, and the faults that a test can ask the loopback server for.

#include <gmock/gmock.h>

#include "loopback/server_fixture.h"
#include "support/wire.h"

namespace {

using loopback::Fault;
using loopback::FaultAction;
using std::chrono::milliseconds;
using testing::MatchesRegex;
using testing::StartsWith;

class FaultTest : public ServerTest {
  protected:
    FaultTest() {
        Write(root / "file", "0123456789");
        Write(root / "big", Wire::Pattern(20'000'000));
    }

    RawClient LoggedIn() {
        RawClient client(server->Port());
        EXPECT_TRUE(client.Login());
        return client;
    }
};

TEST_F(FaultTest, AbortsATransferThatRuns) {
    Serve();
    for (const char* abort : {"ABOR\r\n",
                              "\xFF\xF4\xFF\xF2"
                              "ABOR\r\n",
                              "abor\r\n"}) {
        RawClient client = LoggedIn();
        ASSERT_TRUE(client.OpenPassive());
        EXPECT_THAT(client.Command("RETR big"), StartsWith("150 "));
        client.ReadData(1000);
        client.SendBytes(abort);
        client.CloseData();
        EXPECT_THAT(client.Reply(), StartsWith("426 "));
        EXPECT_THAT(client.Reply(), StartsWith("226 "));
        EXPECT_EQ(client.Fetch("RETR file"), "0123456789");
        EXPECT_THAT(client.Command("ABOR"), StartsWith("225 "));
    }
}

TEST_F(FaultTest, NoticesAClientThatGoesAwayDuringATransfer) {
    Serve();
    RawClient client = LoggedIn();
    ASSERT_TRUE(client.OpenPassive());
    client.Command("RETR big");
    client.CloseData();
    EXPECT_THAT(client.Reply(), StartsWith("426 "));
    ASSERT_TRUE(client.OpenPassive());
    client.Command("STOR new");
    client.SendData("half");
    client.Close();
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (server->ClientCount() > 0 && std::chrono::steady_clock::now() < end) {
        loopback::Sleep(milliseconds(5), loopback::StopSignal());
    }
    EXPECT_EQ(server->ClientCount(), 0);
}

TEST_F(FaultTest, PutsRepliesInThePlaceOfACommand) {
    Serve();
    server->Add({.command = "RETR", .occurrence = 2, .text = "550 no"});
    server->Add({.command = "SYST", .occurrence = 0, .text = "215-two\n215 lines"});
    server->Add({.command = "PWD", .action = FaultAction::extraReply, .text = "120 wait"});
    server->Add({.command = "PWD", .action = FaultAction::lateReply, .text = "226 late"});
    server->Add({.command = "NOOP", .action = FaultAction::silent});
    RawClient client = LoggedIn();
    EXPECT_EQ(client.Fetch("RETR file"), "0123456789");
    EXPECT_EQ(client.Fetch("RETR file"), "");
    EXPECT_EQ(client.lastReplies, "550 no");
    EXPECT_EQ(client.Fetch("RETR file"), "0123456789");
    EXPECT_EQ(client.Command("SYST"), "215-two\n215 lines");
    EXPECT_EQ(client.Command("SYST"), "215-two\n215 lines");
    EXPECT_EQ(client.Command("PWD"), "120 wait");
    EXPECT_THAT(client.Reply(), StartsWith("257 "));
    EXPECT_EQ(client.Reply(), "226 late");
    EXPECT_THAT(client.Command("NOOP\r\nQUIT"), StartsWith("221 "));
}

TEST_F(FaultTest, DropsTheControlConnection) {
    Serve();
    struct Case {
        FaultAction action;
        std::vector<std::string> lines;
    };
    const Case cases[] = {{FaultAction::dropBefore, {"(closed)"}},
                          {FaultAction::resetBefore, {"(reset)"}},
                          {FaultAction::dropAfter, {"200 Done", "(closed)"}},
                          {FaultAction::resetAfter, {"200 Done", "(reset)"}}};
    for (const Case& drop : cases) {
        RawClient client = LoggedIn();
        server->Add({.command = "NOOP", .action = drop.action});
        client.SendBytes("NOOP\r\n");
        for (const std::string& line : drop.lines) {
            EXPECT_EQ(client.Line(), line);
        }
        server->ClearFaults();
    }
    server->Add({.command = "", .text = "421 busy"});
    server->Add({.command = "", .action = FaultAction::dropAfter});
    RawClient unwelcome(server->Port());
    EXPECT_EQ(unwelcome.Line(), "421 busy");
    EXPECT_EQ(unwelcome.Line(), "(closed)");
    RawClient client = LoggedIn();
    server->DropClients();
    EXPECT_EQ(client.Line(), "(closed)");
    EXPECT_TRUE(LoggedIn().Connected());
}

TEST_F(FaultTest, DelaysAndSplitsReplies) {
    Serve();
    RawClient client = LoggedIn();
    server->Add(
        {.command = "NOOP", .action = FaultAction::split, .bytes = 3, .time = milliseconds(20)});
    server->Add({.command = "PWD", .action = FaultAction::delay, .time = milliseconds(60)});
    for (const char* line : {"NOOP", "PWD"}) {
        auto start = std::chrono::steady_clock::now();
        EXPECT_THAT(client.Command(line), MatchesRegex("200 Done|257 .*"));
        EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(55)) << line;
    }
}

struct DataFault {
    const char* name;
    FaultAction action;
    std::size_t bytes;
    const char* data;  // of a download of the file
    const char* replies;
    const char* stored;  // of an upload of the same bytes
};

class DataFaultTest : public FaultTest, public testing::WithParamInterface<DataFault> {};

TEST_P(DataFaultTest, EndsTheTransferAsWritten) {
    Serve();
    server->Add(
        {.command = "*", .occurrence = 0, .action = GetParam().action, .bytes = GetParam().bytes});
    RawClient client = LoggedIn();
    EXPECT_EQ(client.Fetch("RETR file"), GetParam().data);
    EXPECT_THAT(client.lastReplies, MatchesRegex(std::string("150 .*\n") + GetParam().replies));
    EXPECT_THAT(client.Store("STOR new", "0123456789"), MatchesRegex(GetParam().replies));
    EXPECT_EQ(ReadWhole(root / "new"), GetParam().stored);
}

INSTANTIATE_TEST_SUITE_P(
    FaultTest, DataFaultTest,
    testing::Values(
        DataFault{"close", FaultAction::closeData, 4, "0123", "226 .*", "0123"},
        DataFault{"fail", FaultAction::failData, 4, "0123", "426 .*", "0123"},
        DataFault{"failLater", FaultAction::failData, 400, "0123456789", "426 .*", "0123456789"},
        DataFault{"slow", FaultAction::slowData, 3, "0123456789", "226 .*", "0123456789"}),
    [](const auto& row) { return row.param.name; });

TEST_F(FaultTest, MakesNoDataConnection) {
    Serve();
    server->Add({.command = "RETR", .action = FaultAction::refuseData});
    server->Add({.command = "RETR",
                 .occurrence = 2,
                 .action = FaultAction::refuseData,
                 .time = milliseconds(30)});
    server->Add({.command = "RETR", .occurrence = 3, .action = FaultAction::noFinalReply});
    RawClient client = LoggedIn();
    ASSERT_TRUE(client.OpenActive());
    EXPECT_THAT(client.Command("RETR file"), StartsWith("150 "));
    EXPECT_THAT(client.Command("ABOR"), StartsWith("426 "));
    EXPECT_THAT(client.Reply(), StartsWith("226 "));
    ASSERT_TRUE(client.OpenActive());
    client.Command("RETR file");
    EXPECT_THAT(client.Reply(), StartsWith("425 "));
    ASSERT_TRUE(client.OpenPassive());
    client.Command("RETR file");
    EXPECT_EQ(client.ReadData(), "0123456789");
    EXPECT_THAT(client.Command("NOOP"), StartsWith("200 "));
}

}  // namespace
