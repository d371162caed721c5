#pragma once
// Commands: how one line goes out on the control channel, and what its reply means.
//
// SendCommand is the one place where a lost connection is repaired: the login is repeated and the
// line sent once more.
//
// Results of SendCommand, and of ReadReply:
//   -1      nothing usable: the line was not sent or the read failed, and the connection was not
//           got back, or the line can't be sent as it is, or another thread holds the connection
//   0       no valid reply
//   1 to 5  the class of the reply; its code stands in `firstCode`. An abort or a time-out counts
//           as code 421. 1 is for transfers: with other commands the final reply is read too, and
//           counts.

#include "control/session.h"
#include "host/core_services.h"

namespace quennet {

/// Sends `length` bytes in pieces of at most 1024. Returns the number of bytes sent; 0 or below
/// when a send or the wait for it failed, which is printed, or when `abortFlag`, which may be null,
/// was set before all was sent.
int SendBlock(WindowNumber console, SocketNumber socket, const char* data, int length,
              const SharedWord* abortFlag);

/// What speaks against sending a line as it is, a text for a person: it holds CR or LF, or does not
/// fit the buffer of SendLine. Null when nothing does.
const char* ObjectionTo(const char* line);

/// Sends a line, whole or not at all. Refuses one that holds CR or LF or does not fit its buffer of
/// 4096 bytes with CR LF, and any line during an exchange, unless `abortFlag` is set: so ABOR gets
/// out during a transfer. Returns what SendBlock gives, -1 when refused or when the server takes
/// nothing for a second.
int SendLine(Session* session, const char* text);

/// Sends a formatted line and reads its reply, see above. The line is shown on the console, a
/// password is not.
int SendCommand(Session* session, const char* format, ...) QUENNET_PRINTF(2, 3);

/// The same with a finished line: a "%" in it is an ordinary character. An empty line sends nothing
/// and forces a new connection, with result 2.
int SendCommandText(Session* session, const char* line);

/// The same for a line that data may follow: a preliminary reply is its result, and what comes
/// after that is the caller's to read.
int SendTransferCommand(Session* session, const char* line);

/// The same with a line of the login, which is never repaired: -1 also when the connection is lost.
int SendLoginLine(Session* session, const char* line);

/// Sends a command; when its reply is exactly 500, the alternative, which may be null. Returns the
/// class of the last reply, 0 when no code was read.
int SendCommandAlt(Session* session, const char* command, const char* alternative);

/// The same with a verb, an alternative verb or null, and an argument.
int SendCommandAltArg(Session* session, const char* verb, const char* alternativeVerb,
                      const char* argument);

}  // namespace quennet
