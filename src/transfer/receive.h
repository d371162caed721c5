#pragma once
// Downloads and listings: one transfer from the server, into a file or into memory.

#include "control/session.h"

namespace quennet {

/// How many bytes of a partial file are received again and compared before it is continued.
constexpr u32 resumeOverlap = 512;

/// Receives what one command makes the server send.
///
/// `command` is a finished line («RETR name»). The bytes go to the local file `path`, or with a
/// non-null `buffer` to memory, with a NUL of its own at the end. `resumeOffset` is 0, or above
/// 512 the length of a partial local file: the server is asked to begin 512 bytes before it, and
/// these bytes must equal the file's. `type` is the letter for TYPE (RFC 959, section 3.1.1).
///
/// Returns 2 when the server confirmed the transfer and nothing failed locally; 5 when it was
/// aborted, by the user, a time-out or a failed comparison (`abortFlag` is set then); 0 or -1 when
/// it did not start or failed locally; else the class of the final reply. `replyBuffer` then holds
/// the server's last reply or the text of what failed.
int ReceiveFile(Session* session, const char* command, const char* path, GrowBuffer* buffer,
                HostWord resumeOffset, char type);

}  // namespace quennet
