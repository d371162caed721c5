#pragma once
// A top window as cells: its frame, itself, its controls. Everything here runs on the window's
// thread.

#include "dialog_fit.h"
#include "quennet_canvas.h"

namespace quennet::terminal {

struct Picture {
    Surface surface;
    Area focusWithLabel;  // the control with the focus and the label in front of it
};

/// Gives a window that is no popup the size of the screen, and a dialog no more rows than the
/// screen has, if it can do with them.
void FitToScreen(HWND top, DialogFit& fit, int columns, int rows);

Picture DrawWindow(HWND top);

/// Where a click on a cell of the picture goes.
struct Target {
    HWND window;   // null: to the frame, or to a disabled control
    LPARAM point;  // in the window, as a mouse message has it; of the menu bar, on the screen
    bool onMenuBar = false;
};
Target TargetAt(HWND top, int x, int y);

}  // namespace quennet::terminal
