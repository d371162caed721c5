// System calls come first: behind winsock.h their names are the layer's.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace {

constexpr int patienceSeconds = 20;

int Listen(int receiveBuffer, unsigned short* port) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (receiveBuffer > 0) {
        setsockopt(listener, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    }
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    const bool done = bind(listener, reinterpret_cast<sockaddr*>(&address), size) == 0 &&
                      listen(listener, 1) == 0 &&
                      getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    if (!done) {
        std::abort();
    }
    *port = ntohs(address.sin_port);
    return listener;
}

int AcceptOne(int listener) {
    const timeval patience{patienceSeconds, 0};
    setsockopt(listener, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const int connection = accept(listener, nullptr, nullptr);
    setsockopt(connection, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    return connection;
}

ssize_t SendSome(int connection, const char* data, size_t length) {
    return send(connection, data, length, MSG_NOSIGNAL);
}

ssize_t ReceiveSome(int connection, char* buffer, size_t length) {
    return recv(connection, buffer, length, 0);
}

void ResetConnection(int connection) {
    const linger atOnce{1, 0};
    setsockopt(connection, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    close(connection);
}

}  // namespace

#include "platform/net/peer.h"

Peer::Peer(int receiveBuffer) : listener_(Listen(receiveBuffer, &port_)) {}

Peer::~Peer() {
    Close();
    StopListening();
}

sockaddr_in Peer::Address() const {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port_);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

void Peer::Accept() {
    connection_ = AcceptOne(listener_);
    ASSERT_GE(connection_, 0);
}

void Peer::StopListening() {
    if (listener_ >= 0) {
        close(std::exchange(listener_, -1));
    }
}

void Peer::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = SendSome(connection_, bytes.data(), bytes.size());
        ASSERT_GT(sent, 0);
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::string Peer::Read(std::size_t count) {
    std::string text(count, '\0');
    std::size_t size = 0;
    while (size < count) {
        const ssize_t received = ReceiveSome(connection_, text.data() + size, count - size);
        if (received <= 0) {
            break;
        }
        size += static_cast<std::size_t>(received);
    }
    text.resize(size);
    return text;
}

std::string Peer::ReadToEnd(bool* ended) {
    std::string text;
    char block[65536];
    ssize_t received = 0;
    while ((received = ReceiveSome(connection_, block, sizeof block)) > 0) {
        text.append(block, static_cast<std::size_t>(received));
    }
    if (ended != nullptr) {
        *ended = received == 0;
    }
    return text;
}

void Peer::Close() {
    if (connection_ >= 0) {
        close(std::exchange(connection_, -1));
    }
}

void Peer::Reset() {
    ResetConnection(std::exchange(connection_, -1));
}

void NetTest::SetUp() {
    WSADATA data;
    ASSERT_EQ(WSAStartup(MAKEWORD(1, 1), &data), 0);
}

void NetTest::TearDown() {
    // The last cleanup closes what a test has left open.
    EXPECT_EQ(WSACleanup(), 0);
}

void ConnectedTest::SetUp() {
    NetTest::SetUp();
    socket_ = ConnectTo(peer);
    ASSERT_NE(socket_, INVALID_SOCKET);
    peer.Accept();
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

namespace {

enum class Set { read, write, except };

bool Ready(SOCKET socket, Set kind, int milliseconds) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(socket, &set);
    timeval timeout{milliseconds / 1000, milliseconds % 1000 * 1000};
    const int result =
        select(0, kind == Set::read ? &set : nullptr, kind == Set::write ? &set : nullptr,
               kind == Set::except ? &set : nullptr, &timeout);
    EXPECT_NE(result, SOCKET_ERROR) << WSAGetLastError();
    EXPECT_EQ(result > 0, FD_ISSET(socket, &set) != 0);
    return result > 0;
}

}  // namespace

bool Readable(SOCKET socket, int milliseconds) {
    return Ready(socket, Set::read, milliseconds);
}

bool Writable(SOCKET socket, int milliseconds) {
    return Ready(socket, Set::write, milliseconds);
}

bool Excepted(SOCKET socket, int milliseconds) {
    return Ready(socket, Set::except, milliseconds);
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
