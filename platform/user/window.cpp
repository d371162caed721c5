// The life of a window, and what it does with a message that nobody else handles.

#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"
#include "user/messages.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace quennet::user {

namespace {

bool IsOwn(const Window& window, const std::shared_ptr<MessageQueue>& own) {
    return window.queue == own;
}

/// What is left to the system is the corner, and the size of a usual terminal.
RECT PlaceFor(const CREATESTRUCTA& create) {
    const bool anywhere = create.x == CW_USEDEFAULT;
    const bool anySize = create.cx == CW_USEDEFAULT;
    const INT x = anywhere ? 0 : create.x;
    const INT y = anywhere ? 0 : create.y;
    return {x, y, x + (anySize ? 640 : create.cx), y + (anySize ? 384 : create.cy)};
}

std::unique_ptr<Window> NewWindow(const CREATESTRUCTA& create,
                                  std::shared_ptr<const WindowClass> windowClass) {
    auto window = std::make_unique<Window>();
    window->queue = CurrentQueue();
    window->procedure = windowClass->record.lpfnWndProc;
    window->extra.resize(static_cast<std::size_t>(windowClass->record.cbWndExtra));
    window->windowClass = std::move(windowClass);
    window->instance = create.hInstance;
    window->parent = create.hwndParent;
    // Visible only when it is made.
    window->style = static_cast<DWORD>(create.style) & ~DWORD{WS_VISIBLE};
    window->extendedStyle = create.dwExStyle;
    window->place = PlaceFor(create);
    if (window->IsChild()) {
        window->id = reinterpret_cast<LONG_PTR>(create.hMenu);
    } else {
        window->menu = create.hMenu;
    }
    return window;
}

/// Null for an unknown class, a parent that is none, or a child without one.
HWND AddWindow(const CREATESTRUCTA& create) {
    CurrentQueue();
    auto windowClass = [&] {
        DesktopLock desktop;
        return desktop->FindClass(create.hInstance, create.lpszClass);
    }();
    const bool child = (create.style & WS_CHILD) != 0;
    if (!windowClass || (child && !create.hwndParent)) {
        return nullptr;
    }
    auto window = NewWindow(create, std::move(windowClass));
    DesktopLock desktop;
    if (create.hwndParent && !desktop->Find(create.hwndParent)) {
        return nullptr;
    }
    return desktop->Add(std::move(window));
}

void RemoveWindow(HWND handle) {
    std::unique_ptr<Window> window;
    {
        DesktopLock desktop;
        window = desktop->Remove(handle);
    }
    if (window) {
        TellDestroyed(handle);
    }
}

/// Children and, for a top window, the windows that it owns.
std::vector<HWND> Dependents(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    if (!window) {
        return {};
    }
    std::vector<HWND> dependents = window->children;
    for (HWND top : desktop->topWindows) {
        const Window* other = desktop->Find(top);
        if (other && other->parent == handle) {
            dependents.push_back(top);
        }
    }
    return dependents;
}

/// Marks a window of the calling thread as ending; false for others, or when it was marked.
bool BeginEnd(HWND handle, const std::shared_ptr<MessageQueue>& own) {
    DesktopLock desktop;
    Window* window = desktop->Find(handle);
    if (!window || !IsOwn(*window, own) || window->ending) {
        return false;
    }
    window->ending = true;
    return true;
}

/// The first dependent that is wanted; needs no memory. `wanted` gets its record.
template <typename Wanted>
HWND FindDependent(HWND handle, Wanted wanted) {
    DesktopLock desktop;
    const auto isWanted = [&](HWND dependent) {
        const Window* record = desktop->Find(dependent);
        return record && record->parent == handle && wanted(*record);
    };
    if (const Window* window = desktop->Find(handle)) {
        const auto child = std::ranges::find_if(window->children, isWanted);
        if (child != window->children.end()) {
            return *child;
        }
    }
    const auto owned = std::ranges::find_if(desktop->topWindows, isWanted);
    return owned != desktop->topWindows.end() ? *owned : nullptr;
}

/// First pass of the end: everybody is told while the whole tree still exists.
void TellEnd(HWND handle, const std::shared_ptr<MessageQueue>& own) {
    SendMessageA(handle, WM_DESTROY, 0, 0);
    const auto goesOn = [&](const Window& window) { return IsOwn(window, own) && !window.ending; };
    while (HWND dependent = FindDependent(handle, goesOn)) {
        if (BeginEnd(dependent, own)) {
            TellEnd(dependent, own);
        }
    }
}

/// Second pass: the tree goes, its leaves first.
void FinishEnd(HWND handle, const std::shared_ptr<MessageQueue>& own) {
    const auto livesHere = [&](const Window& window) { return IsOwn(window, own); };
    while (HWND dependent = FindDependent(handle, livesHere)) {
        FinishEnd(dependent, own);
    }
    try {
        for (HWND dependent : Dependents(handle)) {
            DestroyOnItsThread(dependent);
        }
    } catch (const std::bad_alloc&) {
        // Those of other threads stay, without their owner.
    }
    SendMessageA(handle, WM_NCDESTROY, 0, 0);
    RemoveWindow(handle);
}

void SetText(HWND handle, const char* text) {
    std::string next = text ? text : "";
    DesktopLock desktop;
    if (Window* window = desktop->Find(handle)) {
        window->text.swap(next);
    }
}

LRESULT TextOf(HWND handle, char* buffer, std::size_t size) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window ? CopyText(window->text.data(), window->text.size(), buffer, size) : 0;
}

