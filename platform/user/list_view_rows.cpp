// States of the rows of a list view. The owner is told of a change of one row with LVN_ITEMCHANGED,
// of all rows with the same for row -1, of a range that was selected with LVN_ODSTATECHANGED.

#include "user/display_calls.h"
#include "user/list_view.h"

#include <algorithm>

namespace quennet::user {

namespace {

void TellRow(HWND window, const ListViewState& list, INT row, UINT before, UINT after) {
    NMLISTVIEW notification = {};
    notification.iItem = list.RowAt(row);
    notification.uOldState = before;
    notification.uNewState = after;
    notification.uChanged = LVIF_STATE;
    NotifyWith(window, LVN_ITEMCHANGED, &notification.hdr);
}

void ApplyState(ListViewState& list, INT row, UINT state) {
    list.selected.Set(row, row, (state & LVIS_SELECTED) != 0);
    if ((state & LVIS_FOCUSED) != 0) {
        list.focused = row;
    } else if (list.focused == row) {
        list.focused = -1;
    }
}

/// Sets all bits of a row at once, and tells what has changed.
void ChangeRow(HWND window, ListViewState& list, INT row, UINT state) {
    const UINT before = RowState(list, row, LVIS_FOCUSED | LVIS_SELECTED);
    if (before == state) {
        return;
    }
    ApplyState(list, row, state);
    TellChanged(window);
    TellRow(window, list, row, before, state);
}

/// Takes the focus, and for `deselect` the selection, from the row that has it.
void LeaveFocused(HWND window, ListViewState& list, bool deselect) {
    const INT row = list.focused;
    if (row >= 0) {
        const UINT kept = deselect ? 0 : RowState(list, row, LVIS_SELECTED);
        ChangeRow(window, list, row, kept);
    }
}

bool IsSingle(HWND window) {
    return (StyleOf(window) & LVS_SINGLESEL) != 0;
}

/// The only selected row, -1 for none or several.
INT OnlySelected(const ListViewState& list) {
    return list.selected.Count() == 1 ? list.selected.Next(0) : -1;
}

/// Deselects all rows but one.
void DeselectOthers(HWND window, ListViewState& list, INT row) {
    const bool isSelected = list.selected.Contains(row);
    if (list.selected.Count() == (isSelected ? 1 : 0)) {
        return;
    }
    if (const INT only = OnlySelected(list); only >= 0) {
        ChangeRow(window, list, only, only == list.focused && row < 0 ? LVIS_FOCUSED : 0);
        return;
    }
    list.selected.Clear();
    if (isSelected) {
        list.selected.Set(row, row, true);
    }
    TellChanged(window);
    TellRow(window, list, -1, LVIS_SELECTED, 0);
}

void SelectRange(HWND window, ListViewState& list, INT first, INT last) {
    if (list.selected.CountIn(first, last) == last - first + 1) {
        return;
    }
    list.selected.Set(first, last, true);
    TellChanged(window);
    if (!list.rowAt.empty()) {
        TellRow(window, list, -1, 0, LVIS_SELECTED);  // they are no range of the owner's
        return;
    }
    NMLVODSTATECHANGE notification = {};
    notification.iFrom = first;
    notification.iTo = last;
    notification.uNewState = LVIS_SELECTED;
    NotifyWith(window, LVN_ODSTATECHANGED, &notification.hdr);
}

bool SetStateOfAll(HWND window, ListViewState& list, UINT state, UINT mask) {
    if ((mask & LVIS_FOCUSED) != 0) {
        if ((state & LVIS_FOCUSED) != 0) {
            return false;
        }
        LeaveFocused(window, list, false);
    }
    if ((mask & LVIS_SELECTED) == 0) {
        return true;
    }
    const bool select = (state & LVIS_SELECTED) != 0;
    if (select && IsSingle(window)) {
        return false;
    }
    if (list.selected.Count() == (select ? list.count : 0)) {
        return true;
    }
    list.selected.Clear();
    if (select) {
        list.selected.Set(0, list.count - 1, true);
    }
    TellChanged(window);
    TellRow(window, list, -1, select ? 0 : LVIS_SELECTED, select ? LVIS_SELECTED : 0);
    return true;
}

}  // namespace

LRESULT NotifyWith(HWND window, UINT code, NMHDR* header) {
    header->hwndFrom = window;
    header->idFrom = static_cast<UINT_PTR>(GetDlgCtrlID(window));
    header->code = code;
    return SendMessageA(GetParent(window), WM_NOTIFY, header->idFrom,
                        reinterpret_cast<LPARAM>(header));
}

UINT RowState(const ListViewState& list, INT row, UINT mask) {
    const UINT state = (row == list.focused ? LVIS_FOCUSED : 0U) |
                       (list.selected.Contains(row) ? LVIS_SELECTED : 0U);
    return list.Has(row) ? state & mask : 0;
}

bool SetRowState(HWND window, ListViewState& list, INT row, UINT state, UINT mask) {
    mask &= LVIS_FOCUSED | LVIS_SELECTED;
    state &= mask;
    if (row == -1) {
        return SetStateOfAll(window, list, state, mask);
    }
    if (!list.Has(row)) {
        return false;
    }
    if ((state & LVIS_FOCUSED) != 0 && row != list.focused) {
        LeaveFocused(window, list, false);
    }
    if ((state & LVIS_SELECTED) != 0 && IsSingle(window)) {
        DeselectOthers(window, list, row);
    }
    // The owner may have changed the list.
    if (list.Has(row)) {
        const UINT before = RowState(list, row, LVIS_FOCUSED | LVIS_SELECTED);
        ChangeRow(window, list, row, (before & ~mask) | state);
    }
    return true;
}

void FocusRow(HWND window, ListViewState& list, INT row) {
    SetRowState(window, list, row, LVIS_FOCUSED, LVIS_FOCUSED);
    BringIntoSight(window, list, row);
}

void SelectOnly(HWND window, ListViewState& list, INT row) {
    list.mark = row;
    DeselectOthers(window, list, row);
    SetRowState(window, list, row, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
    BringIntoSight(window, list, row);
}

void SelectUpTo(HWND window, ListViewState& list, INT row) {
    if (IsSingle(window)) {
        SelectOnly(window, list, row);
        return;
    }
    if (!list.Has(list.mark)) {
        list.mark = std::max(0, list.focused);
    }
    const INT first = std::min(list.mark, row);
    const INT last = std::max(list.mark, row);
    if (list.selected.CountIn(first, last) != list.selected.Count()) {
        list.selected.Clear();
        TellChanged(window);
        TellRow(window, list, -1, LVIS_SELECTED, 0);
    }
    if (list.Has(last)) {
        SelectRange(window, list, first, last);
    }
    FocusRow(window, list, row);
}

void SwitchSelection(HWND window, ListViewState& list, INT row) {
    list.mark = row;
    const UINT selected = RowState(list, row, LVIS_SELECTED) ^ LVIS_SELECTED;
    SetRowState(window, list, row, LVIS_FOCUSED | selected, LVIS_FOCUSED | LVIS_SELECTED);
    BringIntoSight(window, list, row);
}

void DeselectAll(HWND window, ListViewState& list) {
    DeselectOthers(window, list, -1);
}

INT NextRow(const ListViewState& list, INT after, UINT flags) {
    if ((flags & LVNI_ABOVE) != 0) {
        for (INT row = after - 1; list.Has(row); --row) {
            const UINT wanted = flags & (LVIS_FOCUSED | LVIS_SELECTED);
            if (RowState(list, row, wanted) == wanted) {
                return row;
            }
        }
        return -1;
    }
    INT row = std::max(-1, after) + 1;
    if ((flags & LVNI_FOCUSED) != 0) {
        const bool fits = list.focused >= row &&
                          ((flags & LVNI_SELECTED) == 0 || list.selected.Contains(list.focused));
        return fits ? list.focused : -1;
    }
    if ((flags & LVNI_SELECTED) != 0) {
        row = list.selected.Next(row);
    }
    return list.Has(row) ? row : -1;
}

void SetRowCount(HWND window, ListViewState& list, INT count) {
    ShowUnsorted(list);
    if (count < list.count) {
        list.selected.Set(count, list.count - 1, false);
    }
    if (count < list.count) {
        ForgetNeeds(list);
    }
    list.count = count;
    list.top = std::min(list.top, std::max(0, count - 1));
    if (!list.Has(list.focused)) {
        list.focused = -1;
    }
    if (!list.Has(list.mark)) {
        list.mark = -1;
    }
    TellChanged(window);
}

void DeleteAllRows(HWND window, ListViewState& list) {
    NMLISTVIEW notification = {};
    notification.iItem = -1;
    NotifyWith(window, LVN_DELETEALLITEMS, &notification.hdr);
    SetRowCount(window, list, 0);
}

}  // namespace quennet::user
