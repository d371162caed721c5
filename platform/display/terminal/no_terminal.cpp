// Stands in where the program is built without ncurses: there is no terminal to show windows in.

#include "quennet_terminal.h"

namespace quennet {

bool UseTerminalDisplay() {
    return false;
}

void UseHeadlessDisplay() {}

void LeaveTerminal() {}

bool IsTerminalGone() {
    return false;
}

void RaiseInTerminal(HWND) {}

}  // namespace quennet
