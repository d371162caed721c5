// What a window is asked and told: text, family, visibility, focus.

#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"

#include <unistd.h>

#include <algorithm>

namespace quennet::user {

namespace {

/// Sets or clears a bit of the style; `before` tells whether it was set. False for no window.
bool SwitchStyle(HWND handle, DWORD bit, bool set, bool* before) {
    DesktopLock desktop;
    Window* window = desktop->Find(handle);
    if (!window) {
        return false;
    }
    *before = (window->style & bit) != 0;
    window->style = set ? window->style | bit : window->style & ~bit;
    return true;
}

/// Do the window and its parents all fulfil `test`?
template <typename Test>
bool AllTheWayUp(DesktopLock& desktop, HWND handle, Test test) {
    for (;;) {
        const Window* window = desktop->Find(handle);
        if (!window || !test(*window)) {
            return false;
        }
        if (!window->IsChild()) {
            return true;
        }
        handle = window->parent;
    }
}

bool IsNotDisabled(const Window& window) {
    return (window.style & WS_DISABLED) == 0;
}
bool IsShown(const Window& window) {
    return (window.style & WS_VISIBLE) != 0;
}

bool Fits(const Window& window, LPCSTR className, ATOM atom, LPCSTR text) {
    if (atom != 0 ? window.windowClass->atom != atom
                  : className && lstrcmpiA(window.windowClass->name.c_str(), className) != 0) {
        return false;
    }
    return !text || lstrcmpiA(window.text.c_str(), text) == 0;
}

/// A top window that comes up has the focus, unless it gave it to a control of its own before.
void TakeFocusIn(HWND window) {
    const HWND focus = GetFocus();
    if ((StyleOf(window) & WS_CHILD) == 0 && focus != window && !IsChild(window, focus)) {
        SetFocus(window);
    }
}

/// A disabled window does not keep the focus.
void DropFocus(HWND window) {
    if (GetFocus() == window) {
        SetFocus(nullptr);
    }
}

}  // namespace

DWORD StyleOf(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window ? window->style : 0;
}

void ChangeStyle(HWND handle, DWORD bits, bool set) {
    bool before = false;
    SwitchStyle(handle, bits, set, &before);
}

HWND TopWindow(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    while (window && window->IsChild()) {
        handle = window->parent;
        window = desktop->Find(handle);
    }
    return window ? handle : nullptr;
}

std::string TextOf(HWND window) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextA(window, text.data(), static_cast<INT>(text.size()))));
    return text;
}

void NotifyParent(HWND control, WORD code) {
    const auto id = static_cast<WORD>(GetDlgCtrlID(control));
    SendMessageA(GetParent(control), WM_COMMAND, MAKEWPARAM(id, code),
                 reinterpret_cast<LPARAM>(control));
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

BOOL WINAPI IsWindow(HWND window) {
    DesktopLock desktop;
    return desktop->Find(window) != nullptr;
}

BOOL WINAPI IsChild(HWND parent, HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    while (window && window->IsChild()) {
        if (window->parent == parent) {
            return TRUE;
        }
        window = desktop->Find(window->parent);
    }
    return FALSE;
}

HWND WINAPI GetParent(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    if (!window || (window->style & (WS_CHILD | WS_POPUP)) == 0) {
        return nullptr;
    }
    return desktop->Find(window->parent) ? window->parent : nullptr;
}

DWORD WINAPI GetWindowThreadProcessId(HWND handle, LPDWORD processId) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    if (!window) {
        return 0;
    }
    if (processId) {
        *processId = static_cast<DWORD>(getpid());
    }
    return window->queue->thread;
}

HWND WINAPI FindWindowA(LPCSTR className, LPCSTR text) {
    return FindWindowExA(nullptr, nullptr, className, text);
}

