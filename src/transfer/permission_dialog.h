#pragma once
// The dialog in which the user says what is to change about permissions.

#include "host/records.h"

namespace quennet {

/// For several entries or a directory: boxes of three states, of which the grey one leaves a bit of
/// each entry as it is. For one file: boxes of two states beside the octal number.
constexpr int permissionsOfManyTemplate = 14360;
constexpr int permissionsOfOneTemplate = 14373;

/// Message 43: shows the dialog that fits `record->setMask`, the number of entries, and
/// `record->clearMask`, the attribute word of the entry when there is one. OK replaces both by the
/// masks for ApplyPermissions, and two bits of `flags` by the host's boxes.
///
/// Returns 1 for OK and 0 for Cancel. Opening makes `status` 0, and for many entries puts what
/// stood there, or in `clearMask` when `setMask` is 0, into `setMask`; that stays after Cancel.
i32 ShowPermissionDialog(HWND owner, HINSTANCE instance, TransferRecord* record);

/// The procedure of both; its parameter is the TransferRecord.
INT_PTR CALLBACK PermissionDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace quennet
