// The keys of a dialog.

#include "user/characters.h"
#include "user/controls.h"
#include "user/dialog.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr LRESULT pushButtonCodes = DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON;

bool HasStyle(HWND control, DWORD wanted) {
    return (StyleOf(control) & (wanted | WS_DISABLED)) == wanted;
}

bool IsTabStop(HWND control) {
    return HasStyle(control, WS_TABSTOP | WS_VISIBLE);
}

/// What the control wants of the keyboard; with a message, whether it wants that one.
LRESULT DialogCode(HWND control, MSG* message = nullptr) {
    return SendMessageA(control, WM_GETDLGCODE, message ? message->wParam : 0,
                        reinterpret_cast<LPARAM>(message));
}

bool TakesArrows(HWND control) {
    return HasStyle(control, WS_VISIBLE) && (DialogCode(control) & DLGC_STATIC) == 0;
}

void Command(HWND dialog, INT id) {
    SendMessageA(dialog, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(dialog, id)));
}

/// Another window with controls may stand for a dialog.
bool IsDialog(HWND window) {
    return StateOf<DialogState>(window) != nullptr;
}

void MoveFocus(HWND dialog, bool previous) {
    if (IsDialog(dialog)) {
        SendMessageA(dialog, WM_NEXTDLGCTL, previous, FALSE);
    } else {
        FocusControl(GetNextDlgTabItem(dialog, GetFocus(), previous));
    }
}

/// Enter presses the push button that has the focus, else the default one, else it is IDOK. False
/// where there is no dialog to have one: the key is the control's.
bool PressEnter(HWND dialog, HWND focus) {
    if ((DialogCode(focus) & pushButtonCodes) != 0) {
        Command(dialog, GetDlgCtrlID(focus));
        return true;
    }
    if (!IsDialog(dialog)) {
        return false;
    }
    const LRESULT answer = SendMessageA(dialog, DM_GETDEFID, 0, 0);
    const INT id = HIWORD(answer) == DC_HASDEFID ? LOWORD(answer) : IDOK;
    const HWND button = GetDlgItem(dialog, id);
    if (!button || IsWindowEnabled(button)) {
        Command(dialog, id);
    }
    return true;
}

/// False for a key that goes to the control.
bool HandleDialogKey(HWND dialog, MSG& message) {
    const LRESULT code = DialogCode(message.hwnd, &message);
    if ((code & DLGC_WANTALLKEYS) != 0) {
        return false;
    }
    switch (message.wParam) {
        case VK_TAB:
            if ((code & DLGC_WANTTAB) != 0) {
                return false;
            }
            MoveFocus(dialog, GetKeyState(VK_SHIFT) < 0);
            return true;
        case VK_RETURN:
            return PressEnter(dialog, message.hwnd);
        case VK_ESCAPE:
            Command(dialog, IDCANCEL);
            return true;
        case VK_LEFT:
        case VK_UP:
        case VK_RIGHT:
        case VK_DOWN:
            if ((code & DLGC_WANTARROWS) != 0) {
                return false;
            }
            FocusControl(GetNextDlgGroupItem(dialog, message.hwnd,
                                             message.wParam == VK_LEFT || message.wParam == VK_UP));
            return true;
        default:
            return false;
    }
}

std::vector<HWND> ChildrenOf(HWND dialog) {
    DesktopLock desktop;
    const Window* window = desktop->Find(dialog);
    return window ? window->children : std::vector<HWND>();
}

/// The child of the dialog that the window is or lies in.
HWND ChildAround(HWND dialog, HWND window) {
    while (window && GetParent(window) != dialog) {
        window = IsChild(dialog, window) ? GetParent(window) : nullptr;
    }
    return window;
}

/// The children, beginning behind one of them and going round to it.
std::vector<HWND> ChildrenBehind(HWND dialog, HWND control) {
    std::vector<HWND> controls = ChildrenOf(dialog);
    const auto place = std::ranges::find(controls, ChildAround(dialog, control));
    if (place != controls.end()) {
        std::rotate(controls.begin(), place + 1, controls.end());
    }
    return controls;
}

