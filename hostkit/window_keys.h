#pragma once
// Keys of the windows that the module has registered.

#include <windows.h>

namespace hostkit {

/// Handles a message of a registered window or one of its controls, dispatching included; false
/// when it is none. Tab and marked letters lead through the controls as in a dialog; Enter in the
/// mask starts a search, Esc stops it, or closes the window where none runs; F1 tells the keys.
bool TakeWindowKey(HWND window, MSG& message);

}  // namespace hostkit
