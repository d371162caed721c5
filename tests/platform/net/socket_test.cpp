// What becomes of a socket besides its bytes: refusals, errors, signals, high numbers, other
// threads.

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <cstring>
#include <thread>

#include "platform/net/peer.h"

namespace {

using SocketTest = ConnectedTest;

TEST_F(SocketTest, ARefusedConnectionNeverShowsAsWritable) {
    peer.StopListening();
    const sockaddr_in address = peer.Address();
    const SOCKET socket = NewStream();
    SetBlocking(socket, false);
    EXPECT_EQ(connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address),
              SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAEWOULDBLOCK);
    EXPECT_TRUE(Ready(socket, Set::except, 20'000));
    EXPECT_FALSE(Writable(socket, 1000));
    EXPECT_EQ(SocketError(socket), WSAECONNREFUSED);
    EXPECT_EQ(SocketError(socket), 0) << "asking clears it";
    const DWORD start = GetTickCount();
    EXPECT_FALSE(Writable(socket, 100));
    EXPECT_FALSE(Readable(socket, 50));
    EXPECT_GE(GetTickCount() - start, 140u) << "no busy loop on a failed socket";
    EXPECT_EQ(SendText(socket, "x"), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAENOTCONN);
}

TEST_F(SocketTest, WhatIsNoSocketIsTold) {
    EXPECT_EQ(closesocket(socket_), 0);
    EXPECT_EQ(Receive(socket_, 1), "error 10038");
    EXPECT_EQ(closesocket(socket_), SOCKET_ERROR);
    EXPECT_EQ(Receive(INVALID_SOCKET, 1), "error 10038");
    EXPECT_EQ(Receive(0, 1), "error 10038") << "a descriptor, but no socket of ours";
}

TEST_F(SocketTest, ABlockingCallEndsWhenItsTimeIsOver) {
    const int milliseconds = 60;
    for (const int option : {SO_RCVTIMEO, SO_SNDTIMEO}) {
        EXPECT_EQ(setsockopt(socket_, SOL_SOCKET, option,
                             reinterpret_cast<const char*>(&milliseconds), sizeof milliseconds),
                  0);
    }
    const DWORD start = GetTickCount();
    EXPECT_EQ(Receive(socket_, 1), "error 10060");
    EXPECT_GE(GetTickCount() - start, 55u);
    int sent = 0;
    for (int turn = 0; turn < 1000 && sent >= 0; ++turn) {
        sent = SendText(socket_, std::string(1'000'000, '.'));
    }
    EXPECT_EQ(sent, SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAETIMEDOUT) << "the peer takes nothing";
    SetResetAtClose(socket_);
    EXPECT_EQ(closesocket(socket_), 0);
}

TEST_F(SocketTest, ErrorsAndAnswersBelongToTheThreadThatAsked) {
    const hostent* const host = gethostbyname("127.0.0.9");
    ASSERT_NE(host, nullptr);
    in_addr address{};
    address.s_addr = htonl(0x01020304);
    const char* const text = inet_ntoa(address);
    WSASetLastError(4);
    std::thread([&] {
        in_addr other{};
        EXPECT_STREQ(inet_ntoa(other), "0.0.0.0");
        EXPECT_NE(gethostbyname("127.0.0.8"), nullptr);
        EXPECT_EQ(Receive(INVALID_SOCKET, 1), "error 10038");
        EXPECT_EQ(WSAIsBlocking(), FALSE);
    }).join();
    EXPECT_EQ(WSAGetLastError(), 4);
    EXPECT_STREQ(text, "1.2.3.4");
    EXPECT_EQ(std::memcmp(host->h_addr_list[0], "\x7f\0\0\x09", 4), 0);
}

TEST_F(SocketTest, AnotherThreadMayCloseASocketAtAnyMoment) {
    for (int turn = 0; turn < 60; ++turn) {
        Peer server;
        const SOCKET client = ConnectTo(server);
        server.Accept();
        server.Write(Pattern(0, 10'000));
        std::thread worker([&] {
            char buffer[512];
            fd_set set;
            do {
                FD_ZERO(&set);
                FD_SET(client, &set);
            } while (send(client, buffer, sizeof buffer, 0) > 0 &&
                     select(0, &set, nullptr, nullptr, nullptr) > 0 &&
                     recv(client, buffer, sizeof buffer, 0) > 0);
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

TEST_F(SocketTest, ASignalDoesNotShortenAWait) {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    std::atomic<bool> over{false};
    const pthread_t waiter = pthread_self();
    std::thread disturber([&] {
        while (!over) {
            pthread_kill(waiter, SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    });
    const DWORD start = GetTickCount();
    EXPECT_FALSE(Readable(socket_, 250));
    EXPECT_GE(GetTickCount() - start, 245u);
    over = true;
    disturber.join();
}

}  // namespace
