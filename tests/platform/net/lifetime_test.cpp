#include <functional>
#include <string>
#include <thread>

#include "platform/net/peer.h"

namespace {

using LifetimeTest = ConnectedTest;

TEST(StartupTest, NothingWorksBeforeTheStartAndAfterTheLastCleanup) {
    WSADATA data;
    EXPECT_EQ(WSAStartup(MAKEWORD(0, 1), &data), WSAVERNOTSUPPORTED);
    EXPECT_EQ(NewStream(), INVALID_SOCKET);
    EXPECT_EQ(WSAGetLastError(), WSANOTINITIALISED);
    ASSERT_EQ(WSAStartup(MAKEWORD(1, 1), &data), 0);
    ASSERT_EQ(WSAStartup(MAKEWORD(2, 2), &data), 0);
    EXPECT_EQ(data.wVersion, MAKEWORD(1, 1));
    EXPECT_EQ(WSACleanup(), 0);
    const SOCKET socket = NewStream();
    EXPECT_NE(socket, INVALID_SOCKET);
    EXPECT_EQ(WSACleanup(), 0);
    EXPECT_EQ(gethostbyname("localhost"), nullptr);
    EXPECT_EQ(WSAGetLastError(), WSANOTINITIALISED);
    EXPECT_EQ(WSACleanup(), SOCKET_ERROR);
    ASSERT_EQ(WSAStartup(MAKEWORD(1, 1), &data), 0);
    EXPECT_EQ(closesocket(socket), SOCKET_ERROR) << "the last cleanup has closed it";
    EXPECT_EQ(WSAGetLastError(), WSAENOTSOCK);
    EXPECT_EQ(WSACleanup(), 0);
}

TEST_F(LifetimeTest, AClosedSocketIsNone) {
    EXPECT_TRUE(Writable(socket_, 0));
    EXPECT_EQ(closesocket(socket_), 0);
    fd_set writers;
    FD_ZERO(&writers);
    FD_SET(socket_, &writers);
    EXPECT_EQ(select(0, nullptr, &writers, nullptr, nullptr), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAENOTSOCK);
    EXPECT_EQ(Receive(socket_, 1), "error 10038");
    EXPECT_EQ(closesocket(socket_), SOCKET_ERROR);
    EXPECT_EQ(Receive(INVALID_SOCKET, 1), "error 10038");
    EXPECT_EQ(Receive(0, 1), "error 10038") << "a descriptor, but no socket of ours";
}

TEST_F(LifetimeTest, ErrorsBelongToTheThreadThatMetThem) {
    WSASetLastError(4);
    std::thread([&] {
        EXPECT_EQ(Receive(INVALID_SOCKET, 1), "error 10038");
        EXPECT_EQ(WSAIsBlocking(), FALSE);
    }).join();
    EXPECT_EQ(WSAGetLastError(), 4);
    EXPECT_EQ(WSACancelBlockingCall(), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAEINVAL);
}

TEST_F(LifetimeTest, AnotherThreadEndsABlockedReceive) {
    std::string result;
    std::thread reader([&] { result = Receive(socket_, 10); });
    Sleep(30);
    EXPECT_EQ(shutdown(socket_, 2), 0);
    reader.join();
    // The second one if the thread was late.
    EXPECT_TRUE(result == "" || result == "error 10058") << result;

    Peer secondPeer;
    const SOCKET second = ConnectTo(secondPeer);
    secondPeer.Accept();
    std::thread secondReader([&] { result = Receive(second, 10); });
    Sleep(30);
    EXPECT_EQ(closesocket(second), 0);
    secondReader.join();
    EXPECT_TRUE(result == "error 10004" || result == "error 10038") << result;
}

TEST_F(LifetimeTest, AnotherThreadEndsABlockedAccept) {
    const SOCKET listener = NewStream();
    ASSERT_EQ(listen(listener, 1), 0);
    std::thread acceptor([&] { EXPECT_EQ(accept(listener, nullptr, nullptr), INVALID_SOCKET); });
    Sleep(30);
    EXPECT_EQ(closesocket(listener), 0);
    acceptor.join();
}

TEST_F(LifetimeTest, AnotherThreadMayCloseASocketAtAnyMoment) {
    for (int turn = 0; turn < 60; ++turn) {
        Peer server;
        const SOCKET client = ConnectTo(server);
        server.Accept();
        server.Write(Pattern(0, 10'000));
        std::thread worker([&] {
            char buffer[512];
            fd_set set;
            for (;;) {
                FD_ZERO(&set);
                FD_SET(client, &set);
                const bool alive = send(client, buffer, sizeof buffer, 0) > 0 &&
                                   select(0, &set, nullptr, nullptr, nullptr) > 0 &&
                                   recv(client, buffer, sizeof buffer, 0) > 0;
                if (!alive) {
                    break;
                }
            }
        });
        std::this_thread::sleep_for(std::chrono::microseconds(turn * 20));
        if (turn % 2 == 0) {
            shutdown(client, 2);
        }
        SetResetAtClose(client);
        EXPECT_EQ(closesocket(client), 0);
        worker.join();
    }
}

}  // namespace
