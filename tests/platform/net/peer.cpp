// The system call comes first: behind winsock.h its name is the layer's.

#include <sys/socket.h>

// To be called before the client connects, which is told of it.
static void LimitReceiveBuffer(int listener, int bytes) {
    setsockopt(listener, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

#include <algorithm>

#include "platform/net/peer.h"

namespace {

loopback::Clock::time_point Soon() {
    return loopback::Clock::now() + std::chrono::seconds(20);
}

}  // namespace

Peer::Peer(int receiveBuffer) {
    if (receiveBuffer > 0) {
        LimitReceiveBuffer(listener_.socket.Number(), receiveBuffer);
    }
}

sockaddr_in Peer::Address() const {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(listener_.port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void Peer::Accept() {
    loopback::WaitReady(listener_.socket.Number(), false, Soon(), never_);
    connection_ = loopback::Accept(listener_);
    ASSERT_TRUE(connection_.Valid());
}

void Peer::Write(std::string_view bytes) {
    ASSERT_EQ(loopback::SendAll(connection_.Number(), bytes, Soon(), never_), loopback::Sent::all);
}

std::string Peer::Read(std::size_t count, bool* ended) {
    std::string text;
    std::string block(65536, '\0');
    std::ptrdiff_t received = 1;
    while (text.size() < count && received > 0) {
        loopback::WaitReady(connection_.Number(), false, Soon(), never_);
        received = loopback::ReadSome(connection_.Number(), block.data(),
                                      std::min(block.size(), count - text.size()));
        text.append(block, 0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(received, 0)));
    }
    if (ended != nullptr) {
        *ended = received == 0;
    }
    return text;
}

void ConnectedTest::SetUp() {
    WSADATA data;
    ASSERT_EQ(WSAStartup(MAKEWORD(1, 1), &data), 0);
    socket_ = ConnectTo(peer);
    ASSERT_NE(socket_, INVALID_SOCKET);
    peer.Accept();
}

void ConnectedTest::TearDown() {
    // The last cleanup closes what a test has left open.
    EXPECT_EQ(WSACleanup(), 0);
}

SOCKET NewStream() {
    return socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
}

SOCKET ConnectTo(const Peer& peer) {
    const SOCKET connection = NewStream();
    const sockaddr_in address = peer.Address();
    const int result =
        connect(connection, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return result == 0 ? connection : INVALID_SOCKET;
}

int SendText(SOCKET socket, std::string_view text) {
    return send(socket, text.data(), static_cast<int>(text.size()), 0);
}

std::string Receive(SOCKET socket, int length, int flags) {
    std::string text(static_cast<std::size_t>(length), '\0');
    const int received = recv(socket, text.data(), length, flags);
    if (received < 0) {
        return "error " + std::to_string(WSAGetLastError());
    }
    text.resize(static_cast<std::size_t>(received));
    return text;
}

bool Ready(SOCKET socket, Set kind, int milliseconds) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(socket, &set);
    const auto only = [&](Set wanted) { return kind == wanted ? &set : nullptr; };
    timeval timeout{milliseconds / 1000, milliseconds % 1000 * 1000};
    const int result = select(0, only(Set::read), only(Set::write), only(Set::except), &timeout);
    EXPECT_NE(result, SOCKET_ERROR) << WSAGetLastError();
    EXPECT_EQ(result > 0, FD_ISSET(socket, &set) != 0);
    return result > 0;
}

int SocketError(SOCKET socket) {
    int error = -1;
    int size = sizeof error;
    EXPECT_EQ(getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size), 0);
    return error;
}

void SetBlocking(SOCKET socket, bool blocking) {
    u_long nonBlocking = blocking ? 0 : 1;
    ASSERT_EQ(ioctlsocket(socket, FIONBIO, &nonBlocking), 0);
}

void SetResetAtClose(SOCKET socket) {
    const linger atOnce{1, 0};
    ASSERT_EQ(setsockopt(socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&atOnce),
                         sizeof atOnce),
              0);
}

std::string Pattern(std::size_t offset, std::size_t length) {
    std::string text(length, '\0');
    for (std::size_t index = 0; index < length; ++index) {
        const std::size_t place = offset + index;
        text[index] = static_cast<char>(place * 31 + place / 251 + place / 65521);
    }
    return text;
}
