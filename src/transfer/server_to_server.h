#pragma once
// Copies of a file from one server to another, which no byte of passes through this machine.

#include "control/session.h"

namespace quennet {

/// Message 38: has the destination's server fetch `item.source` from the source's server, under
/// the last component of `item.destination`. Both servers must stand in the right directory, since
/// both are told the last components alone.
///
/// Returns 0 when both servers confirmed, else -1, with `errorText` set on each side that did not.
/// There is no time limit for the copy itself: the wait for a server's last word ends when that
/// comes, when its connection is lost, or with message 41 on its handle.
i32 CopyBetweenServers(TransferItem* item, FtpHandle* sourceHandle, FtpHandle* destinationHandle);

}  // namespace quennet
