#pragma once
// The repair of a lost connection, which commands call and which sends commands itself.

namespace quennet {

struct Session;

/// Closes what is left of the control connection, logs in again and goes back to where the server
/// stood. A failed login is shown to the user and posted to the host, and leaves no control
/// connection.
///
/// True when the session is what it was before. False without a connection, and when the server did
/// not let it into that directory again: then a command with a name in it would meet another file
/// of that name. A call from inside a repair returns at once, true with a control connection.
bool Reconnect(Session* session);

}  // namespace quennet
