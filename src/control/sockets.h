#pragma once
// The small layer between the module and the socket interface: error texts, the one-second
// readiness tests that every wait is built from, the counted start of the library, the hard close.

#include "control/session.h"

namespace quennet {

/// What a socket is shut down for.
constexpr int shutdownSend = 1;
constexpr int shutdownBoth = 2;

/// The host's text for a library that does not start.
constexpr u32 winsockFailedText = 6000;

/// Puts the English text of the last socket error into `buffer`, cut to `size` bytes; the empty
/// text for an error that has none.
void SocketErrorText(char* buffer, u32 size);

/// Prints the text of the last socket error, if it has one.
void ReportSocketError(WindowNumber console);

/// Prints a format of the module's with the number of the last socket error.
void ReportSocketErrorCode(WindowNumber console, const char* format);

/// Prints the host's text of an id.
void ReportTextId(WindowNumber console, u32 textId);

/// 1 when the socket can be read, 0 when not within one second, below 0 after a failure.
int SocketReadable(SocketNumber socket);

/// 1 when the socket can be written, 0 when not within one second, below 0 after a failure.
int SocketWritable(SocketNumber socket);

/// 1 when the socket can be read at this moment, 0 when not, below 0 after a failure.
int SocketReadableNow(SocketNumber socket);

/// Whether the peer has closed the connection in order and all that it sent before is read.
bool PeerHasClosed(SocketNumber socket);

/// Waits until the socket can be read or `abortFlag` is set: 1, 0 when aborted, below 0 after a
/// failure. Nothing but the flag bounds the wait.
int WaitSocketReadable(SocketNumber socket, const SharedWord& abortFlag);

/// Waits for about ten seconds at most. 0 when the socket can be written, when the time is over
/// (the caller goes on as if it could) or when `abortFlag` was set; below 0 after a failure, which
/// is printed. `abortFlag` may be null.
int WaitSocketWritable(WindowNumber console, SocketNumber socket, const SharedWord* abortFlag);

/// Connects a socket, blocking for no longer than a second at a time. `hostText` names the host in
/// messages. Fails after 60 seconds (10060) and when `abortFlag` is set in the meantime (10004); a
/// flag that was set before is cleared, not looked at: a repair after a time-out begins with one.
/// A failure is printed, leaves its text in `replyBuffer` and closes the socket.
bool ConnectSocket(Session* session, SocketNumber socket, const sockaddr_in& address,
                   const char* hostText);

/// Turns TCP keep-alive on. A refusal changes nothing for the transfer and is not reported.
void KeepSocketAlive(SocketNumber socket);

/// Starts the socket library for version 1.1 unless `useCount` says that it runs, and counts the
/// use. Returns 0 or the code of the failed start, which the user has then been told.
int AcquireWinsock(WindowNumber console, u32* useCount);

/// Gives one use back and stops the library with the last one. A null address or a count of 0
/// ends it.
void ReleaseWinsock(u32* useCount);

/// Shuts a socket down (`how`: shutdownSend or shutdownBoth) and closes it, throwing away what is
/// unsent. With shutdownSend the peer's last bytes are read first, into `replyBuffer`, until it
/// closes or `abortFlag` is set. Returns the value for the socket's field: noSocket, or the socket
/// itself when the close failed.
SocketNumber CloseSocketGracefully(Session* session, SocketNumber socket, int how);

}  // namespace quennet
