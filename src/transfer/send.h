#pragma once
// Uploads: one transfer from a local file to the server.

#include "control/session.h"

namespace quennet {

/// Sends the local file `path` behind one command (a finished line, «STOR name»). `type` is the
/// letter for TYPE.
///
/// Returns 0 when the server confirmed the transfer and nothing failed on this side; the class of a
/// refused command; -1 when the transfer did not start, was aborted or failed locally; else the
/// class of the final reply, 0 never standing for a missing one. `replyBuffer` then holds the
/// server's last reply or the text of what failed.
int SendFile(Session* session, const char* command, const char* path, char type);

}  // namespace quennet
