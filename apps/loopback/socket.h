#pragma once
// Sockets on 127.0.0.1 for the loopback server and for the scripted servers of the tests. Every
// wait has an end: a deadline, or a stop signal from another thread.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace loopback {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// Owns one file descriptor, and closes it at the end of its life.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { Close(); }

    int Number() const { return number_; }
    bool Valid() const { return number_ >= 0; }
    void Close();
    /// Gives the descriptor away: the caller closes it.
    int Release();

  private:
    int number_ = -1;
};

/// A flag that a wait can look at together with its sockets. Once set it stays set.
class StopSignal {
  public:
    /// Throws std::system_error when the system has no descriptor left.
    StopSignal();

    void Set();
    bool IsSet() const;
    /// Readable as soon as the signal is set.
    int Number() const { return event_.Number(); }

  private:
    Descriptor event_;
};

enum class Ready { yes, timeout, stopped };

/// Waits until `socket` can be read (or, with `writing`, written), or has failed, which reads as
/// ready too.
Ready WaitReady(int socket, bool writing, Clock::time_point deadline, const StopSignal& stop);

/// Sleeps for `time`, less when `stop` is set. False when stopped.
bool Sleep(Milliseconds time, const StopSignal& stop);

struct Listener {
    Descriptor socket;
    std::uint16_t port = 0;
};

/// Listens on 127.0.0.1. Port 0 takes a free one. Throws std::system_error.
Listener Listen(std::uint16_t port);

/// Takes one waiting connection; not valid when there is none.
Descriptor Accept(const Listener& listener);

/// Connects to an address of the loopback network, in host order, such as 0x7F000001; refuses
/// every other one. Not valid after a failure.
Descriptor Connect(std::uint32_t address, std::uint16_t port, Clock::time_point deadline,
                   const StopSignal& stop);

enum class Sent { all, timeout, stopped, failed };

/// Sends all bytes of `data`. Never raises SIGPIPE.
Sent SendAll(int socket, std::string_view data, Clock::time_point deadline, const StopSignal& stop);

/// Reads what is there, at most `size` bytes: their number, 0 at the peer's end, -1 after a
/// failure. To be called when the socket is readable.
std::ptrdiff_t ReadSome(int socket, char* buffer, std::size_t size);

/// Closes the connection with a reset, so that the peer's next operation fails.
void CloseWithReset(Descriptor& socket);

/// Closes the connection in order: takes what has arrived unread, which would turn the close into a
/// reset, and does not wait for more.
void CloseInOrder(Descriptor& socket);

/// Host and port as PORT commands and 227 replies name them: "127,0,0,1,4,210".
std::string HostPortText(std::uint32_t address, std::uint16_t port);

/// Reads six numbers from 0 to 255 with commas between. False when the text is anything else.
bool ParseHostPort(std::string_view text, std::uint32_t* address, std::uint16_t* port);

}  // namespace loopback
