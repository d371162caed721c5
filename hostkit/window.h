#pragma once
// The plain windows of the host.

#include <windows.h>

namespace hostkit {

/// Makes an unseen top window of a class of that name, which is registered when it is not yet, on
/// the calling thread. `owner` becomes its GWLP_USERDATA. Throws std::runtime_error.
HWND MakeWindow(const char* className, WNDPROC procedure, void* owner);

}  // namespace hostkit
