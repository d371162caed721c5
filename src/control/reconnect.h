#pragma once
// The repair of a lost connection, which commands call and which sends commands itself.

namespace quennet {

struct Session;

/// Closes what is left of the control connection, logs in again and goes back to the session's
/// directory; success is a `controlSocket` other than noSocket. A failure is shown to the user and
/// posted to the host. A call from inside a repair returns at once.
void Reconnect(Session* session);

}  // namespace quennet
