// Keys and clicks of a list view.

#include "user/display_calls.h"
#include "user/entries.h"
#include "user/list_view.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr INT charactersAStep = 8;  // of the report to the side

bool IsDown(INT key) {
    return GetKeyState(key) < 0;
}

/// Where a key moves the focus; -1 for a key that does not.
INT TargetOfKey(const ListViewState& list, const ListLayout& layout, WPARAM key) {
    const INT page = std::max(1, layout.lines - (layout.lines > 1 ? 1 : 0)) * layout.perLine;
    const bool down = layout.view == LVS_LIST;
    const INT focused = std::max(0, list.focused);
    const auto to = [&](INT row) { return std::clamp(row, 0, list.count - 1); };
    switch (key) {
        case VK_UP:
            return to(focused - (down ? 1 : layout.perLine));
        case VK_DOWN:
            return to(list.focused < 0 ? 0 : focused + (down ? 1 : layout.perLine));
        case VK_LEFT:
            return layout.view == LVS_REPORT ? -1 : to(focused - (down ? layout.perLine : 1));
        case VK_RIGHT:
            return layout.view == LVS_REPORT ? -1 : to(focused + (down ? layout.perLine : 1));
        case VK_PRIOR:
            return to(focused - page);
        case VK_NEXT:
            return to(focused + page);
        case VK_HOME:
            return 0;
        case VK_END:
            return list.count - 1;
        default:
            return -1;
    }
}

/// Clicks and moving keys choose alike.
void Choose(HWND window, ListViewState& list, INT row, bool shift) {
    if (shift) {
        SelectUpTo(window, list, row);
    } else {
        SelectOnly(window, list, row);
    }
}

void Activate(HWND window, ListViewState& list, INT row, LPARAM point) {
    if (!list.Has(row)) {
        return;
    }
    NMITEMACTIVATE notification = {};
    notification.iItem = list.RowAt(row);
    notification.ptAction = {static_cast<SHORT>(LOWORD(point)), static_cast<SHORT>(HIWORD(point))};
    notification.uKeyFlags = (IsDown(VK_MENU) ? LVKF_ALT : 0U) |
                             (IsDown(VK_CONTROL) ? LVKF_CONTROL : 0U) |
                             (IsDown(VK_SHIFT) ? LVKF_SHIFT : 0U);
    NotifyWith(window, LVN_ITEMACTIVATE, &notification.hdr);
}

void ScrollSideways(HWND window, ListViewState& list, WPARAM key) {
    list.left = std::max(0, list.left + (key == VK_LEFT ? -charactersAStep : charactersAStep));
    TellChanged(window);
}

void PressKey(HWND window, ListViewState& list, WPARAM key) {
    const ListLayout layout = LayoutOf(window, list);
    if (layout.view == LVS_REPORT && (key == VK_LEFT || key == VK_RIGHT)) {
        ScrollSideways(window, list, key);
        return;
    }
    if (list.count == 0) {
        return;
    }
    const bool control = IsDown(VK_CONTROL);
    const INT target = TargetOfKey(list, layout, key);
    if (target >= 0 && control && !IsDown(VK_SHIFT)) {
        FocusRow(window, list, target);
    } else if (target >= 0) {
        Choose(window, list, target, IsDown(VK_SHIFT));
    } else if (key == VK_SPACE && control) {
        SwitchSelection(window, list, std::max(0, list.focused));
    } else if (key == VK_SPACE) {
        Choose(window, list, std::max(0, list.focused), IsDown(VK_SHIFT));
    } else if (key == 'A' && control) {
        SetRowState(window, list, -1, LVIS_SELECTED, LVIS_SELECTED);
    } else if (key == VK_RETURN) {
        NMHDR header = {};
        NotifyWith(window, NM_RETURN, &header);
        Activate(window, list, list.focused, 0);
    }
}

void FitAllColumns(HWND window, ListViewState& list) {
    for (std::size_t column = 0; column < list.columns.size(); ++column) {
        if (list.columns[column].width > 0) {
            list.columns[column].chosen = false;
            FitColumn(window, list, static_cast<INT>(column), true);
        }
    }
}

