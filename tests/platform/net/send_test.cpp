#include <barrier>
#include <functional>
#include <string>
#include <thread>

#include "platform/net/peer.h"

namespace {

constexpr std::size_t pieceSize = 1024;

using SendTest = ConnectedTest;

TEST_F(SendTest, WhatWasCombinedLeavesBeforeTheThreadWaits) {
    const struct {
        const char* name;
        void (*wait)(SOCKET sender, SOCKET other);
    } waits[] = {
        {"select for reading", [](SOCKET sender, SOCKET) { Readable(sender, 0); }},
        {"recv", [](SOCKET sender, SOCKET) { Receive(sender, 10); }},
        {"select for reading on another socket", [](SOCKET, SOCKET other) { Readable(other, 0); }},
        {"recv on another socket", [](SOCKET, SOCKET other) { Receive(other, 10); }},
        {"accept on another socket", [](SOCKET, SOCKET other) { accept(other, nullptr, nullptr); }},
        {"sleep", [](SOCKET, SOCKET) { Sleep(1); }},
        {"shutdown", [](SOCKET sender, SOCKET) { shutdown(sender, 1); }},
        {"close", [](SOCKET sender, SOCKET) { closesocket(sender); }},
    };
    for (const auto& one : waits) {
        SCOPED_TRACE(one.name);
        Peer server;
        const SOCKET sender = ConnectTo(server);
        server.Accept();
        const SOCKET other = NewStream();
        listen(other, 1);
        SetBlocking(other, false);
        SetBlocking(sender, false);
        const std::string sent = Pattern(0, 2000);
        for (std::size_t offset = 0; offset < sent.size(); offset += 100) {
            ASSERT_EQ(SendText(sender, sent.substr(offset, 100)), 100);
        }
        one.wait(sender, other);
        EXPECT_EQ(server.Read(sent.size()), sent);
        closesocket(other);
    }
}

TEST_F(SendTest, AThreadThatEndsLeavesNothingBehind) {
    std::thread([&] {
        SendText(socket_, "one ");
        SendText(socket_, "two ");
    }).join();
    EXPECT_EQ(peer.Read(8), "one two ");
}

TEST_F(SendTest, BytesCombinedByAnotherThreadLeaveBeforeTheReplyIsAwaited) {
    std::barrier together(2);
    std::thread sender([&] {
        SendText(socket_, "one ");
        SendText(socket_, "two ");
        together.arrive_and_wait();
        together.arrive_and_wait();
    });
    together.arrive_and_wait();
    EXPECT_FALSE(Readable(socket_, 0));
    EXPECT_EQ(peer.Read(8), "one two ");
    together.arrive_and_wait();
    sender.join();
}

TEST_F(SendTest, ASlowSenderIsNotHeldBack) {
    SendText(socket_, "a");
    for (const char* text : {"b", "c"}) {
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        SendText(socket_, text);
    }
    EXPECT_EQ(peer.Read(3), "abc");
}

/// The system takes some more after a pause: a full socket is one that stays so.
bool StaysFull(SOCKET socket) {
    return !Writable(socket, 50) && !Writable(socket, 50) && !Writable(socket, 50);
}

/// Sends pieces as long as the socket shows as writable. Returns how many bytes.
std::size_t SendWhileWritable(SOCKET socket, std::size_t most) {
    SetBlocking(socket, false);
    std::size_t sent = 0;
    while (sent < most && !StaysFull(socket)) {
        const int taken = SendText(socket, Pattern(sent, pieceSize));
        EXPECT_GT(taken, 0) << "a writable socket takes bytes";
        if (taken <= 0) {
            break;
        }
        sent += static_cast<std::size_t>(taken);
    }
    SetBlocking(socket, true);
    return sent;
}

constexpr std::size_t most = 32 * 1024 * 1024;

/// A peer for which the system takes little.
class StalledPeerTest : public ConnectedTest {
  protected:
    StalledPeerTest() : ConnectedTest(16 * 1024) {}

