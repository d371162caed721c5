// Keys of the windows that the module has registered.

#include "hostkit/window_keys.h"

namespace hostkit {

namespace {

// Commands of the find window.
constexpr WPARAM startCommand = 0x12D;
constexpr WPARAM stopCommand = 0x20E;

/// The combo box that the focus is in, null for none.
HWND FocusedComboBox(HWND window) {
    for (HWND control = GetFocus(); control != nullptr && control != window;
         control = GetParent(control)) {
        char name[16] = "";
        GetClassNameA(control, name, sizeof(name));
        if (lstrcmpiA(name, "ComboBox") == 0) {
            return control;
        }
    }
    return nullptr;
}

/// The command that a key stands for; 0 for none. An open list keeps Enter and Esc.
WPARAM CommandOfKey(HWND window, WPARAM key) {
    const HWND box = FocusedComboBox(window);
    if (box != nullptr && SendMessageA(box, CB_GETDROPPEDSTATE, 0, 0) != 0) {
        return 0;
    }
    if (key == VK_RETURN && box != nullptr) {
        return startCommand;
    }
    return key == VK_ESCAPE ? stopCommand : 0;
}

}  // namespace

bool TakeWindowKey(HWND window, MSG& message) {
    if (message.hwnd != window && !IsChild(window, message.hwnd)) {
        return false;
    }
    if (message.message == WM_KEYDOWN) {
        if (const WPARAM command = CommandOfKey(window, message.wParam)) {
            SendMessageA(window, WM_COMMAND, command, 0);
            return true;
        }
    }
    return IsDialogMessageA(window, &message) != FALSE;
}

}  // namespace hostkit
