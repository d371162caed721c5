#pragma once
// The other end of a connection, on the system's own sockets, and the near end on the layer's.

#include <windows.h>
#include <winsock.h>

#include <cstddef>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "loopback/socket.h"

/// A server on 127.0.0.1 for one connection.
class Peer {
  public:
    /// Listens on a free port. A `receiveBuffer` above 0 limits what the system takes for it.
    explicit Peer(int receiveBuffer = 0);

    sockaddr_in Address() const;
    void Accept();
    /// No connection can be made any more.
    void StopListening() { listener_.socket.Close(); }

    void Write(std::string_view bytes);
    /// Reads `count` bytes; fewer at the end, or when none has come for twenty seconds. `ended`
    /// tells whether the stream's end came without an error.
    std::string Read(std::size_t count, bool* ended = nullptr);
    /// Reads to the end of the stream.
    std::string ReadToEnd(bool* ended = nullptr) { return Read(std::string::npos, ended); }

    void Close() { connection_.Close(); }
    /// Ends the connection so that the other side finds it reset.
    void Reset() { loopback::CloseWithReset(connection_); }

  private:
    loopback::StopSignal never_;
    loopback::Listener listener_ = loopback::Listen(0);
    loopback::Descriptor connection_;
};

/// A peer, and a blocking socket that is connected to it.
class ConnectedTest : public testing::Test {
  protected:
    explicit ConnectedTest(int receiveBuffer = 0) : peer(receiveBuffer) {}
    void SetUp() override;
    void TearDown() override;

    Peer peer;
    SOCKET socket_ = INVALID_SOCKET;
};

SOCKET NewStream();
SOCKET ConnectTo(const Peer& peer);
int SendText(SOCKET socket, std::string_view text);
/// At most `length` bytes of one recv; "error N" after a failure.
std::string Receive(SOCKET socket, int length, int flags = 0);
enum class Set { read, write, except };
bool Ready(SOCKET socket, Set kind, int milliseconds);
inline bool Readable(SOCKET socket, int milliseconds) {
    return Ready(socket, Set::read, milliseconds);
}
inline bool Writable(SOCKET socket, int milliseconds) {
    return Ready(socket, Set::write, milliseconds);
}
int SocketError(SOCKET socket);
void SetBlocking(SOCKET socket, bool blocking);
void SetResetAtClose(SOCKET socket);
/// Bytes that differ from their neighbours and depend on `offset` alone.
std::string Pattern(std::size_t offset, std::size_t length);
