#include <random>
#include <string>
#include <thread>

#include "platform/net/peer.h"

namespace {

using ReadTest = ConnectedTest;

TEST_F(ReadTest, BytesComeInOrderHoweverTheyArePeekedTakenAndCounted) {
    constexpr std::size_t total = 3'000'000;
    std::thread writer([&] {
        std::minstd_rand random(7);
        for (std::size_t offset = 0; offset < total;) {
            const std::size_t piece = std::min<std::size_t>(random() % 70'000 + 1, total - offset);
            peer.Write(Pattern(offset, piece));
            offset += piece;
        }
        peer.Close();
    });
    std::minstd_rand random(11);
    std::size_t offset = 0;
    while (Readable(socket_, 20'000)) {
        const int length = random() % 4 == 0 ? 1 : static_cast<int>(random() % 9'000 + 1);
        u_long waiting = 0;
        ASSERT_EQ(ioctlsocket(socket_, FIONREAD, &waiting), 0);
        const std::string peeked = Receive(socket_, length, MSG_PEEK);
        const std::string taken = Receive(socket_, length);
        if (taken.empty()) {
            break;
        }
        ASSERT_EQ(taken, Pattern(offset, taken.size())) << "at byte " << offset;
        ASSERT_TRUE(taken.starts_with(peeked));
        ASSERT_GE(waiting, std::min(peeked.size(), taken.size()) > 0 ? 1u : 0u);
        offset += taken.size();
    }
    EXPECT_EQ(offset, total);
    writer.join();
}

TEST_F(ReadTest, APeekSeesBytesThatCameBehindThoseAlreadySeen) {
    peer.Write("220 re");
    EXPECT_EQ(Receive(socket_, 82, MSG_PEEK), "220 re");
    peer.Write("ady\r\n");
    std::string line;
    for (int turn = 0; turn < 4000 && line.size() < 11; ++turn) {
        line = Receive(socket_, 82, MSG_PEEK);
        Sleep(5);
    }
    EXPECT_EQ(line, "220 ready\r\n");
    EXPECT_EQ(Receive(socket_, 4), "220 ");
    EXPECT_EQ(Receive(socket_, 82, MSG_PEEK), "ready\r\n");
}

TEST_F(ReadTest, AnEndStaysAnEnd) {
    peer.Write("last");
    peer.Close();
    EXPECT_EQ(Receive(socket_, 100), "last");
    EXPECT_TRUE(Readable(socket_, 20'000));
    EXPECT_EQ(Receive(socket_, 100, MSG_PEEK), "");
    EXPECT_EQ(Receive(socket_, 100), "");
    EXPECT_TRUE(Readable(socket_, 0));
}

TEST_F(ReadTest, BytesBeforeAResetAreDeliveredBeforeIt) {
    peer.Write("421 bye\r\n");
    ASSERT_TRUE(Readable(socket_, 20'000));
    peer.Reset();
    EXPECT_EQ(Receive(socket_, 100), "421 bye\r\n");
    EXPECT_EQ(Receive(socket_, 100), "error 10054");
    EXPECT_EQ(SendText(socket_, "QUIT\r\n"), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAECONNRESET);
}

TEST_F(ReadTest, WithoutBlockingAnEmptySocketSaysSo) {
    SetBlocking(socket_, false);
    EXPECT_EQ(Receive(socket_, 10), "error 10035");
    peer.Write("x");
    ASSERT_TRUE(Readable(socket_, 20'000));
    EXPECT_EQ(Receive(socket_, 10), "x");
    EXPECT_EQ(Receive(socket_, 10), "error 10035");
}

}  // namespace
