#pragma once
// A Find window takes another size, or shows and hides a bar.

#include "find/find_record.h"

namespace quennet {

/// Places bars and controls anew. The arguments are those of WM_SIZE; a size of 0 stands for the
/// client area.
void ResizeFindWindow(FindWindow* find, UINT message, WPARAM wParam, LPARAM lParam);

/// Hides a bar that is shown and shows one that is hidden, if there is one, and the controls make
/// room. `hiddenBit` of the options notes which.
void ToggleFindBar(FindWindow* find, HWND bar, u32 hiddenBit);

}  // namespace quennet