LRESULT TextLengthOf(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window ? static_cast<LRESULT>(window->text.size()) : 0;
}

void SetFont(HWND handle, HFONT font) {
    DesktopLock desktop;
    if (Window* window = desktop->Find(handle)) {
        window->font = font;
    }
}

HFONT FontOf(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window ? window->font : nullptr;
}

/// Alt-F4 is for the top window, wherever in it the focus is.
void HandleClosing(HWND window, UINT message, WPARAM wParam) {
    if (message == WM_SYSKEYDOWN && wParam == VK_F4) {
        PostMessageA(TopWindow(window), WM_SYSCOMMAND, SC_CLOSE, 0);
    } else if (message == WM_SYSCOMMAND && (wParam & 0xFFF0) == SC_CLOSE) {
        SendMessageA(window, WM_CLOSE, 0, 0);
    }
}

}  // namespace

LRESULT CopyText(const char* text, std::size_t length, char* buffer, std::size_t size) {
    if (size == 0 || !buffer) {
        return 0;
    }
    const std::size_t copied = std::min(length, size - 1);
    std::memcpy(buffer, text, copied);
    buffer[copied] = '\0';
    return static_cast<LRESULT>(copied);
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

HWND WINAPI CreateWindowExA(DWORD extendedStyle, LPCSTR className, LPCSTR text, DWORD style, INT x,
                            INT y, INT width, INT height, HWND parent, HMENU menuOrId,
                            HINSTANCE instance, LPVOID parameter) try {
    const CREATESTRUCTA create = {
        parameter, instance,  menuOrId,     parent, height, width, y, x, static_cast<LONG>(style),
        text,      className, extendedStyle};
    const HWND handle = AddWindow(create);
    if (!handle) {
        return nullptr;
    }
    TellCreated(handle);
    const auto argument = reinterpret_cast<LPARAM>(&create);
    if (SendMessageA(handle, WM_NCCREATE, 0, argument) == 0) {
        RemoveWindow(handle);
        return nullptr;
    }
    if (SendMessageA(handle, WM_CREATE, 0, argument) == -1) {
        DestroyWindow(handle);
        return nullptr;
    }
    if ((style & (WS_CHILD | WS_POPUP)) != 0) {
        TellFirstSize(handle);
    }
    if ((style & WS_VISIBLE) != 0) {
        ShowWindow(handle, SW_SHOW);
    }
    return IsWindow(handle) ? handle : nullptr;
} catch (const std::bad_alloc&) {
    return nullptr;
}

BOOL WINAPI DestroyWindow(HWND window) try {
    const std::shared_ptr<MessageQueue> own = CurrentQueue();
    if (!BeginEnd(window, own)) {
        return FALSE;
    }
    TellEnd(window, own);
    FinishEnd(window, own);
    return TRUE;
} catch (const std::bad_alloc&) {
    return FALSE;
}

LRESULT WINAPI DefWindowProcA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_NCCREATE:
            SetText(window, reinterpret_cast<const CREATESTRUCTA*>(lParam)->lpszName);
            return TRUE;
        case WM_CLOSE:
            DestroyWindow(window);
            return 0;
        case WM_SETFONT:
            SetFont(window, reinterpret_cast<HFONT>(wParam));
            return 0;
        case WM_GETFONT:
            return reinterpret_cast<LRESULT>(FontOf(window));
        case WM_SETTEXT:
            SetText(window, reinterpret_cast<const char*>(lParam));
            TellChanged(window);
            return TRUE;
        case WM_GETTEXT:
            return TextOf(window, reinterpret_cast<char*>(lParam), wParam);
        case WM_GETTEXTLENGTH:
            return TextLengthOf(window);
        default:
            HandleClosing(window, message, wParam);
            HandleMenuMessage(window, message, wParam, lParam);
            return 0;
    }
}
}
