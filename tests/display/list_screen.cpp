#include "display/list_screen.h"

#include <commctrl.h>
#include <quennet_canvas.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

enum : INT {
    label = 10,
    mask = 11,
    recurse = 12,
    longForm = 13,
    filter = 14,
    more = 15,
    list = 16,
    status = 17
};

struct ScreenColumn {
    const char* title;
    INT width;
    INT format;
};
constexpr ScreenColumn columns[] = {
    {"Name", 150, LVCFMT_LEFT},       {"Size", 60, LVCFMT_RIGHT},  {"Date", 105, LVCFMT_LEFT},
    {"Attributes", 45, LVCFMT_RIGHT}, {"Folder", 45, LVCFMT_LEFT}, {"Type", 45, LVCFMT_LEFT},
};

int activated = -1;

HWND Child(HWND parent, const char* className, const char* text, DWORD style, INT id,
           DWORD extendedStyle = 0) {
    return CreateWindowExA(extendedStyle, className, text, style | WS_CHILD | WS_VISIBLE, 0, 0, 0,
                           0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), nullptr,
                           nullptr);
}

void AddColumns(HWND view) {
    INT place = 0;
    for (const ScreenColumn& column : columns) {
        LVCOLUMNA record = {};
        record.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
        record.fmt = column.format;
        record.cx = column.width;
        record.pszText = const_cast<char*>(column.title);
        record.iSubItem = place;
        SendMessageA(view, LVM_INSERTCOLUMNA, static_cast<WPARAM>(place++),
                     reinterpret_cast<LPARAM>(&record));
    }
}

