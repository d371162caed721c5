#include <string>

#include "platform/net/peer.h"

namespace {

using ConnectTest = NetTest;

int TryConnect(SOCKET socket, const Peer& peer) {
    const sockaddr_in address = peer.Address();
    const int result = connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return result == 0 ? 0 : WSAGetLastError();
}

TEST_F(ConnectTest, ARefusedConnectionNeverShowsAsWritable) {
    Peer peer;
    peer.StopListening();
    const SOCKET socket = NewStream();
    SetBlocking(socket, false);
    EXPECT_EQ(TryConnect(socket, peer), WSAEWOULDBLOCK);
    EXPECT_TRUE(Excepted(socket, 2000));
    EXPECT_FALSE(Writable(socket, 1000));
    EXPECT_EQ(SocketError(socket), WSAECONNREFUSED);
    EXPECT_EQ(SocketError(socket), 0) << "asking clears it";
    const DWORD start = GetTickCount();
    EXPECT_FALSE(Writable(socket, 100));
    EXPECT_FALSE(Readable(socket, 50));
    EXPECT_GE(GetTickCount() - start, 140u) << "no busy loop on a failed socket";
    EXPECT_EQ(SendText(socket, "x"), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAENOTCONN);
    EXPECT_EQ(closesocket(socket), 0);
}

TEST_F(ConnectTest, ARefusalIsToldBeforeTheTestForReadinessHasRunItsTime) {
    Peer peer;
    peer.StopListening();
    const SOCKET socket = NewStream();
    SetBlocking(socket, false);
    const DWORD start = GetTickCount();
    TryConnect(socket, peer);
    EXPECT_FALSE(Writable(socket, 5000));
    EXPECT_EQ(SocketError(socket), WSAECONNREFUSED);
    EXPECT_LT(GetTickCount() - start, 2000u);
    EXPECT_EQ(closesocket(socket), 0);
}

TEST_F(ConnectTest, ABlockingConnectReportsItsOwnFailure) {
    Peer peer;
    peer.StopListening();
    const SOCKET socket = NewStream();
    EXPECT_EQ(TryConnect(socket, peer), WSAECONNREFUSED);
    EXPECT_EQ(closesocket(socket), 0);
}

TEST_F(ConnectTest, AConnectionMadeWithoutBlockingBecomesWritable) {
    Peer peer;
    const SOCKET socket = NewStream();
    EXPECT_FALSE(Writable(socket, 0)) << "not connected yet";
    EXPECT_EQ(SendText(socket, "x"), SOCKET_ERROR);
    EXPECT_EQ(WSAGetLastError(), WSAENOTCONN);
    SetBlocking(socket, false);
    const int result = TryConnect(socket, peer);
    EXPECT_TRUE(result == 0 || result == WSAEWOULDBLOCK) << result;
    EXPECT_TRUE(Writable(socket, 2000));
    EXPECT_EQ(SocketError(socket), 0);
    EXPECT_EQ(TryConnect(socket, peer), WSAEISCONN);
    peer.Accept();
    peer.Write("220 ready");
    EXPECT_TRUE(Readable(socket, 2000));
    EXPECT_EQ(Receive(socket, 100), "220 ready");
    EXPECT_EQ(closesocket(socket), 0);
}

TEST_F(ConnectTest, AnAcceptedConnectionKnowsItsPeer) {
    const SOCKET listener = NewStream();
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    EXPECT_FALSE(Readable(listener, 0));
    const SOCKET client = NewStream();
    ASSERT_EQ(connect(client, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_TRUE(Readable(listener, 2000));
    sockaddr_in peerAddress{};
    sockaddr_in clientAddress{};
    int peerSize = sizeof peerAddress;
    const SOCKET server = accept(listener, reinterpret_cast<sockaddr*>(&peerAddress), &peerSize);
    ASSERT_NE(server, INVALID_SOCKET);
    ASSERT_EQ(getsockname(client, reinterpret_cast<sockaddr*>(&clientAddress), &size), 0);
    EXPECT_EQ(peerAddress.sin_port, clientAddress.sin_port);
    EXPECT_STREQ(inet_ntoa(peerAddress.sin_addr), "127.0.0.1");
    SendText(server, "hello");
    EXPECT_EQ(Receive(client, 10), "hello");
    SetBlocking(listener, false);
    EXPECT_EQ(accept(listener, nullptr, nullptr), INVALID_SOCKET);
    EXPECT_EQ(WSAGetLastError(), WSAEWOULDBLOCK);
}

TEST_F(ConnectTest, ADatagramLongerThanTheBufferIsAnError) {
    const SOCKET receiver = socket(AF_INET, SOCK_DGRAM, 0);
    const SOCKET sender = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    int size = sizeof address;
    ASSERT_EQ(bind(receiver, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(getsockname(receiver, reinterpret_cast<sockaddr*>(&address), &size), 0);
    for (const char* text : {"abcdef", "abc"}) {
        sendto(sender, text, static_cast<int>(strlen(text)), 0,
               reinterpret_cast<sockaddr*>(&address), size);
    }
    ASSERT_TRUE(Readable(receiver, 2000));
    EXPECT_EQ(Receive(receiver, 4), "error 10040");
    EXPECT_EQ(Receive(receiver, 4), "abc") << "one datagram each, nothing joined";
}

}  // namespace
