#pragma once
// Command lines that the user types.

#include "control/session.h"

namespace quennet {

/// Message 47: starts a worker that sends `text` as one finished line. A reply of class 2 makes all
/// cached listings stale and has the host refresh the panel of `cookie`; any other stands on the
/// console alone. Nothing happens while an exchange is under way; a text of more than 1,023
/// characters is not sent. The console says so. `word` is the host's and not used.
void RawCommand(HostWord word, FtpHandle* handle, const char* text, u16 cookie);

}  // namespace quennet