    /// Goes on with `act` while the peer reads what was sent, to the end if `toEnd`, and then does
    /// what is to come `behind`.
    void ExpectArrives(
        std::size_t sent, bool toEnd, const std::function<void()>& act,
        const std::function<void()>& behind = [] {}) {
        std::string received;
        bool ended = false;
        std::thread reader([&] {
            Sleep(50);
            received = peer.Read(toEnd ? std::string::npos : sent, &ended);
            behind();
        });
        act();
        reader.join();
        EXPECT_TRUE(received == Pattern(0, sent)) << received.size() << " of " << sent;
        EXPECT_EQ(ended, toEnd) << "the peer is told of the end behind the last byte";
    }
};

TEST_F(StalledPeerTest, APeerThatStopsReadingShowsAsNotWritableUntilItReads) {
    const std::size_t sent = SendWhileWritable(socket_, most);
    ASSERT_LT(sent, most);
    ExpectArrives(sent, false, [&] {
        EXPECT_TRUE(Writable(socket_, 20'000));
        Readable(socket_, 0);
    });
}

TEST_F(StalledPeerTest, ABlockingSendWaitsForThePeerAndLosesNothing) {
    const std::string bytes = Pattern(0, 20'000'000);
    ExpectArrives(bytes.size(), true, [&] {
        EXPECT_EQ(SendText(socket_, bytes), static_cast<int>(bytes.size()));
        EXPECT_EQ(closesocket(socket_), 0);
    });
}

TEST_F(StalledPeerTest, WithoutBlockingAFullSocketTakesNoMore) {
    SetBlocking(socket_, false);
    std::size_t taken = 0;
    int result = 0;
    while (taken < most && (result = SendText(socket_, Pattern(taken, 5'000))) > 0) {
        taken += static_cast<std::size_t>(result);
    }
    EXPECT_EQ(result, SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAEWOULDBLOCK);
    EXPECT_FALSE(Writable(socket_, 50));
    ExpectArrives(taken, true, [&] { EXPECT_EQ(closesocket(socket_), 0); });
}

TEST_F(StalledPeerTest, TheRestGoesOutWhileTheCallerDrainsAHalfClosedSocket) {
    const std::size_t sent = SendWhileWritable(socket_, most);
    const DWORD start = GetTickCount();
    EXPECT_EQ(shutdown(socket_, 1), 0);
    EXPECT_LT(GetTickCount() - start, 5000u) << "a peer that does not read must not hold us";
    EXPECT_EQ(SendText(socket_, "more"), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAESHUTDOWN);
    ExpectArrives(
        sent, true, [&] { EXPECT_EQ(Receive(socket_, 100), "226 done"); },
        [&] { peer.Write("226 done"); });
}

TEST_F(StalledPeerTest, TheRestGoesOutWhileTheThreadWaitsOnAnotherSocket) {
    Peer control;
    const SOCKET controlSocket = ConnectTo(control);
    control.Accept();
    ExpectArrives(
        SendWhileWritable(socket_, most), false,
        [&] { EXPECT_EQ(Receive(controlSocket, 100), "226 done"); },
        [&] { control.Write("226 done"); });
}

TEST_F(StalledPeerTest, ACloseWithoutLingerThrowsTheRestAwayAtOnce) {
    const std::size_t sent = SendWhileWritable(socket_, most);
    SetResetAtClose(socket_);
    const DWORD start = GetTickCount();
    EXPECT_EQ(closesocket(socket_), 0);
    EXPECT_LT(GetTickCount() - start, 5000u);
    bool ended = true;
    EXPECT_LT(peer.ReadToEnd(&ended).size(), sent);
    EXPECT_FALSE(ended) << "the peer sees a reset";
}

TEST_F(SendTest, AnErrorMetOnTheWayIsTheResultOfALaterCall) {
    SendText(socket_, "first");
    peer.Reset();
    int result = 0;
    for (int piece = 0; piece < 1000 && result != SOCKET_ERROR; ++piece) {
        result = SendText(socket_, Pattern(0, pieceSize));
        ASSERT_TRUE(result == SOCKET_ERROR || Writable(socket_, 20'000));
    }
    EXPECT_EQ(result, SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAECONNRESET);
}

}  // namespace
