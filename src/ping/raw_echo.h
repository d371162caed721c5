#pragma once
// Echo requests through a raw ICMP socket, which needs rights that not every user has.

#include <winsock.h>

#include "control/session.h"
#include "ping/ping_state.h"

namespace quennet {

class RawEcho {
  public:
    /// Opens the socket, which is closed at the end.
    explicit RawEcho(WindowNumber console);
    ~RawEcho();
    RawEcho(const RawEcho&) = delete;
    RawEcho& operator=(const RawEcho&) = delete;

    bool HasSocket() const { return socket_ != noSocket; }

    /// Sets the time limits and looks the target up. False after a failure, which is printed.
    bool Open(const char* target);

    /// Sends one request, numbered from 0, and prints what arrives next, whoever sent it. Pauses
    /// behind it for a second, unless a stop is asked for or the wait took that second already.
    /// False when a failure, which is printed, ends it all.
    bool RunCycle(PingState* state);

  private:
    enum class Outcome { done, timedOut, failed };

    bool LimitTime(int option, const char* complaint) const;
    bool Resolve(const char* target);
    Outcome Send(PingState* state);
    Outcome Receive(PingState* state) const;
    Outcome OutcomeOfError() const;

    const WindowNumber console_;
    const SocketNumber socket_;
    sockaddr_in destination_{};
    u16 sequence_ = 0;
};

}  // namespace quennet
