#pragma once
// Permissions: the bits of the attribute word, the octal number of the server, and the boxes of the
// dialog.

#include "host/records.h"

namespace quennet {

struct PermissionRow {
    char letter;
    u16 attribute;  // bit of the attribute word
    u16 octal;      // bit of the number that goes to the server
    u16 control;    // check box of the dialog, 0 for none
};

/// The three forms of each permission. Rows without a control are no permissions.
constexpr PermissionRow PermissionTable[] = {
    {'d', 0x0010, 0000, 0},      // directory
    {'l', 0x2000, 0000, 0},      // link
    {'r', 0x0001, 0400, 14361},  // owner
    {'w', 0x0002, 0200, 14362},  //
    {'x', 0x0004, 0100, 14363},  //
    {'r', 0x0020, 0040, 14364},  // group
    {'w', 0x0040, 0020, 14365},  //
    {'x', 0x0080, 0010, 14366},  //
    {'r', 0x0100, 0004, 14367},  // others
    {'w', 0x0200, 0002, 14368},  //
    {'x', 0x0400, 0001, 14369},  //
};

/// Bytes that FormatPermissions fills.
constexpr u32 permissionTextSize = 5;

/// Message 42: an 'L' for a link, else a blank, and the permissions as three octal digits.
void FormatPermissions(char* buffer, u16 attributes);

/// Message 34: changes the permissions of the entry `record->currentName`, whose attribute word is
/// given, by SITE chmod: `setMask` gives bits, `clearMask` takes bits. Tells `progressWindow` first
/// (WM_USER + 1 with the name).
///
/// Returns 0 when changed, which `doneCount` counts; -1 when the word would stay as it is, and
/// without a session. Else `status` is 2, and the result is the class of the reply, -1 without one.
i32 ApplyPermissions(TransferRecord* record, u16 attributes);

}  // namespace quennet
