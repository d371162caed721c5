#pragma once
// Two dialogs that ask for a text: 14320 for the mail address that an anonymous login sends as its
// password, and 14350, FTP Auto, on behalf of the host.

#include "host/types.h"

namespace quennet {

constexpr WORD mailAddressDialogTemplate = 14320;
constexpr WORD autoDialogTemplate = 14350;
constexpr u32 mailAddressSize = 81;  // of a buffer for a mail address

/// Parameter: a buffer of `mailAddressSize` bytes, whose text is shown. OK fills it and ends with
/// 1; Cancel empties it and ends with 0.
INT_PTR CALLBACK MailAddressDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

/// Parameter: a buffer of the host's, 260 bytes, whose text is shown. OK fills it and ends with 1;
/// Cancel leaves it as it is and ends with 0.
INT_PTR CALLBACK AutoDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

/// Message 44. The dialog's result.
i32 ShowAutoDialog(HWND owner, HINSTANCE instance, char* buffer);

}  // namespace quennet
