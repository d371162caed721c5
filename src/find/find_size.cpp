#include "find/find_size.h"

#include <commctrl.h>

#include "find/find_layout.h"
#include "host/services.h"

namespace quennet {

namespace {

i32 HeightOf(HWND window) {
    RECT place = {};
    GetWindowRect(window, &place);
    return place.bottom - place.top;
}

void LayoutFindWindow(FindWindow* find, i32 top, i32 width, i32 height) {
    const LRESULT itemHeight = SendMessageA(find->maskBox, CB_GETITEMHEIGHT, 0, 0);
    const FindLayout layout = PlaceFindControls(top, width, height, static_cast<i32>(itemHeight));
    for (const ControlPlace& place : layout.places) {
        ShellMoveControl(GetDlgItem(find->window, place.control), place.x, place.y, place.width,
                         place.height);
    }
    find->minimumWidth = layout.minimumWidth;
    find->minimumHeight = layout.minimumHeight;
}

void SetPanes(HWND statusBar, i32 width) {
    constexpr i32 busyPane = 25;
    constexpr i32 toTheEnd = -1;
    const i32 rest = width - busyPane;
    const i32 edges[] = {rest >> 1, rest, toTheEnd};
    SendMessageA(statusBar, SB_SETPARTS, sizeof edges / sizeof edges[0],
                 reinterpret_cast<LPARAM>(&edges[0]));
}

bool IsShown(HWND bar) {
    return bar != nullptr && IsWindowVisible(bar);
}

}  // namespace

void ResizeFindWindow(FindWindow* find, UINT message, WPARAM wParam, LPARAM lParam) {
    if (wParam == SIZE_MINIMIZED) {
        return;
    }
    i32 width = LOWORD(lParam);
    i32 height = HIWORD(lParam);
    if (width == 0 && height == 0) {
        RECT area = {};
        GetClientRect(find->window, &area);
        width = area.right - area.left;
        height = area.bottom - area.top;
        message = WM_SIZE;
        lParam = MAKELPARAM(width, height);
    }
    i32 top = 0;
    if (IsShown(find->toolBar)) {
        SendMessageA(find->toolBar, message, wParam, lParam);
        top = HeightOf(find->toolBar);
        height -= top;
    }
    if (IsShown(find->statusBar)) {
        SendMessageA(find->statusBar, message, wParam, lParam);
        height -= HeightOf(find->statusBar);
        SetPanes(find->statusBar, width);
    }
    LayoutFindWindow(find, top, width, height);
}

void ToggleFindBar(FindWindow* find, HWND bar, u32 hiddenBit) {
    if (bar == nullptr) {
        return;
    }
    const bool hides = IsWindowVisible(bar);
    find->options = hides ? find->options | hiddenBit : find->options & ~hiddenBit;
    ShowWindow(bar, hides ? SW_HIDE : SW_SHOW);
    ResizeFindWindow(find, 0, 0, 0);
    InvalidateRect(find->window, nullptr, TRUE);
}

}  // namespace quennet
