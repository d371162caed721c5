// Keys of the windows that the module has registered.

#include "hostkit/window_keys.h"

#include "hostkit/terminal_questions.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

// Commands of the find window.
constexpr WPARAM startCommand = 0x12D;
constexpr WPARAM stopCommand = 0x20E;
constexpr WPARAM closeCommand = 0x78;

constexpr u32 keysText = 6011;

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

/// A window without a menu can stop nothing.
bool CanStop(HWND window) {
    const UINT state = GetMenuState(GetMenu(window), stopCommand, MF_BYCOMMAND);
    return state != static_cast<UINT>(-1) && (state & (MF_GRAYED | MF_DISABLED)) == 0;
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
    if (key == VK_ESCAPE) {
        return CanStop(window) ? stopCommand : closeCommand;
    }
    return 0;
}

}  // namespace

bool TakeWindowKey(HWND window, MSG& message) {
    if (message.hwnd != window && !IsChild(window, message.hwnd)) {
        return false;
    }
    if (message.message == WM_KEYDOWN && message.wParam == VK_F1) {
        ShowMessageDialog(TextOfId(keysText));
        return true;
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
