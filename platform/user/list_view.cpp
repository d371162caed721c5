#include "user/list_view.h"

#include "user/display_calls.h"

namespace quennet::user {

namespace {

constexpr INT rowsAtMost = 100'000'000;

LRESULT ItemText(HWND window, INT row, LVITEMA* item) {
    const CellText cell(window, row, item->iSubItem, LVIF_TEXT);
    const std::string_view text = cell.Text();
    return item->cchTextMax <= 0 ? 0
                                 : CopyText(text.data(), text.size(), item->pszText,
                                            static_cast<std::size_t>(item->cchTextMax));
}

LRESULT GetItem(HWND window, const ListViewState& list, LVITEMA* item) {
    if (!item || !list.Has(item->iItem)) {
        return FALSE;
    }
    if ((item->mask & LVIF_STATE) != 0) {
        item->state = RowState(list, list.PlaceOf(item->iItem), item->stateMask);
    }
    const CellText cell(window, item->iItem, item->iSubItem, item->mask & ~UINT{LVIF_STATE});
    item->iImage = cell.Item().iImage;
    item->iIndent = cell.Item().iIndent;
    item->lParam = cell.Item().lParam;
    if ((item->mask & LVIF_TEXT) != 0 && item->cchTextMax > 0) {
        const std::string_view text = cell.Text();
        CopyText(text.data(), text.size(), item->pszText,
                 static_cast<std::size_t>(item->cchTextMax));
    }
    return TRUE;
}

LRESULT SetCount(HWND window, ListViewState& list, INT count) {
    if (count < 0 || count > rowsAtMost) {
        return FALSE;
    }
    SetRowCount(window, list, count);
    return TRUE;
}

LRESULT SetImages(HWND window, ListViewState& list, WPARAM which, HIMAGELIST images) {
    if (which >= std::size(list.images)) {
        return 0;
    }
    TellChanged(window);
    return reinterpret_cast<LRESULT>(std::exchange(list.images[which], images));
}

/// A mask of 0 stands for all bits.
LRESULT SetExtendedStyle(HWND window, ListViewState& list, WPARAM wParam, LPARAM lParam) {
    const DWORD mask = wParam == 0 ? ~DWORD{0} : static_cast<DWORD>(wParam);
    const DWORD before = list.extendedStyle;
    list.extendedStyle = (before & ~mask) | (static_cast<DWORD>(lParam) & mask);
    TellChanged(window);
    return static_cast<LRESULT>(before);
}

LRESULT ShowRow(HWND window, ListViewState& list, INT row) {
    if (!list.Has(row)) {
        return FALSE;
    }
    BringIntoSight(window, list, row);
    TellChanged(window);
    return TRUE;
}

LRESULT TopRow(HWND window, const ListViewState& list) {
    const ListLayout layout = LayoutOf(window, list);
    return layout.view == LVS_REPORT || layout.view == LVS_LIST ? list.RowAt(layout.FirstInSight())
                                                                : 0;
}

LRESULT RowsPerPage(HWND window, const ListViewState& list) {
    const ListLayout layout = LayoutOf(window, list);
    return layout.view == LVS_REPORT || layout.view == LVS_LIST ? layout.lines * layout.perLine
                                                                : list.count;
}

LRESULT SetItemState(HWND window, ListViewState& list, INT place, const LVITEMA* item) {
    return item && SetRowState(window, list, place, item->state, item->stateMask);
}

LRESULT TellFocus(HWND window, UINT code) {
    NMHDR header = {};
    return NotifyWith(window, code, &header);
}

LRESULT HandleRows(HWND window, ListViewState& list, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto row = static_cast<INT>(wParam);
    const INT place = list.PlaceOf(row);
    const auto item = reinterpret_cast<LVITEMA*>(lParam);
    switch (message) {
        case LVM_SETITEMCOUNT:
            return SetCount(window, list, row);
        case LVM_GETITEMCOUNT:
            return list.count;
        case LVM_DELETEALLITEMS:
            DeleteAllRows(window, list);
            return TRUE;
        case LVM_GETITEMSTATE:
            return RowState(list, place, static_cast<UINT>(lParam));
        case LVM_SETITEMSTATE:
            return SetItemState(window, list, place, item);
        case LVM_GETNEXTITEM:
            return list.RowAt(NextRow(list, place, static_cast<UINT>(lParam)));
        case LVM_GETSELECTEDCOUNT:
            return list.selected.Count();
        case LVM_GETSELECTIONMARK:
            return list.RowAt(list.mark);
        case LVM_SETSELECTIONMARK:
            return list.RowAt(std::exchange(list.mark, list.Has(static_cast<INT>(lParam))
                                                           ? list.PlaceOf(static_cast<INT>(lParam))
                                                           : -1));
        case LVM_GETITEMTEXTA:
            return item && list.Has(row) ? ItemText(window, row, item) : 0;
        case LVM_GETITEMA:
            return GetItem(window, list, item);
        case LVM_ENSUREVISIBLE:
            return ShowRow(window, list, place);
        case LVM_GETTOPINDEX:
            return TopRow(window, list);
        case LVM_GETCOUNTPERPAGE:
            return RowsPerPage(window, list);
        case LVM_REDRAWITEMS:
        case LVM_UPDATE:
            TellChanged(window);
            return TRUE;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

LRESULT Handle(HWND window, ListViewState& list, UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_WANTARROWS | DLGC_WANTCHARS;
        case QUENNET_DRAW:
            if (wParam == 0) {
                DrawList(window, list, *reinterpret_cast<Canvas*>(lParam));
            }
            return 0;
        case WM_SETFOCUS:
            return TellFocus(window, NM_SETFOCUS);
        case WM_KILLFOCUS:
            return TellFocus(window, NM_KILLFOCUS);
        case LVM_SETEXTENDEDLISTVIEWSTYLE:
            return SetExtendedStyle(window, list, wParam, lParam);
        case LVM_GETEXTENDEDLISTVIEWSTYLE:
            return static_cast<LRESULT>(list.extendedStyle);
        case LVM_SETIMAGELIST:
            return SetImages(window, list, wParam, reinterpret_cast<HIMAGELIST>(lParam));
        case LVM_GETIMAGELIST:
            return wParam < std::size(list.images) ? reinterpret_cast<LRESULT>(list.images[wParam])
                                                   : 0;
        default:
            break;
    }
    if (HandleListInput(window, list, message, wParam, lParam)) {
        return 0;
    }
    return HandleColumnMessage(window, list, message, wParam, lParam, &result)
               ? result
               : HandleRows(window, list, message, wParam, lParam);
}

}  // namespace

extern "C" LRESULT CALLBACK ListViewProcedure(HWND window, UINT message, WPARAM wParam,
                                              LPARAM lParam) {
    if (message == WM_NCCREATE) {
        SetState(window, std::make_shared<ListViewState>());
    }
    const auto list = StateOf<ListViewState>(window);
    return list ? Handle(window, *list, message, wParam, lParam)
                : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace quennet::user
