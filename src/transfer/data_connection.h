#pragma once
// The data connection of one transfer: IPv4, made by the server's side or by ours.

#include "control/session.h"

namespace quennet {

/// Sends PORT with 4 address bytes and 2 port bytes in network order (RFC 959, section 4.1.2).
/// A refusal other than 500 gets a second try. Returns the result of the last command; 2 is
/// accepted.
int SendPortCommand(Session* session, const u8* addressBytes, const u8* portBytes);

/// Sends PASV and reads the six numbers of its reply. `numbers` takes their low bytes, `port` the
/// port in host order; both may be null, and stay as they were when the reply has no six numbers.
/// Returns the class of the reply.
int SendPasvCommand(Session* session, u8* numbers, u16* port);

/// Asks the server to listen and connects to it: to the host of the control connection, whatever
/// address the reply names. Returns a connected socket, or noSocket with the reason in
/// `replyBuffer`.
SocketNumber OpenPassiveData(Session* session);

/// Listens on a free port and tells the server its number with the local address of the control
/// connection. Returns the listening socket or noSocket.
SocketNumber OpenActiveData(Session* session);

/// Tells the server the representation type when it changes. A refusal counts as told. False when
/// the connection was lost on the way, and the session is not what it was: nothing may follow then.
bool TellType(Session* session, char type);

/// Has the server begin the next file with byte 0 where a person has typed another beginning. To be
/// called before SetUpTransfer. False when that can't be had: nothing may follow then.
bool ForgetTypedRestart(Session* session, char type);

/// Makes everything ready for a transfer command: tells the server the representation type when it
/// changes, and fills `listenSocket` the way that the site's options want. False when there is no
/// data socket.
bool SetUpTransfer(Session* session, char type);

/// Results of AwaitDataConnection.
constexpr int dataConnected = 1;
constexpr int dataNotConnected = 0;
constexpr int dataOptionRefused = -1;

/// After the transfer command: turns `listenSocket` into `dataSocket`. In active mode it waits for
/// the server's connection, at most `timeoutSeconds`, less when `abortFlag` is set; the peer's
/// address replaces `controlAddress`. Without dataConnected both sockets are closed.
int AwaitDataConnection(Session* session);

/// Closes `listenSocket`, which no transfer will use.
void AbandonDataSocket(Session* session);

}  // namespace quennet