void Create(HWND window, int rows) {
    const HWND view =
        Child(window, WC_LISTVIEWA, "", WS_TABSTOP | LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS,
              list, WS_EX_CLIENTEDGE);
    AddColumns(view);
    SendMessageA(view, LVM_SETIMAGELIST, LVSIL_SMALL, 1);
    SendMessageA(view, LVM_SETITEMCOUNT, static_cast<WPARAM>(rows),
                 LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
    Child(window, "Static", "&Search for:", 0, label);
    Child(window, "ComboBox", "", WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWN | CBS_AUTOHSCROLL, mask);
    Child(window, "Button", "Search sub&directories", WS_TABSTOP | BS_AUTOCHECKBOX, recurse);
    Child(window, "Button", "&Long listing", WS_TABSTOP | BS_AUTOCHECKBOX, longForm);
    Child(window, "Button", "Use &filter", WS_TABSTOP | BS_AUTOCHECKBOX, filter);
    Child(window, "Button", "...", WS_TABSTOP | BS_PUSHBUTTON, more);
    CreateStatusWindowA(WS_CHILD | WS_VISIBLE | CCS_BOTTOM, "", window, status);
}

INT HeightOf(HWND window) {
    RECT place = {};
    GetWindowRect(window, &place);
    return place.bottom - place.top;
}

void Layout(HWND window, LPARAM lParam) {
    const HWND bar = GetDlgItem(window, status);
    const INT width = LOWORD(lParam);
    SendMessageA(bar, WM_SIZE, 0, lParam);
    const INT parts[] = {(width - 25) / 2, width - 25, -1};
    SendMessageA(bar, SB_SETPARTS, std::size(parts), reinterpret_cast<LPARAM>(parts));
    const INT height = HIWORD(lParam) - HeightOf(bar);
    const auto line = static_cast<INT>(SendDlgItemMessageA(window, mask, CB_GETITEMHEIGHT, 0, 0));
    const INT step = line + 2;
    const INT half = width / 2;
    const auto put = [&](INT id, INT x, INT y, INT w, INT h) {
        MoveWindow(GetDlgItem(window, id), x, y, w, h, TRUE);
    };
    put(label, 7, 10, 6 * step, step);
    put(mask, 6 * step + 7, 7, width - 6 * step - 12, 8 * step);
    put(recurse, 10, 2 * line + 7, half - 12, step);
    put(filter, half, 3 * line + 7, half - 12 - step, step);
    put(more, width - step - 9, 3 * line + 3, step + 4, step + 6);
    put(longForm, 10, 4 * line + 7, half - 12, step);
    put(list, 0, 6 * line + 7, width, height - 6 * line - 7);
}

std::string CellOf(int row, int column) {
    switch (column) {
        case 0:
            return row % 10 == 0 ? "directory " + std::to_string(row)
                                 : "file " + std::to_string(row) + ".txt";
        case 1:
            return row % 10 == 0 ? "" : std::to_string(row * 7);
        case 2:
            return "2026-03-14 15:09";
        case 3:
            return "-a--";
        case 4:
            return "/pub/some/where/" + std::to_string(row / 100);
        default:
            return "Plain text document";
    }
}

void Answer(NMLVDISPINFOA& asked) {
    if ((asked.item.mask & LVIF_TEXT) != 0) {
        std::snprintf(asked.item.pszText, static_cast<std::size_t>(asked.item.cchTextMax), "%s",
                      CellOf(asked.item.iItem, asked.item.iSubItem).c_str());
    }
    if ((asked.item.mask & LVIF_IMAGE) != 0) {
        asked.item.iImage = asked.item.iItem % 10 == 0 ? 1 : 0;
    }
}

void Notified(HWND window, const NMHDR& header, LPARAM lParam) {
    switch (header.code) {
        case LVN_GETDISPINFOA:
            return Answer(*reinterpret_cast<NMLVDISPINFOA*>(lParam));
        case LVN_ITEMACTIVATE:
            activated = reinterpret_cast<const NMITEMACTIVATE*>(lParam)->iItem;
            [[fallthrough]];
        case LVN_ITEMCHANGED:
        case LVN_ODSTATECHANGED: {
            const std::string text =
                std::to_string(SendMessageA(header.hwndFrom, LVM_GETSELECTEDCOUNT, 0, 0)) +
                " selected" +
                (activated < 0 ? std::string() : ", " + std::to_string(activated) + " activated");
            SendDlgItemMessageA(window, status, SB_SETTEXTA, 0,
                                reinterpret_cast<LPARAM>(text.c_str()));
            return;
        }
        default:
            return;
    }
}

LRESULT CALLBACK ListScreenProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            Create(window, *static_cast<const int*>(
                               reinterpret_cast<const CREATESTRUCTA*>(lParam)->lpCreateParams));
            return 0;
        case WM_SIZE:
            Layout(window, lParam);
            return 0;
        case WM_GETMINMAXINFO:
            reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {14 * 18, 9 + 15 * 16};
            return 1;
        case WM_SETFOCUS:
            SetFocus(GetDlgItem(window, list));
            return 0;
        case WM_NOTIFY:
            Notified(window, *reinterpret_cast<const NMHDR*>(lParam), lParam);
            return 0;
        case WM_COMMAND:
            if (LOWORD(wParam) == more) {
                const LONG style = GetWindowLongA(GetDlgItem(window, list), GWL_STYLE);
                SetWindowLongA(GetDlgItem(window, list), GWL_STYLE,
                               (style & ~LVS_TYPEMASK) | ((style + 1) & LVS_TYPEMASK));
            }
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

}  // namespace

std::string RunListScreen(int rows) {
    WNDCLASSEXA record = {};
    record.cbSize = sizeof(record);
    record.style = CS_DBLCLKS;
    record.lpfnWndProc = ListScreenProcedure;
    record.lpszClassName = "list screen";
    RegisterClassExA(&record);
    const HWND window = CreateWindowExA(0, "list screen", "Many Rows", WS_OVERLAPPEDWINDOW,
                                        CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                        nullptr, nullptr, nullptr, &rows);
    ShowWindow(window, SW_SHOW);
    UpdateWindow(window);
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (!IsDialogMessageA(window, &message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    return "list: closed, " + std::to_string(activated) + " activated";
}
