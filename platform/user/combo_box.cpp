// The drop-down list: one line that shows the selected entry or is an edit control, and a list
// below it while it is open. Only what a person does is told to the parent.
//
// While the list is open, keys and clicks move a selection that is not decided yet: Enter, F4,
// Alt with an arrow, a click on an entry or the loss of the focus decide it, Esc gives the one
// before back. While it is closed every key decides at once.

#include "user/combo_box.h"

#include "quennet_canvas.h"
#include "user/display_calls.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr LRESULT fewestRows = 8;

/// Rows of the open list, where there is room for them.
LRESULT RowsWanted(const ComboBoxState& combo) {
    return std::clamp<LRESULT>(combo.entries.Count(), 1, std::max(fewestRows, combo.rows));
}

LRESULT RowsInSight(HWND window, const ComboBoxState& combo) {
    const RECT area = ListAreaOf(window, combo);
    return (area.bottom - area.top) / characterHeight;
}

LRESULT Select(HWND window, ComboBoxState& combo, WPARAM index) {
    const LRESULT selected = combo.entries.Select(index);
    if (selected != CB_ERR) {
        combo.entries.BringIntoSight(selected, RowsInSight(window, combo));
    }
    ShowSelection(combo);
    TellChanged(window);
    return selected;
}

LRESULT Changed(HWND window, ComboBoxState& combo, LRESULT result) {
    if (result != CB_ERR) {
        combo.entries.SetTop(combo.entries.top, RowsInSight(window, combo));
        TellChanged(window);
    }
    return result;
}

void Open(HWND window, ComboBoxState& combo) {
    if (combo.open) {
        return;
    }
    NotifyParent(window, CBN_DROPDOWN);
    combo.open = true;
    SetCapture(window);
    combo.selectedBefore = combo.entries.selected;
    combo.textBefore = combo.edit ? TextOf(combo.edit) : "";
    combo.entries.BringIntoSight(std::max<LRESULT>(0, combo.entries.selected),
                                 RowsInSight(window, combo));
    TellChanged(window);
}

/// Tells the end of a choice, in the order of the system: what became of it, the end of the list,
/// the change.
void Close(HWND window, ComboBoxState& combo, bool decided) {
    if (!combo.open) {
        return;
    }
    combo.open = false;
    ReleaseCapture();
    if (!decided) {
        combo.entries.selected = combo.selectedBefore;
        SetEditText(combo, combo.textBefore, true);
    }
    const bool changed = combo.entries.selected != combo.selectedBefore;
    TellChanged(window);
    NotifyParent(window, decided ? CBN_SELENDOK : CBN_SELENDCANCEL);
    NotifyParent(window, CBN_CLOSEUP);
    if (changed) {
        NotifyParent(window, CBN_SELCHANGE);
    }
}

/// A person's choice: decided at once while the list is closed.
void Choose(HWND window, ComboBoxState& combo, LRESULT index) {
    if (!combo.entries.At(static_cast<WPARAM>(index)) || index == combo.entries.selected) {
        return;
    }
    Select(window, combo, static_cast<WPARAM>(index));
    if (!combo.open) {
        NotifyParent(window, CBN_SELENDOK);
        NotifyParent(window, CBN_SELCHANGE);
    }
}

void Toggle(HWND window, ComboBoxState& combo) {
    if (combo.open) {
        Close(window, combo, true);
    } else {
        Open(window, combo);
    }
}

void HandleKey(HWND window, ComboBoxState& combo, WPARAM key) {
    switch (key) {
        case VK_F4:
            return Toggle(window, combo);
        case VK_RETURN:
            return Close(window, combo, true);
        case VK_ESCAPE:
            return Close(window, combo, false);
        default:
            return Choose(window, combo,
                          combo.entries.TargetOfKey(key, RowsInSight(window, combo)));
    }
}

