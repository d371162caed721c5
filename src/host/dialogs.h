#pragma once
// What the dialogs of the module have in common.

#include "host/types.h"

namespace quennet {

constexpr int okButton = 99;

/// Puts a help button into the caption.
inline void AddHelpButton(HWND dialog) {
    SetWindowLongPtrA(dialog, GWL_EXSTYLE,
                      GetWindowLongPtrA(dialog, GWL_EXSTYLE) | WS_EX_CONTEXTHELP);
}

/// The procedure of a dialog that sets the focus when it opens and that only OK and Cancel end.
template <typename Open, typename Accept, typename Cancel>
INT_PTR RunTwoButtons(UINT message, WPARAM wParam, Open onOpen, Accept onOk, Cancel onCancel) {
    if (message == WM_INITDIALOG) {
        onOpen();
        return FALSE;  // the focus is set
    }
    if (message != WM_COMMAND) {
        return FALSE;
    }
    switch (LOWORD(wParam)) {
        case IDOK:
        case okButton:
            onOk();
            return TRUE;
        case IDCANCEL:
            onCancel();
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace quennet
