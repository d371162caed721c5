#pragma once
// Shows the windows of the layer in the terminal. Link the library quennet_terminal for it.

#include "quennet_canvas.h"

namespace quennet {

/// From now on windows show in the terminal of standard input and output. To be called while no
/// window is visible. False, and nothing has changed, when these are no terminal, when the terminal
/// is of no known kind, or when this program was built without a display. The terminal is taken
/// when the first window is shown and given back, as it was, when none is left; in between nothing
/// else may write to it or read from it. It is also given back when the program ends, in whatever
/// way but SIGKILL and _exit.
///
/// A top window that is no popup fills the terminal, in the size that WM_GETMINMAXINFO allows;
/// where the terminal is smaller it shows the part with the focus. Ctrl-C asks the window in front
/// to close (WM_CLOSE), Alt-F4 does so through its WM_SYSCOMMAND. A click takes Shift and Ctrl
/// along where the terminal does not keep them for itself.
///
/// SIGINT, SIGQUIT, SIGTERM, SIGHUP and the signals of a crash get handlers where they had none;
/// SIGHUP does not end the program while the terminal is taken: all windows are closed instead, as
/// after the end of the input, and new ones as soon as they show. NO_COLOR is kept. The locale's
/// character set is used, UTF-8 when nobody has chosen one.
bool UseTerminalDisplay();

/// Gives the terminal back and shows nothing any more. To be called while no window is visible, or
/// at the program's end.
void UseHeadlessDisplay();

/// Gives the terminal back for good and closes all windows, as after its end. Any thread.
void LeaveTerminal();

/// The terminal has hung up or come to its end, or was left.
bool IsTerminalGone();

/// Puts a top window in front of the others. Any thread.
void RaiseInTerminal(HWND window);

}  // namespace quennet
