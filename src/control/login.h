#pragma once
// Opening the control connection and logging in.

#include "control/session.h"

namespace quennet {

/// Results of LoginSession.
constexpr int loginDone = 0;
constexpr int loginFailed = 5;
constexpr int loginCancelled = 6;  // the user cancelled the password question

/// The port behind the first ':' of a host text, which becomes a NUL; 0 without a ':' or without a
/// port from 1 to 65535 behind it.
u16 ParsePort(char* text);

/// Connects to `hostText`, which is changed: its ":port" is cut off and replaces `port`. Returns a
/// connected socket, or noSocket with what failed on the console.
SocketNumber OpenControlSocket(Session* session, char* hostText);

/// Opens the control connection, reads the welcome and logs in, directly or through the site's
/// firewall. Returns loginDone, also when a connection stands already, loginFailed or
/// loginCancelled. After a failure the socket is closed, `stopRetrying` is set and `replyBuffer`
/// holds the text of what failed.
int LoginSession(Session* session);

}  // namespace quennet
