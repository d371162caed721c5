#pragma once
// Goes to a directory on behalf of a panel.

#include "control/session.h"

namespace quennet {

/// Message 46: starts a worker that calls `begins`, makes `directory` the session's own, calls
/// `done` with `name` when that went well, and brings the host's main window to the front in any
/// case. Both callbacks get `cookie`. Nothing happens while an exchange is under way, and when one
/// of the texts has more than 259 characters; the console says so.
void GotoDirectory(Session* session, const char* name, const char* directory, u16 cookie,
                   GotoBeginsCallback begins, GotoDoneCallback done);

}  // namespace quennet