/// Has the control's text that letter marked? Only labels and buttons have marks.
bool HasMnemonic(HWND control, unsigned char letter) {
    const LRESULT code = DialogCode(control);
    const bool isLabel = (code & DLGC_STATIC) != 0;
    if (!HasStyle(control, WS_VISIBLE) || (code & (DLGC_STATIC | DLGC_BUTTON)) == 0 ||
        (isLabel && (StyleOf(control) & SS_NOPREFIX) != 0)) {
        return false;
    }
    return MnemonicOf(TextOf(control)) == letter;
}

/// A label's letter leads to the control behind it, a button's clicks it. False without one.
bool HandleMnemonic(HWND dialog, const MSG& message) {
    const auto letter = static_cast<unsigned char>(
        reinterpret_cast<ULONG_PTR>(CharUpperA(reinterpret_cast<LPSTR>(message.wParam & 0xFF))));
    const std::vector<HWND> controls = ChildrenBehind(dialog, message.hwnd);
    const auto found = std::ranges::find_if(
        controls, [&](HWND control) { return letter > ' ' && HasMnemonic(control, letter); });
    if (found == controls.end()) {
        return false;
    }
    if ((DialogCode(*found) & DLGC_STATIC) != 0) {
        FocusControl(GetNextDlgTabItem(dialog, *found, FALSE));
    } else {
        FocusControl(*found);
        SendMessageA(*found, BM_CLICK, 0, 0);
    }
    return true;
}

bool HandleDialogMessage(HWND dialog, MSG& message) {
    switch (message.message) {
        case WM_KEYDOWN:
            return HandleDialogKey(dialog, message);
        case WM_CHAR:
            return (DialogCode(message.hwnd) & DLGC_WANTCHARS) == 0 &&
                   HandleMnemonic(dialog, message);
        case WM_SYSCHAR:
            return HandleMnemonic(dialog, message);
        default:
            return false;
    }
}

}  // namespace

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

BOOL WINAPI IsDialogMessageA(HWND dialog, MSG* message) {
    if (!message->hwnd || (message->hwnd != dialog && !IsChild(dialog, message->hwnd))) {
        return FALSE;
    }
    if (!HandleDialogMessage(dialog, *message)) {
        TranslateMessage(message);
        DispatchMessageA(message);
    }
    return TRUE;
}

HWND WINAPI GetNextDlgTabItem(HWND dialog, HWND control, BOOL previous) {
    std::vector<HWND> controls = ChildrenOf(dialog);
    if (previous) {
        std::ranges::reverse(controls);
    }
    // Round from behind `control` back to it; without one from the start.
    const auto place = std::ranges::find(controls, ChildAround(dialog, control));
    if (place != controls.end()) {
        std::rotate(controls.begin(), place + 1, controls.end());
    }
    const auto next = std::ranges::find_if(controls, IsTabStop);
    return next == controls.end() ? control : *next;
}

HWND WINAPI GetNextDlgGroupItem(HWND dialog, HWND control, BOOL previous) {
    std::vector<HWND> controls = ChildrenOf(dialog);
    const auto place = std::ranges::find(controls, ChildAround(dialog, control));
    if (place == controls.end()) {
        return control;
    }
    const auto beginsGroup = [](HWND one) { return (StyleOf(one) & WS_GROUP) != 0; };
    auto first = place;
    while (first != controls.begin() && !beginsGroup(*first)) {
        --first;
    }
    const auto last = std::find_if(place + 1, controls.end(), beginsGroup);
    std::vector<HWND> group(place + 1, last);
    group.insert(group.end(), first, place);
    if (previous) {
        std::ranges::reverse(group);
    }
    const auto next = std::ranges::find_if(group, TakesArrows);
    return next == group.end() ? control : *next;
}
}