/// A click on the line opens or closes; on an entry it decides; elsewhere it closes.
void Click(HWND window, ComboBoxState& combo, LPARAM point) {
    SetFocus(combo.edit ? combo.edit : window);
    const auto x = static_cast<SHORT>(LOWORD(point));
    const auto y = static_cast<SHORT>(HIWORD(point));
    const RECT area = ListAreaOf(window, combo);
    const bool inList = x >= area.left && x < area.right && y >= area.top && y < area.bottom;
    if (!combo.open || !inList) {
        Toggle(window, combo);
        return;
    }
    const LRESULT index = combo.entries.top + (y - area.top) / characterHeight;
    if (combo.entries.At(static_cast<WPARAM>(index))) {
        Select(window, combo, static_cast<WPARAM>(index));
        Close(window, combo, true);
    }
}

LRESULT SelectedText(ComboBoxState& combo, char* buffer, std::size_t size) {
    const Entry* entry = combo.entries.At(static_cast<WPARAM>(combo.entries.selected));
    return entry ? CopyText(entry->text.data(), entry->text.size(), buffer, size)
                 : CopyText("", 0, buffer, size);
}

void DrawLine(HWND window, ComboBoxState& combo, Canvas& canvas) {
    const bool enabled = IsWindowEnabled(window);
    const Ink ink = !enabled ? Ink::disabled : canvas.Focused() ? Ink::selection : Ink::field;
    const int end = canvas.Width() - 2;
    canvas.Fill({0, 0, canvas.Width(), 1}, U' ', ink);
    canvas.Put(end, 0, U' ', ink);
    canvas.Put(canvas.Width() - 1, 0, U'▼', ink);
    if (combo.edit) {
        return;
    }
    if (const Entry* entry = combo.entries.At(static_cast<WPARAM>(combo.entries.selected))) {
        canvas.Text(0, 0, entry->text, ink, end);
    }
    canvas.Caret(0, 0);
}

void DrawList(HWND window, const ComboBoxState& combo, Canvas& canvas) {
    const RECT area = ListAreaOf(window, combo);
    DrawEntries(combo.entries, canvas,
                {0, area.top / cellHeight, (area.right + cellWidth - 1) / cellWidth,
                 (area.bottom - area.top) / cellHeight},
                Ink::list);
}

void Draw(HWND window, ComboBoxState& combo, bool above, Canvas& canvas) {
    if (!above) {
        DrawLine(window, combo, canvas);
    } else if (combo.open) {
        DrawList(window, combo, canvas);
    }
}

