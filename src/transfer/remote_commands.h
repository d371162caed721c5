#pragma once
// Files and directories of the server: delete, remove, make, rename.
//
// None of them touches the connection while another exchange is under way: that counts as a failure
// without an answer.

#include "control/session.h"

namespace quennet {

/// Message 31: deletes a file of the server. Returns 0 when done, else the class of the failed
/// command; -1 without a session or without an answer.
i32 RemoteDelete(const char* name, FtpHandle* handle);

/// Message 32: removes a directory; what the server refuses for good is deleted like a file, as
/// links to directories are. Results as in RemoteDelete.
i32 RemoteRemoveDir(const char* name, FtpHandle* handle);

/// Message 33: makes a directory. When the server has no place for it (550, 553), its parent is
/// made first, and so on upwards. The path is put into the host's form in its place; one of more
/// than 259 characters is refused, with a line on the console.
///
/// Returns 0 when done, 2 when failed, -1 without a session.
i32 RemoteMakeDir(char* path, FtpHandle* handle);

/// Message 37: renames. Results as in RemoteDelete; the class of RNFR when that failed.
i32 RemoteRename(const char* oldName, const char* newName, FtpHandle* handle);

}  // namespace quennet
