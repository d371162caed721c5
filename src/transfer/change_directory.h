#pragma once
// Changes of directory on behalf of the host.

#include "control/session.h"

namespace quennet {

/// Message 29: starts a worker that changes the server's directory and makes it the session's own.
/// After success it calls `callback` with `cookie` and, after "..", the name of the directory that
/// was left, else the empty text; after a failure it calls nobody. A path of one backslash means
/// the root also where paths hold slashes.
void ChangeDirAsync(const char* path, u16 cookie, FtpHandle* handle,
                    DirectoryChangedCallback callback);

/// Message 30: changes the server's directory at once. `out`, which may be null, takes the new
/// directory (260 bytes); the session's own directory stays as it was. An empty path does nothing.
///
/// Returns 0; the class of the step that failed, 5 also when `out` can't have the directory because
/// it does not fit or has no name; -1 without a session or without an answer.
i32 ChangeDirSync(const char* path, FtpHandle* handle, char* out);

}  // namespace quennet
