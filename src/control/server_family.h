#pragma once
// The families of servers, told apart by their welcome and their reply to SYST.

#include "host/types.h"

namespace quennet {

struct Session;

/// Values of `serverType`.
enum class ServerFamily : u32 {
    unknown = 0,
    mvsDatasets = 4,
    mvsMembers = 5,
    os2 = 6,
    exos = 11,
    unixLike = 12,
    multiNet = 13,
    vms = 14,
    windowsNt = 16,
    windowsNtType = 18,
    pc = 19,
};

/// Looks for the one family that names itself in its welcome, unless a family is known already.
void NoteServerBanner(Session* session);

/// Takes the family from the reply to SYST in `replyBuffer`; a text that names none leaves the
/// family as it was.
void ClassifySystem(Session* session);

}  // namespace quennet