/// Keys of a report: a digit shows the rows in the order of that column, from the left, and makes
/// it the one for '<' and '>'; 0 gives the owner's order back, '+' room for all texts in sight.
void PressCharacter(HWND window, ListViewState& list, WPARAM character) {
    if ((StyleOf(window) & LVS_TYPEMASK) != LVS_REPORT || list.columns.empty()) {
        return;
    }
    const std::size_t place = character - '1';
    if (character == '+') {
        FitAllColumns(window, list);
    } else if (character == '0') {
        ShowUnsorted(list);
        BringIntoSight(window, list, std::max(0, list.focused));
        TellChanged(window);
    } else if (character == '<' || character == '>') {
        const auto column = static_cast<std::size_t>(list.column) % list.columns.size();
        ChooseWidth(window, list, static_cast<INT>(column),
                    CellsOfColumn(list.columns[column]) + (character == '<' ? -1 : 1));
    } else if (place < list.order.size() && (StyleOf(window) & LVS_NOSORTHEADER) == 0) {
        list.column = list.order[place];
        SortRows(window, list, list.column);
    }
}

struct Hit {
    INT row = -1;
    INT title = -1;  // the column whose title it is
};

INT ColumnAt(const ListViewState& list, int x) {
    int right = -list.left;
    INT found = -1;
    for (const INT column : list.order) {
        const int width = CellsOfColumn(list.columns[static_cast<std::size_t>(column)]);
        right += width;
        found = width > 0 ? column : found;
        if (x < right) {
            break;
        }
    }
    return found;
}

Hit HitOf(HWND window, const ListViewState& list, LPARAM point) {
    const ListLayout layout = LayoutOf(window, list);
    const int x = static_cast<SHORT>(LOWORD(point)) / cellWidth;
    const int y = static_cast<SHORT>(HIWORD(point)) / cellHeight - layout.titles;
    if (y < 0 && layout.titles > 0) {
        return {-1, ColumnAt(list, x)};
    }
    const bool down = layout.view == LVS_LIST;
    const int across = x / layout.itemWidth;
    const int below = y / layout.itemHeight;
    const int line = down ? across : below;
    const int place = down ? below : across;
    if (x < 0 || x >= layout.width || y < 0 || place >= layout.perLine) {
        return {};
    }
    const INT row = layout.FirstInSight() + line * layout.perLine + place;
    return {list.Has(row) ? row : -1, -1};
}

void TellClick(HWND window, const ListViewState& list, UINT code, INT row, LPARAM point) {
    NMITEMACTIVATE notification = {};
    notification.iItem = list.RowAt(row);
    notification.ptAction = {static_cast<SHORT>(LOWORD(point)), static_cast<SHORT>(HIWORD(point))};
    NotifyWith(window, code, &notification.hdr);
}

void ClickTitle(HWND window, ListViewState& list, INT column, bool twice) {
    if (column < 0) {
        return;
    }
    if (twice) {
        FitColumn(window, list, column, true);
    } else if ((StyleOf(window) & LVS_NOSORTHEADER) == 0) {
        NMLISTVIEW notification = {};
        notification.iItem = -1;
        notification.iSubItem = column;
        NotifyWith(window, LVN_COLUMNCLICK, &notification.hdr);
    }
}

void Click(HWND window, ListViewState& list, WPARAM keys, LPARAM point, bool twice) {
    const Hit hit = HitOf(window, list, point);
    SetFocus(window);
    if (hit.title >= 0) {
        ClickTitle(window, list, hit.title, twice);
        return;
    }
    if (!list.Has(hit.row)) {
        DeselectAll(window, list);
    } else if ((keys & MK_CONTROL) != 0) {
        SwitchSelection(window, list, hit.row);
    } else {
        Choose(window, list, hit.row, (keys & MK_SHIFT) != 0);
    }
    TellClick(window, list, twice ? NM_DBLCLK : NM_CLICK, hit.row, point);
    if (twice) {
        Activate(window, list, hit.row, point);
    }
}

void Turn(HWND window, ListViewState& list, WPARAM wParam) {
    const ListLayout layout = LayoutOf(window, list);
    ScrollToLine(list, layout, layout.topLine - static_cast<int>(WheelEntries(wParam)));
    TellChanged(window);
}

}  // namespace

bool HandleListInput(HWND window, ListViewState& list, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_KEYDOWN:
            PressKey(window, list, wParam);
            return true;
        case WM_CHAR:
            PressCharacter(window, list, wParam);
            return true;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            Click(window, list, wParam, lParam, message == WM_LBUTTONDBLCLK);
            return true;
        case WM_MOUSEWHEEL:
            Turn(window, list, wParam);
            return true;
        default:
            return false;
    }
}

}  // namespace quennet::user