HWND WINAPI FindWindowExA(HWND parent, HWND after, LPCSTR className, LPCSTR text) {
    const ATOM atom =
        IS_INTRESOURCE(className) ? static_cast<ATOM>(reinterpret_cast<ULONG_PTR>(className)) : 0;
    DesktopLock desktop;
    const Window* parentWindow = desktop->Find(parent);
    if (parent && !parentWindow) {
        return nullptr;
    }
    const std::vector<HWND>& windows = parentWindow ? parentWindow->children : desktop->topWindows;
    auto next = windows.begin();
    if (after) {
        next = std::ranges::find(windows, after);
        if (next == windows.end()) {
            return nullptr;
        }
        ++next;
    }
    const auto found = std::find_if(next, windows.end(), [&](HWND handle) {
        const Window* window = desktop->Find(handle);
        return window && Fits(*window, className, atom, text);
    });
    return found == windows.end() ? nullptr : *found;
}

INT WINAPI GetWindowTextA(HWND window, LPSTR buffer, INT size) {
    if (size <= 0) {
        return 0;
    }
    buffer[0] = '\0';
    return static_cast<INT>(SendMessageA(window, WM_GETTEXT, static_cast<WPARAM>(size),
                                         reinterpret_cast<LPARAM>(buffer)));
}

INT WINAPI GetWindowTextLengthA(HWND window) {
    return static_cast<INT>(SendMessageA(window, WM_GETTEXTLENGTH, 0, 0));
}

BOOL WINAPI SetWindowTextA(HWND window, LPCSTR text) {
    return SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text)) > 0;
}

BOOL WINAPI EnableWindow(HWND window, BOOL enable) {
    bool wasDisabled = false;
    if (!SwitchStyle(window, WS_DISABLED, !enable, &wasDisabled)) {
        return FALSE;
    }
    if (wasDisabled == (enable != FALSE)) {
        if (!enable) {
            DropFocus(window);
        }
        SendMessageA(window, WM_ENABLE, enable ? TRUE : FALSE, 0);
        TellChanged(window);
    }
    return wasDisabled;
}

BOOL WINAPI IsWindowEnabled(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window && IsNotDisabled(*window);
}

BOOL WINAPI ShowWindow(HWND window, INT command) {
    const bool show = command != SW_HIDE;
    bool wasVisible = false;
    if (!SwitchStyle(window, WS_VISIBLE, show, &wasVisible)) {
        return FALSE;
    }
    if (wasVisible != show) {
        SendMessageA(window, WM_SHOWWINDOW, show, 0);
        if (show) {
            TellFirstSize(window);
        }
        TellChanged(window);
        if (show && command != SW_SHOWNOACTIVATE && command != SW_SHOWNA) {
            TakeFocusIn(window);
        }
    }
    return wasVisible;
}

BOOL WINAPI IsWindowVisible(HWND window) {
    DesktopLock desktop;
    return AllTheWayUp(desktop, window, IsShown);
}

HWND WINAPI SetFocus(HWND handle) {
    const std::shared_ptr<MessageQueue> own = CurrentQueue();
    HWND before = nullptr;
    {
        DesktopLock desktop;
        if (handle &&
            (!AllTheWayUp(desktop, handle, IsNotDisabled) || desktop->Find(handle)->queue != own)) {
            return nullptr;
        }
        before = own->focus;
        own->focus = handle;
    }
    if (before == handle) {
        return before;
    }
    SendMessageA(before, WM_KILLFOCUS, reinterpret_cast<WPARAM>(handle), 0);
    TellChanged(before);
    if (handle && GetFocus() == handle) {
        SendMessageA(handle, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
        TellChanged(handle);
    }
    return before;
}

HWND WINAPI GetFocus(void) {
    MessageQueue& queue = *CurrentQueue();
    DesktopLock desktop;
    return queue.focus;
}

HWND WINAPI SetCapture(HWND handle) {
    const std::shared_ptr<MessageQueue> own = CurrentQueue();
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    const bool isOwn = window && window->queue == own;
    return isOwn ? std::exchange(own->capture, handle) : nullptr;
}

BOOL WINAPI ReleaseCapture(void) {
    MessageQueue& queue = *CurrentQueue();
    DesktopLock desktop;
    queue.capture = nullptr;
    return TRUE;
}

HWND WINAPI GetCapture(void) {
    MessageQueue& queue = *CurrentQueue();
    DesktopLock desktop;
    return queue.capture;
}

INT WINAPI GetDlgCtrlID(HWND control) {
    DesktopLock desktop;
    const Window* window = desktop->Find(control);
    return window ? static_cast<INT>(window->id) : 0;
}
}
