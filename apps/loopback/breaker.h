#pragma once
// A break of the connection behind a chosen byte of all that is sent and received.

#include <cstddef>
#include <mutex>

namespace loopback {

/// One break. Behind it the server goes on as if nothing had been.
struct Break {
    std::size_t byte = 0;    // behind which the connection breaks, counted from 1; 0: never
    bool dataAlone = false;  // counts bytes of data connections, and breaks that connection; else
                             // counts every byte, and breaks all connections of the client
    bool withReset = false;  // else an orderly close
};

enum class Channel { control, data };

/// Counts the bytes of one server until its break. Thread-safe.
class Breaker {
  public:
    /// Counts from here on.
    void Set(const Break& next);

    /// How many of `size` bytes may move at once, so that none moves behind the break.
    std::size_t Room(Channel channel, std::size_t size) const;

    /// Counts bytes that have moved. True when the connection is to be broken now.
    bool Moved(Channel channel, std::size_t bytes);

    /// The break that was set last.
    Break Chosen() const;
    bool HasBroken() const;

  private:
    bool Counts(Channel channel) const;

    mutable std::mutex lock_;
    Break chosen_;
    std::size_t left_ = 0;  // 0 when no break is to come
};

}  // namespace loopback
