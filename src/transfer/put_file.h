#pragma once
// Uploads on behalf of the host.

#include "control/session.h"

namespace quennet {

/// Message 40: uploads `item.source` into the server's current directory, under the last component
/// of `item.destination`. `list`, which may be null, is what the directory holds: when the name is
/// in it, the item's destination fields are filled from there and `confirm` is asked. Uploads are
/// never resumed.
///
/// Returns 0 when done or left out, 1 when failed with `errorText` set, -1 without a session.
i32 PutFile(TransferItem* item, FtpHandle* handle, ConfirmCallback confirm, const DirEntry* list);

}  // namespace quennet
