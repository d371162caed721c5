#pragma once
// The server's current directory, and the session's own: `site.directory`, which messages of any
// thread look at. It is written during an exchange and inside the list lock, and read in either.
//
// The server may stand elsewhere for a while: message 30 visits a directory, and the names in the
// commands after it mean what is there. A repair leads back to the session's own directory and from
// there to the one visited.

#include "control/session.h"

namespace quennet {

/// Changes the server's directory; ".." goes up, by CWD where the server refuses CDUP. Returns the
/// class of the last reply, 0 when no code was read. `site.directory` stays as it was.
int ChangeDir(Session* session, const char* path);

/// Goes back to where the server stood, for a new connection: into the session's directory, and on
/// into the one visited. False, with a line on the console, when the server refuses.
bool RestoreDirectory(Session* session);

/// The same where a repair could not, and nobody has gone elsewhere since: before anything is done
/// with a name, which would mean another file there.
bool ReturnToDirectory(Session* session);

/// Asks for the server's directory. Returns the class of the reply, -1 for a null `result`. With
/// class 2 `*result` is the text between the first two double quotes (RFC 959, appendix II),
/// without a separator at its end, or null when the reply has no such text; it stands in
/// `replyBuffer` and is good until the next read.
int GetWorkingDir(Session* session, char** result);

/// The same for a directory that may have a quote in its name: the server writes that one twice,
/// and the text above ends there. This one does not, and has it once.
int GetWholeWorkingDir(Session* session, char** result);

/// Result of a change to a directory that its field can't hold, or that the server does not name.
constexpr int workingDirRefused = 5;

/// Says on the console that a directory does not fit and gives workingDirRefused.
int RefuseDirectory(Session* session);

/// Makes a directory that fits the session's own; the server stands there.
void SetSessionDir(Session* session, const char* directory);

/// Copies the session's directory into a field of `pathSize` bytes.
void CopySessionDir(const Session* session, char* field);

/// Asks for the server's directory and copies it into a field of `pathSize` bytes. Returns 2 when
/// the field holds it; workingDirRefused, with the field as it was and the reason on the console;
/// any other class is that of the reply.
int StoreWorkingDir(Session* session, char* field);

/// Changes the server's directory, which is to be found again after a repair, and asks for its
/// name; the session's own stays as it was. The name goes into a field of `pathSize` bytes, unless
/// that is null. When a repair between the two has led back, both are made once more.
///
/// Returns 2; workingDirRefused, with the field as it was, the reason on the console and that
/// directory left again; any other class is that of the reply.
int VisitDirectory(Session* session, const char* path, char* field);

/// Changes the server's directory and makes it the session's own, whose listing is then no longer
/// the current one. False when the session's directory stays as it was.
bool ChangeSessionDir(Session* session, const char* path);

}  // namespace quennet
