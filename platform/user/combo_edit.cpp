// The edit control in the line of a drop-down list. It has the focus for both: keys of the list go
// from it to the combo box, and what it draws above its neighbours is the open list.

#include "quennet_canvas.h"
#include "user/combo_box.h"
#include "user/display_calls.h"

namespace quennet::user {

namespace {

constexpr INT_PTR editId = 1001;

bool IsKeyOfList(WPARAM key, bool open) {
    switch (key) {
        case VK_UP:
        case VK_DOWN:
        case VK_PRIOR:
        case VK_NEXT:
        case VK_F4:
            return true;
        case VK_RETURN:
        case VK_ESCAPE:
            return open;
        default:
            return false;
    }
}

bool IsOpen(HWND combo) {
    return SendMessageA(combo, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

LRESULT CALLBACK ComboEditProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const HWND combo = GetParent(window);
    switch (message) {
        case WM_GETDLGCODE: {
            const bool endsList = (wParam == VK_RETURN || wParam == VK_ESCAPE) && IsOpen(combo);
            return EditProcedure(window, message, wParam, lParam) |
                   (endsList ? DLGC_WANTMESSAGE : 0);
        }
        case WM_KEYDOWN:
        case WM_SYSKEYDOWN:
            if (IsKeyOfList(wParam, IsOpen(combo))) {
                return SendMessageA(combo, message, wParam, lParam);
            }
            break;
        case WM_MOUSEWHEEL:
            return SendMessageA(combo, message, wParam, lParam);
        case QUENNET_DRAW:
            if (wParam != 0) {
                return SendMessageA(combo, message, wParam, lParam);
            }
            break;
        default:
            break;
    }
    return EditProcedure(window, message, wParam, lParam);
}

/// What the edit control tells, told on. A text that was typed selects the entry that has it.
void TellEdited(HWND window, ComboBoxState& combo, WORD code) {
    if (combo.quiet) {
        return;
    }
    switch (code) {
        case EN_UPDATE:
            combo.entries.selected = combo.entries.FindExact(-1, TextOf(combo.edit).c_str());
            return NotifyParent(window, CBN_EDITUPDATE);
        case EN_CHANGE:
            return NotifyParent(window, CBN_EDITCHANGE);
        case EN_SETFOCUS:
            return NotifyParent(window, CBN_SETFOCUS);
        case EN_KILLFOCUS:
            SendMessageA(window, CB_SHOWDROPDOWN, FALSE, 0);
            return NotifyParent(window, CBN_KILLFOCUS);
        default:
            return;
    }
}

}  // namespace

bool MakeEdit(HWND window, ComboBoxState& combo, LPCSTR text) {
    if ((StyleOf(window) & CBS_DROPDOWNLIST) != CBS_DROPDOWN) {
        return true;
    }
    combo.quiet = true;
    combo.edit =
        CreateWindowExA(0, "Edit", text, WS_CHILD | WS_VISIBLE | ES_AUTOHSCROLL, 0, 0, 0,
                        comboLineHeight, window, reinterpret_cast<HMENU>(editId), nullptr, nullptr);
    combo.quiet = false;
    SetWindowLongPtrA(combo.edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(ComboEditProcedure));
    return combo.edit != nullptr;
}

void SetEditText(ComboBoxState& combo, const std::string& text, bool select) {
    if (!combo.edit) {
        return;
    }
    combo.quiet = true;
    SetWindowTextA(combo.edit, text.c_str());
    combo.quiet = false;
    if (select) {
        SendMessageA(combo.edit, EM_SETSEL, 0, -1);
    }
}

void ShowSelection(ComboBoxState& combo) {
    const Entry* entry = combo.entries.At(static_cast<WPARAM>(combo.entries.selected));
    SetEditText(combo, entry ? entry->text : "", entry != nullptr);
}

bool HandleEdit(HWND window, ComboBoxState& combo, UINT message, WPARAM wParam, LPARAM lParam,
                LRESULT* result) {
    if (!combo.edit) {
        return false;
    }
    switch (message) {
        case WM_SETTEXT:
            combo.quiet = true;
            *result = SendMessageA(combo.edit, message, wParam, lParam);
            combo.quiet = false;
            return true;
        case WM_GETTEXT:
        case WM_GETTEXTLENGTH:
        case WM_CHAR:
        case EM_SETSEL:
            *result = SendMessageA(combo.edit, message, wParam, lParam);
            return true;
        case CB_LIMITTEXT:
            *result = SendMessageA(combo.edit, EM_LIMITTEXT, wParam, 0);
            return true;
        case CB_GETEDITSEL:
            *result = SendMessageA(combo.edit, EM_GETSEL, wParam, lParam);
            return true;
        case CB_SETEDITSEL:
            *result = SendMessageA(combo.edit, EM_SETSEL,
                                   static_cast<WPARAM>(static_cast<SHORT>(LOWORD(lParam))),
                                   static_cast<SHORT>(HIWORD(lParam)));
            return true;
        case WM_COMMAND:
            TellEdited(window, combo, HIWORD(wParam));
            return true;
        case WM_SETFOCUS:
            SetFocus(combo.edit);
            return true;
        case WM_KILLFOCUS:
            return true;
        case WM_ENABLE:
            EnableWindow(combo.edit, wParam != 0);
            return true;
        default:
            return false;
    }
}

}  // namespace quennet::user
