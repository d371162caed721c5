// What a dialog does with messages that its procedure does not handle.

#include "user/controls.h"
#include "user/dialog.h"

namespace quennet::user {

namespace {

DLGPROC ProcedureOf(HWND dialog) {
    return reinterpret_cast<DLGPROC>(GetWindowLongPtrA(dialog, DWLP_DLGPROC));
}

/// As if the Cancel button were pressed; nothing while it is disabled.
void PostCancel(HWND dialog) {
    const HWND cancel = GetDlgItem(dialog, IDCANCEL);
    if (!cancel || IsWindowEnabled(cancel)) {
        PostMessageA(dialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED),
                     reinterpret_cast<LPARAM>(cancel));
    }
}

LRESULT DefaultId(HWND dialog) {
    const auto state = StateOf<DialogState>(dialog);
    DesktopLock desktop;
    return state && state->defaultId != 0 ? MAKELONG(state->defaultId, DC_HASDEFID) : 0;
}

void SetDefaultId(HWND dialog, INT id) {
    const auto state = StateOf<DialogState>(dialog);
    if (!state) {
        return;
    }
    const auto change = [&](INT button, bool isDefault) {
        const HWND control = GetDlgItem(dialog, button);
        const LRESULT code = SendMessageA(control, WM_GETDLGCODE, 0, 0);
        if ((code & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0) {
            const DWORD style = StyleOf(control) & ~DWORD{BS_TYPEMASK};
            const DWORD kind = isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
            SetWindowLongA(control, GWL_STYLE, static_cast<LONG>(style | kind));
        }
    };
    INT before = id;
    {
        DesktopLock desktop;
        before = std::exchange(state->defaultId, id);
    }
    change(before, false);
    change(id, true);
}

LRESULT HandleByDefault(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CLOSE:
            PostCancel(dialog);
            return 0;
        case WM_SETFOCUS:
            FocusControl(GetNextDlgTabItem(dialog, nullptr, FALSE));
            return 0;
        case WM_NEXTDLGCTL:
            FocusControl(LOWORD(lParam) != 0 ? reinterpret_cast<HWND>(wParam)
                                             : GetNextDlgTabItem(dialog, GetFocus(), wParam != 0));
            return 0;
        case DM_GETDEFID:
            return DefaultId(dialog);
        case DM_SETDEFID:
            SetDefaultId(dialog, static_cast<INT>(wParam));
            return TRUE;
        default:
            return DefWindowProcA(dialog, message, wParam, lParam);
    }
}

}  // namespace

void FocusControl(HWND control) {
    if (!control) {
        return;
    }
    SetFocus(control);
    if ((SendMessageA(control, WM_GETDLGCODE, 0, 0) & DLGC_HASSETSEL) != 0) {
        SendMessageA(control, EM_SETSEL, 0, -1);
    }
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" LRESULT WINAPI DefDlgProcA(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    const DLGPROC procedure = ProcedureOf(dialog);
    if (!procedure) {
        return HandleByDefault(dialog, message, wParam, lParam);
    }
    SetWindowLongPtrA(dialog, DWLP_MSGRESULT, 0);
    const INT_PTR handled = procedure(dialog, message, wParam, lParam);
    if (message == WM_INITDIALOG) {
        return handled;
    }
    return handled != 0 ? GetWindowLongPtrA(dialog, DWLP_MSGRESULT)
                        : HandleByDefault(dialog, message, wParam, lParam);
}
