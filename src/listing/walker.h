#pragma once
// A directory's listing: how its text is fetched, and how its lines become entries for the host.

#include "control/session.h"

namespace quennet {

/// Receives the listing of the server's current directory into `buffer`, which is empty before, by
/// "LIST", or "LIST -la" for a `longOption` other than 0. Returns the result of ReceiveFile: 2 is
/// success; the text in `buffer` then ends in a NUL of its own. Format: RFC 959, section 4.1.3.
int FetchListing(Session* session, GrowBuffer* buffer, u32 longOption);

/// Hands the host an entry for each line of a listing that tells of one, and drops all others.
///
/// `path` names the directory, null the current one: all but a root (which ends in a slash) and the
/// empty path begin with an entry for the parent, "..". `text` is NUL-terminated; a null text has
/// the parent's entry alone, at any path. The session's server family decides how lines are read.
/// An MVS listing moves it on: to the family that its header names, to 0 without a header, to Unix
/// at the first line that looks like one. Runs inside the list lock, and so does `callback`.
void ParseListing(const char* path, Session* session, const char* text, ListEntryCallback callback,
                  HostWord context);

}  // namespace quennet
