#pragma once
// The layer's side of each socket.
//
// A socket's number is its descriptor, and leads to a slot that is never freed: whoever holds an
// old number finds a closed slot, or another socket, but never freed memory. A call holds the
// slot's lock while it works and gives it up while it sleeps, so that another thread can shut the
// socket down or close it. A descriptor on which somebody still sleeps is closed by the last
// sleeper; until then its number is not used again.

#include <cstdint>
#include <mutex>

#include "net/system.h"

#include "net/read_ahead.h"
#include "net/send_buffer.h"
#include "net/visible.h"

namespace quennet::net {

enum class Link {
    none,       // neither connected nor connecting; datagram sockets stay here
    listening,  //
    pending,    // a non-blocking connect is under way
    failed,     // and has failed
    connected,
};

struct SocketState {
    bool stream = false;
    bool nonBlocking = false;
    bool resetAtClose = false;  // SO_LINGER with 0 seconds
    bool receiveShut = false;
    bool sendShut = false;
    bool shutdownOwed = false;  // the system is told when the last unsent byte is out
    bool sentSinceWait = false;
    bool failureShown = false;  // `select` has come back early for a failed connect
    Visible<Link> link = Link::none;
    int error = 0;  // found beside the calls, for the next one to report
    int64_t lastSendMilliseconds = 0;
    int64_t sendTimeout = -1;  // milliseconds for one call, -1 for ever
    int64_t receiveTimeout = -1;
    ReadAhead received;
    SendBuffer unsent;
};

struct Socket {
    std::mutex lock;
    int descriptor = -1;
    Visible<bool> open = false;
    bool descriptorOwed = false;  // closed, but somebody still sleeps on the descriptor
    uint32_t generation = 0;      // rises with each close
    unsigned sleepers = 0;
    SocketState state;
};

/// A socket as it was found: another one with the same number is not taken for it.
struct SocketReference {
    Socket* socket;
    uint32_t generation;

    /// Needs the socket's lock.
    bool Alive() const { return socket->open && socket->generation == generation; }
};

/// A socket locked for the length of one call. False, with the last error set, if the layer is not
/// started or the number is no open socket.
class SocketUse {
  public:
    explicit SocketUse(SOCKET number);

    explicit operator bool() const { return lock_.owns_lock(); }
    SocketState* operator->() const { return &reference_.socket->state; }
    SocketState& operator*() const { return reference_.socket->state; }
    int Descriptor() const { return reference_.socket->descriptor; }
    const SocketReference& Reference() const { return reference_; }

    /// Gives the lock up and sleeps until one of the poll events has come; at most
    /// `milliseconds`, for ever if that is below 0. False, with the last error set to WSAEINTR
    /// and the lock gone, if the socket was closed meanwhile.
    bool Await(short events, int milliseconds = -1);

    /// Ends the socket; the lock is gone afterwards.
    void Close();

  private:
    SocketReference reference_{};
    std::unique_lock<std::mutex> lock_;
};

/// Whether the number is a connected stream that is ready to be written to by what the layer knows:
/// the system took all at the last attempt. Takes no lock: who sends in pieces asks this for each
/// of them. False says nothing.
bool IsKnownWritable(SOCKET number);

/// Makes a new descriptor a socket. INVALID_SOCKET, with the last error set, when there is no room
/// for one more; the descriptor is closed then.
SOCKET AdoptDescriptor(int descriptor, const SocketState& model);

/// Learns the outcome of a pending connect; `state.error` holds the number of a failure.
void SettleConnect(SocketState* state, int descriptor);

/// Hands unsent bytes to the system, as far as it takes them, and what else is owed behind them.
void PushUnsent(SocketState* state, int descriptor);

/// Receives what the peer has sent, without waiting; what is still unsent goes out before. After
/// `failed`, `state.error` holds the number.
ReadAhead::Fill ReceiveAhead(SocketState* state, const SocketReference& reference);

/// Reports and clears the error that was found beside the calls. SOCKET_ERROR.
int FailWithFoundError(SocketState* state);

/// Keeps the descriptor open while the caller sleeps on it. False if the socket is gone.
bool BeginSleep(const SocketReference& reference);
void EndSleep(const SocketReference& reference);

/// Closes every open socket as if it had SO_LINGER with 0 seconds.
void ResetAllSockets();

}  // namespace quennet::net
