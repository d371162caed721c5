#pragma once
// How a thread of the layer sleeps, and what it does first: bytes that it combined on its sockets
// must be on their way before it waits for anything.

#include <chrono>
#include <span>

#include "net/socket.h"

namespace quennet::net {

/// A point in time, or never.
class Deadline {
  public:
    /// `milliseconds` from now; below 0 is never.
    static Deadline After(int64_t milliseconds);

    /// Time left for poll: 0 if it is over, -1 for ever.
    int RestForPoll() const;

  private:
    std::chrono::steady_clock::time_point end_{};
    bool never_ = false;
};

struct Awaited {
    SocketReference reference;
    short events;  // of poll
    short seen;    // POLLNVAL if the socket was closed
};

/// Sleeps until one of the sockets has what is awaited, or the deadline has come; an interruption
/// by a signal does not end it, QuennetEndSocketWaits does when there is a deadline. Pushes what
/// the thread has combined, before and meanwhile. Returns how many sockets have something in
/// `seen`. Holds no lock.
int AwaitSockets(std::span<Awaited> awaited, const Deadline& deadline);

/// Remembers that the calling thread left unsent bytes on the socket.
void NoteUnsent(const SocketReference& reference);

/// Pushes what the calling thread combined on any socket, as far as the system takes it. The
/// caller holds no socket's lock.
void PushUnsentOfThread();

}  // namespace quennet::net
