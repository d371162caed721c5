// The controls of a dialog by their ids.

#include "user/desktop.h"

#include <algorithm>

using namespace quennet::user;

extern "C" {

HWND WINAPI GetDlgItem(HWND dialog, INT id) {
    DesktopLock desktop;
    const Window* window = desktop->Find(dialog);
    if (!window) {
        return nullptr;
    }
    const auto found = std::ranges::find_if(window->children, [&](HWND child) {
        const Window* control = desktop->Find(child);
        return control && control->id == id;
    });
    return found == window->children.end() ? nullptr : *found;
}

UINT WINAPI GetDlgItemTextA(HWND dialog, INT id, LPSTR buffer, INT size) {
    return static_cast<UINT>(GetWindowTextA(GetDlgItem(dialog, id), buffer, size));
}

BOOL WINAPI SetDlgItemTextA(HWND dialog, INT id, LPCSTR text) {
    return SetWindowTextA(GetDlgItem(dialog, id), text);
}

LRESULT WINAPI SendDlgItemMessageA(HWND dialog, INT id, UINT message, WPARAM wParam,
                                   LPARAM lParam) {
    return SendMessageA(GetDlgItem(dialog, id), message, wParam, lParam);
}

BOOL WINAPI CheckDlgButton(HWND dialog, INT id, UINT check) {
    const HWND button = GetDlgItem(dialog, id);
    SendMessageA(button, BM_SETCHECK, check, 0);
    return button != nullptr;
}

UINT WINAPI IsDlgButtonChecked(HWND dialog, INT id) {
    return static_cast<UINT>(SendDlgItemMessageA(dialog, id, BM_GETCHECK, 0, 0));
}
}
