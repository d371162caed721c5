// The columns of a list view's report.

#include "user/display_calls.h"
#include "user/list_view.h"

#include <algorithm>
#include <cstring>

namespace quennet::user {

namespace {

constexpr INT pixelsPerCharacter = 6;
constexpr int columnsAtMost = 256;
constexpr int gap = 1;  // between what two columns show, in cells
constexpr int widestChosen = 500;

ListColumn* ColumnAt(ListViewState& list, WPARAM index) {
    return index < list.columns.size() ? &list.columns[index] : nullptr;
}

/// Where the column is moved to among the others from left to right.
void PutInOrder(ListViewState& list, INT column, INT place) {
    std::erase(list.order, column);
    const auto last = static_cast<INT>(list.order.size());
    list.order.insert(list.order.begin() + std::clamp(place, 0, last), column);
}

void TakeOver(ListViewState& list, INT index, const LVCOLUMNA& record) {
    ListColumn& column = list.columns[static_cast<std::size_t>(index)];
    if ((record.mask & LVCF_FMT) != 0) {
        column.format = record.fmt;
    }
    if ((record.mask & LVCF_WIDTH) != 0) {
        column.width = std::max(0, record.cx);
    }
    if ((record.mask & LVCF_TEXT) != 0) {
        column.title = record.pszText ? record.pszText : "";
    }
    if ((record.mask & LVCF_SUBITEM) != 0) {
        column.subItem = record.iSubItem;
    }
    if ((record.mask & LVCF_IMAGE) != 0) {
        column.image = record.iImage;
    }
    if ((record.mask & LVCF_ORDER) != 0) {
        PutInOrder(list, index, record.iOrder);
    }
}

LRESULT Insert(ListViewState& list, INT index, const LVCOLUMNA* record) {
    const auto count = static_cast<INT>(list.columns.size());
    if (!record || index < 0 || count >= columnsAtMost) {
        return -1;
    }
    index = std::min(index, count);
    list.columns.insert(list.columns.begin() + index, ListColumn{});
    for (INT& column : list.order) {
        column += column >= index ? 1 : 0;
    }
    PutInOrder(list, index, index);
    TakeOver(list, index, *record);
    return index;
}

LRESULT Delete(ListViewState& list, WPARAM wParam) {
    if (!ColumnAt(list, wParam)) {
        return FALSE;
    }
    const auto index = static_cast<INT>(wParam);
    list.columns.erase(list.columns.begin() + index);
    std::erase(list.order, index);
    for (INT& column : list.order) {
        column -= column > index ? 1 : 0;
    }
    return TRUE;
}

LRESULT Get(ListViewState& list, WPARAM wParam, LVCOLUMNA* record) {
    const ListColumn* column = ColumnAt(list, wParam);
    if (!column || !record) {
        return FALSE;
    }
    record->fmt = column->format;
    record->cx = column->width;
    record->iSubItem = column->subItem;
    record->iImage = column->image;
    const auto place = std::ranges::find(list.order, static_cast<INT>(wParam));
    record->iOrder = static_cast<INT>(place - list.order.begin());
    if ((record->mask & LVCF_TEXT) != 0 && record->cchTextMax > 0) {
        CopyText(column->title.data(), column->title.size(), record->pszText,
                 static_cast<std::size_t>(record->cchTextMax));
    }
    return TRUE;
}

LRESULT Set(ListViewState& list, WPARAM wParam, const LVCOLUMNA* record) {
    if (!ColumnAt(list, wParam) || !record) {
        return FALSE;
    }
    TakeOver(list, static_cast<INT>(wParam), *record);
    return TRUE;
}

bool IsList(HWND window) {
    return (StyleOf(window) & LVS_TYPEMASK) == LVS_LIST;
}

LRESULT SetWidth(HWND window, ListViewState& list, WPARAM wParam, INT width) {
    if (IsList(window)) {
        list.itemWidth = std::max(0, width);
        return TRUE;
    }
    ListColumn* column = ColumnAt(list, wParam);
    if (!column) {
        return FALSE;
    }
    if (width == LVSCW_AUTOSIZE || width == LVSCW_AUTOSIZE_USEHEADER) {
        FitColumn(window, list, static_cast<INT>(wParam), width == LVSCW_AUTOSIZE_USEHEADER);
    } else {
        column->width = std::max(0, width);
    }
    return TRUE;
}

LRESULT GetWidth(HWND window, ListViewState& list, WPARAM wParam) {
    if (IsList(window)) {
        return list.itemWidth > 0 ? list.itemWidth : LayoutOf(window, list).itemWidth * cellWidth;
    }
    const ListColumn* column = ColumnAt(list, wParam);
    return column ? column->width : 0;
}

/// Takes an order that names each column once.
LRESULT SetOrder(ListViewState& list, WPARAM count, const INT* order) {
    if (count != list.columns.size() || !order) {
        return FALSE;
    }
    const std::vector<INT> wanted(order, order + count);
    if (!std::ranges::is_permutation(wanted, list.order)) {
        return FALSE;
    }
    list.order = wanted;
    return TRUE;
}

LRESULT GetOrder(const ListViewState& list, WPARAM count, INT* order) {
    if (count > list.order.size() || !order) {
        return FALSE;
    }
    std::copy_n(list.order.begin(), count, order);
    return TRUE;
}

}  // namespace

bool IsNumberColumn(const ListViewState& list, INT column) {
    const ListColumn& record = list.columns[static_cast<std::size_t>(column)];
    return column > 0 && (record.format & LVCFMT_JUSTIFYMASK) == LVCFMT_RIGHT;
}

std::string TitleOf(const ListViewState& list, INT column) {
    const std::string& title = list.columns[static_cast<std::size_t>(column)].title;
    return column == list.sortedBy ? title + (list.sortFalls ? " ▼" : " ▲") : title;
}

int CellsOfWidth(INT pixels) {
    return (pixels + pixelsPerCharacter / 2) / pixelsPerCharacter;
}

int CellsOfColumn(const ListColumn& column) {
    return column.cells > 0 ? column.cells : CellsOfWidth(column.width);
}

void FitColumn(HWND window, ListViewState& list, INT column, bool withTitle) {
    const auto index = static_cast<std::size_t>(column);
    int cells = withTitle ? ColumnsOf(list.columns[index].title) : 0;
    const ListLayout layout = LayoutOf(window, list);
    const int end = std::min(list.count, layout.FirstInSight() + layout.lines * layout.perLine);
    for (int row = layout.FirstInSight(); row < end; ++row) {
        const CellText cell(window, list.RowAt(row), column, LVIF_TEXT);
        const int mark = column == 0 && list.images[LVSIL_SMALL] ? 1 : 0;
        cells = std::max(cells, ColumnsOf(cell.Text()) + mark);
    }
    if (index < list.columns.size()) {
        list.columns[index].width = (cells + gap) * pixelsPerCharacter;
    }
    TellChanged(window);
}

void ChooseWidth(HWND window, ListViewState& list, INT column, int cells) {
    ListColumn& record = list.columns[static_cast<std::size_t>(column)];
    record.chosen = true;
    record.cells = std::clamp(cells, 1, widestChosen);
    record.width = record.cells * pixelsPerCharacter;
    TellChanged(window);
}

bool HandleColumnMessage(HWND window, ListViewState& list, UINT message, WPARAM wParam,
                         LPARAM lParam, LRESULT* result) {
    const auto record = reinterpret_cast<LVCOLUMNA*>(lParam);
    switch (message) {
        case LVM_INSERTCOLUMNA:
            *result = Insert(list, static_cast<INT>(wParam), record);
            break;
        case LVM_DELETECOLUMN:
            *result = Delete(list, wParam);
            break;
        case LVM_SETCOLUMNA:
            *result = Set(list, wParam, record);
            break;
        case LVM_SETCOLUMNWIDTH:
            *result = SetWidth(window, list, wParam, static_cast<INT>(lParam));
            break;
        case LVM_SETCOLUMNORDERARRAY:
            *result = SetOrder(list, wParam, reinterpret_cast<const INT*>(lParam));
            break;
        case LVM_GETCOLUMNA:
            *result = Get(list, wParam, record);
            return true;
        case LVM_GETCOLUMNWIDTH:
            *result = GetWidth(window, list, wParam);
            return true;
        case LVM_GETCOLUMNORDERARRAY:
            *result = GetOrder(list, wParam, reinterpret_cast<INT*>(lParam));
            return true;
        default:
            return false;
    }
    TellChanged(window);
    return true;
}

}  // namespace quennet::user
