#pragma once
// The timer that bounds every wait on the control channel.
//
// A hidden child window of the console carries it, on the thread that handled message 24, so the
// timer runs on the host's message loop while workers wait for their sockets. It fires once per
// arming and only sets `abortFlag`.

#include "control/session.h"

namespace quennet {

/// Makes the window; registers its class in `instance` when that was not done yet. `holder` is the
/// host's word that will hold the handle. Returns 0 when it can't be made: the connection then
/// goes on without a time-out.
WindowNumber CreateWatchdogWindow(HINSTANCE instance, WindowNumber parent, HostWord* holder);

/// Stops the timer, and lets the window go without waiting for its thread, which alone can end it
/// and does so when it next serves messages. When this returns nothing of the window leads to the
/// session, also from a timer message that is on its way.
void LetGoOfWatchdogWindow(Session* session);

/// Starts the session's time-out of `timeoutSeconds`, anew when it runs; none when that is 0.
void ArmWatchdog(Session* session);

/// Stops the time-out. The last socket error stays what it was.
void DisarmWatchdog(Session* session);

/// Keeps the time-out running while it stands.
class WatchdogArmed {
  public:
    explicit WatchdogArmed(Session* session) : session_(session) { ArmWatchdog(session_); }
    ~WatchdogArmed() { DisarmWatchdog(session_); }
    WatchdogArmed(const WatchdogArmed&) = delete;
    WatchdogArmed& operator=(const WatchdogArmed&) = delete;

  private:
    Session* session_;
};

/// What stands in the host's word, read whole.
FtpHandle* HandleInHolder(HostWord* holder);

/// Puts a handle, or null, into the host's word and gives what stood there.
FtpHandle* ExchangeHolder(HostWord* holder, FtpHandle* handle);

}  // namespace quennet
