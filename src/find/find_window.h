#pragma once
// FTP Find's window: message 45.

#include "find/find_record.h"

namespace quennet {

/// Message 45: opens the Find window of a connection, or brings the one that it has to the front.
/// `path` is where each run starts; `filter` is the host's filter record. The window lives on the
/// calling thread, which must serve messages.
void OpenFindWindow(HINSTANCE instance, FtpHandle* handle, const char* path, void* filter,
                    FindGoToCallback goTo, FindNotifyCallback notify);

/// Asks the run of the session's Find window to end, if there is one; the connection is on its way
/// out. To be called again and again; `waited` are the milliseconds since the first call: what
/// the run still does on the connection then is broken off.
void PressFindRun(Session* session, u32 waited);

/// Closes the session's Find window and waits until it is gone. From any thread.
void CloseFindWindow(Session* session);

}  // namespace quennet
