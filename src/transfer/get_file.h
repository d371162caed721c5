#pragma once
// Downloads on behalf of the host, and the abort of what runs.

#include "control/session.h"

namespace quennet {

/// Message 39: downloads `item.source` to `item.destination`, after `confirm` when the local file
/// exists. A partial local file of more than 1,024 bytes is resumed; an aborted transfer, and one
/// whose partial file turned out to be another file, runs once more from byte 0.
///
/// Returns 0 when done or left out, 1 when failed with `errorText` set, -1 without a session.
i32 GetFile(TransferItem* item, FtpHandle* handle, ConfirmCallback confirm);

/// Message 41: ends the wait or the data loop in progress at its next look. Sends nothing.
void AbortCommand(FtpHandle* handle);

}  // namespace quennet
