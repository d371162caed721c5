// Where windows are and how large.

#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"

#include <algorithm>

namespace quennet::user {

namespace {

struct Size {
    LONG width;
    LONG height;
};

Size SizeOf(const RECT& place) {
    return {place.right - place.left, place.bottom - place.top};
}

/// Where the window is, relative to its parent; false for no window.
bool PlaceOf(HWND handle, RECT* place) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    if (window) {
        *place = window->place;
    }
    return window != nullptr;
}

/// The size that the window allows instead.
Size AllowedSize(HWND window, Size size) {
    if ((StyleOf(window) & (WS_THICKFRAME | WS_CHILD)) != WS_THICKFRAME) {
        return size;
    }
    constexpr LONG most = 0x7FFF;
    MINMAXINFO limits = {};
    limits.ptMaxSize = limits.ptMaxTrackSize = {most, most};
    SendMessageA(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits));
    const POINT& least = limits.ptMinTrackSize;
    return {std::max(least.x, std::min(size.width, limits.ptMaxTrackSize.x)),
            std::max(least.y, std::min(size.height, limits.ptMaxTrackSize.y))};
}

void TellSize(HWND window, const RECT& place) {
    const Size size = SizeOf(place);
    SendMessageA(window, WM_SIZE, SIZE_RESTORED, MAKELPARAM(size.width, size.height));
}

void TellMove(HWND window, const RECT& place) {
    SendMessageA(window, WM_MOVE, 0, MAKELPARAM(place.left, place.top));
}

}  // namespace

void TellFirstSize(HWND handle) {
    RECT place = {};
    {
        DesktopLock desktop;
        Window* window = desktop->Find(handle);
        if (!window || std::exchange(window->sizeTold, true)) {
            return;
        }
        place = window->place;
    }
    TellSize(handle, place);
    TellMove(handle, place);
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

BOOL WINAPI GetWindowRect(HWND handle, RECT* place) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    if (!window) {
        return FALSE;
    }
    *place = window->place;
    while (window->IsChild()) {
        window = desktop->Find(window->parent);
        if (!window) {
            break;
        }
        place->left += window->place.left;
        place->right += window->place.left;
        place->top += window->place.top;
        place->bottom += window->place.top;
    }
    return TRUE;
}

BOOL WINAPI GetClientRect(HWND window, RECT* area) {
    RECT place = {};
    if (!PlaceOf(window, &place)) {
        return FALSE;
    }
    const Size size = SizeOf(place);
    *area = RECT{0, 0, size.width, size.height};
    return TRUE;
}

BOOL WINAPI MoveWindow(HWND handle, INT x, INT y, INT width, INT height, BOOL) {
    const Size size = AllowedSize(handle, {std::max(0, width), std::max(0, height)});
    const RECT place = {x, y, x + size.width, y + size.height};
    RECT before = {};
    bool sized = false;
    {
        DesktopLock desktop;
        Window* window = desktop->Find(handle);
        if (!window) {
            return FALSE;
        }
        before = std::exchange(window->place, place);
        sized = SizeOf(before).width != size.width || SizeOf(before).height != size.height;
        window->sizeTold = window->sizeTold || sized;
    }
    const bool moved = before.left != x || before.top != y;
    if (moved) {
        TellMove(handle, place);
    }
    if (sized) {
        TellSize(handle, place);
    }
    if (moved || sized) {
        TellChanged(handle);
    }
    return TRUE;
}

BOOL WINAPI SetWindowPos(HWND window, HWND, INT x, INT y, INT width, INT height, UINT flags) {
    RECT place = {};
    if (!PlaceOf(window, &place)) {
        return FALSE;
    }
    if ((flags & SWP_NOMOVE) != 0) {
        x = place.left;
        y = place.top;
    }
    if ((flags & SWP_NOSIZE) != 0) {
        width = SizeOf(place).width;
        height = SizeOf(place).height;
    }
    if ((flags & (SWP_NOMOVE | SWP_NOSIZE)) != (SWP_NOMOVE | SWP_NOSIZE)) {
        MoveWindow(window, x, y, width, height, TRUE);
    }
    if ((flags & (SWP_SHOWWINDOW | SWP_HIDEWINDOW)) != 0) {
        ShowWindow(window, (flags & SWP_SHOWWINDOW) != 0 ? SW_SHOWNA : SW_HIDE);
    }
    return TRUE;
}

BOOL WINAPI InvalidateRect(HWND window, const RECT*, BOOL) {
    if (!IsWindow(window)) {
        return FALSE;
    }
    TellChanged(window);
    return TRUE;
}

BOOL WINAPI UpdateWindow(HWND window) {
    return IsWindow(window);
}

BOOL WINAPI SetForegroundWindow(HWND window) {
    if (!IsWindow(window)) {
        return FALSE;
    }
    TellRaised(window);
    return TRUE;
}
}