LRESULT HandleContent(HWND window, ComboBoxState& combo, UINT message, WPARAM wParam,
                      LPARAM lParam) {
    Entries& entries = combo.entries;
    const auto text = reinterpret_cast<const char*>(lParam);
    switch (message) {
        case CB_ADDSTRING:
            return Changed(window, combo, entries.Insert(-1, text));
        case CB_INSERTSTRING:
            return Changed(window, combo, entries.Insert(static_cast<INT>(wParam), text));
        case CB_DELETESTRING:
            return Changed(window, combo, entries.Delete(wParam));
        case CB_RESETCONTENT:
            entries.Clear();
            SetEditText(combo, "", false);
            return Changed(window, combo, CB_OKAY);
        case CB_GETLBTEXT:
            return entries.CopyTextOf(wParam, reinterpret_cast<char*>(lParam));
        case CB_GETLBTEXTLEN:
            return entries.TextLength(wParam);
        case CB_GETITEMDATA:
            return entries.Data(wParam);
        case CB_SETITEMDATA:
            return entries.SetData(wParam, lParam);
        case CB_FINDSTRINGEXACT:
            return entries.FindExact(static_cast<INT>(wParam), text);
        case CB_GETCOUNT:
            return entries.Count();
        case CB_GETCURSEL:
            return entries.selected;
        case CB_SETCURSEL:
            return Select(window, combo, wParam);
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

/// Enter and Esc are the list's while it is open.
LRESULT DialogCode(const ComboBoxState& combo, WPARAM key) {
    const bool endsList = combo.open && (key == VK_RETURN || key == VK_ESCAPE);
    return DLGC_WANTARROWS | DLGC_WANTCHARS | (combo.edit ? DLGC_HASSETSEL : 0) |
           (endsList ? DLGC_WANTMESSAGE : 0);
}

/// The height that a window is given is that of line and list together; the window is the line.
void FitLine(HWND window, ComboBoxState& combo) {
    LONG width = 0;
    {
        DesktopLock desktop;
        Window* record = desktop->Find(window);
        if (!record) {
            return;
        }
        RECT& place = record->place;
        if (place.bottom - place.top != comboLineHeight) {
            combo.rows = (place.bottom - place.top - comboLineHeight) / characterHeight;
        }
        place.bottom = place.top + comboLineHeight;
        width = place.right - place.left;
    }
    if (combo.edit) {
        MoveWindow(combo.edit, 0, 0, width - 2 * cellWidth, comboLineHeight, TRUE);
    }
}

LRESULT Handle(HWND window, ComboBoxState& combo, UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    if (HandleEdit(window, combo, message, wParam, lParam, &result)) {
        return result;
    }
    switch (message) {
        case WM_SIZE:
            FitLine(window, combo);
            return 0;
        case CB_LIMITTEXT:
            return TRUE;
        case CB_GETITEMHEIGHT:
            return characterHeight;
        case WM_GETDLGCODE:
            return DialogCode(combo, wParam);
        case QUENNET_DRAW:
            Draw(window, combo, wParam != 0, *reinterpret_cast<Canvas*>(lParam));
            return 0;
        case WM_SETTEXT:
            return CB_ERR;  // the text is the selected entry's
        case WM_GETTEXT:
            return SelectedText(combo, reinterpret_cast<char*>(lParam), wParam);
        case WM_GETTEXTLENGTH:
            return std::max<LRESULT>(
                0, combo.entries.TextLength(static_cast<WPARAM>(combo.entries.selected)));
        case CB_SHOWDROPDOWN:
            if (wParam != 0) {
                Open(window, combo);
            } else {
                Close(window, combo, true);
            }
            return TRUE;
        case CB_GETDROPPEDSTATE:
            return combo.open;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            Click(window, combo, lParam);
            return 0;
        case WM_MOUSEWHEEL:
            combo.entries.SetTop(combo.entries.top - WheelEntries(wParam),
                                 RowsInSight(window, combo));
            TellChanged(window);
            return 0;
        case WM_SYSKEYDOWN:
            if (wParam == VK_UP || wParam == VK_DOWN) {
                Toggle(window, combo);
                return 0;
            }
            return DefWindowProcA(window, message, wParam, lParam);
        case WM_KEYDOWN:
            HandleKey(window, combo, wParam);
            return 0;
        case WM_CHAR:
            Choose(window, combo,
                   combo.entries.FindFirst(combo.entries.selected,
                                           static_cast<unsigned char>(wParam)));
            return 0;
        case WM_SETFOCUS:
            NotifyParent(window, CBN_SETFOCUS);
            return 0;
        case WM_KILLFOCUS:
            Close(window, combo, true);
            NotifyParent(window, CBN_KILLFOCUS);
            return 0;
        default:
            return HandleContent(window, combo, message, wParam, lParam);
    }
}

void Create(HWND window) {
    auto combo = std::make_shared<ComboBoxState>();
    SetState(window, combo);
    FitLine(window, *combo);
}

}  // namespace

RECT ListAreaOf(HWND window, const ComboBoxState& combo) {
    RECT place = {};
    RECT around = {};
    GetWindowRect(window, &place);
    GetWindowRect(GetParent(window), &around);
    const auto rows = static_cast<LONG>(RowsWanted(combo));
    const LONG roomBelow = (around.bottom - place.top) / characterHeight - 1;
    const LONG roomAbove = (place.top - around.top) / characterHeight;
    const bool below = roomBelow >= rows || roomBelow >= roomAbove;
    const LONG shown = std::clamp(rows, LONG{1}, std::max(LONG{1}, below ? roomBelow : roomAbove));
    const LONG top = below ? characterHeight : -shown * characterHeight;
    return RECT{0, top, place.right - place.left, top + shown * characterHeight};
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" LRESULT CALLBACK quennet::user::ComboBoxProcedure(HWND window, UINT message,
                                                             WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        Create(window);
    }
    const auto combo = StateOf<ComboBoxState>(window);
    if (message == WM_CREATE && combo) {
        const auto create = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        const bool made = MakeEdit(window, *combo, create->lpszName);
        FitLine(window, *combo);
        return made ? 0 : -1;
    }
    return combo ? Handle(window, *combo, message, wParam, lParam)
                 : DefWindowProcA(window, message, wParam, lParam);
}
