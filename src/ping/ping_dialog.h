#pragma once
// Dialog 14310: a host is named, and pinged until that is stopped.

#include "host/types.h"

namespace quennet {

constexpr WORD pingDialogTemplate = 14310;

// Controls that the worker knows as well.
constexpr int pingStartButton = 99;
constexpr int pingStopButton = 7;
constexpr int pingConsole = 14301;  // a list box

/// Parameter: a PingState. 0 for every message.
INT_PTR CALLBACK PingDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);

/// Message 3: shows the dialog and returns when it is closed; a worker may then have up to two
/// seconds to go, or as long as a name is looked up. `stateWord` holds the address of a PingState,
/// which is allocated when it is 0 and stays the host's.
void OpenPingDialog(HWND owner, HINSTANCE instance, HostWord* stateWord);

}  // namespace quennet
