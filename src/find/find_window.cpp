#include "find/find_window.h"

#include <cstring>

#include "control/message_wait.h"
#include "find/find_controls.h"
#include "find/find_procedure.h"
#include "find/find_worker.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr u16 iconId = 9;

bool RegisterFindClass(HINSTANCE instance) {
    constexpr int smallIcon = 16;
    WNDCLASSEXA windowClass{};
    windowClass.cbSize = sizeof windowClass;
    if (GetClassInfoExA(instance, findName, &windowClass)) {
        return true;
    }
    windowClass = WNDCLASSEXA{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.style = CS_DBLCLKS;
    windowClass.lpfnWndProc = FindWindowProc;
    windowClass.cbWndExtra = 4;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconA(instance, MAKEINTRESOURCEA(iconId));
    windowClass.hIconSm = static_cast<HICON>(static_cast<void*>(
        LoadImageA(instance, MAKEINTRESOURCEA(iconId), IMAGE_ICON, smallIcon, smallIcon, 0)));
    windowClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
    windowClass.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<UINT_PTR>(COLOR_BTNFACE + 1));
    windowClass.lpszClassName = findName;
    return RegisterClassExA(&windowClass) != 0;
}

/// The filter record is told what this window can do with it.
void PrepareFilter(void* filter) {
    constexpr std::size_t wordOffset = 2;
    constexpr u16 keptBits = 0x10;
    constexpr u16 ownBit = 0x8000;
    if (filter == nullptr) {
        return;
    }
    char* place = static_cast<char*>(filter) + wordOffset;
    u16 word = 0;
    std::memcpy(&word, place, sizeof word);
    word = static_cast<u16>((word & keptBits) | ownBit);
    std::memcpy(place, &word, sizeof word);
}

HWND MakeWindow(FindWindow* find) {
    char settings[pathSize] = "";
    CoreGetProfilePath(settings);
    i32 x = 0;
    i32 y = 0;
    i32 width = 0;
    i32 height = 0;
    u32 unused = 0;
    ShellLoadPlacement(settings, findName, &x, &y, &width, &height, &unused);
    return CreateWindowExA(0, findName, "FTP Find", WS_OVERLAPPEDWINDOW, x, y, width, height,
                           nullptr, nullptr, find->instance, find);
}

void Open(FindWindow* find) {
    const FindWindowUse use(find);
    HWND window = RegisterFindClass(find->instance) ? MakeWindow(find) : nullptr;
    if (window != nullptr && find->window != nullptr) {
        ShowWindow(window, SW_SHOW);
        UpdateWindow(window);
    } else if (find->window == nullptr) {
        find->session = nullptr;
    }
}

/// The window that the session has, null for none.
HWND WindowOf(Session* session) {
    const ListLock lock;
    const auto* find = static_cast<const FindWindow*>(session->findWindow);
    return find != nullptr ? find->window : nullptr;
}

}  // namespace

void OpenFindWindow(HINSTANCE instance, FtpHandle* handle, const char* path, void* filter,
                    FindGoToCallback goTo, FindNotifyCallback notify) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr || session->closing.IsSet()) {
        return;
    }
    HWND window = WindowOf(session);
    if (window != nullptr) {
        ShellSetForeground(window);
        return;
    }
    const char* start = path[0] != 0 && path[1] == ':' ? path + 2 : path;
    void* block = CoreAlloc(sizeof(FindWindow));
    auto* find = static_cast<FindWindow*>(block);
    if (find == nullptr) {
        return;
    }
    if (!StoreText(find->startPath, findPathSize, start)) {
        CoreFree(&block);
        return;
    }
    find->instance = instance;
    find->session = session;
    find->filter = filter;
    find->goTo = goTo;
    find->notify = notify;
    find->options = ShellOptionWord();
    PrepareFilter(filter);
    Open(find);
}

void PressFindRun(Session* session, u32 waited) {
    const ListLock lock;
    auto* find = static_cast<FindWindow*>(session->findWindow);
    if (find != nullptr && HasWorker(find)) {
        PressWorker(find, waited);
    }
}

void CloseFindWindow(Session* session) {
    constexpr u32 pauseMilliseconds = 100;
    HWND window = WindowOf(session);
    if (window == nullptr || !IsWindow(window)) {
        return;
    }
    SendMessageA(window, WM_CLOSE, 0, 0);
    MessageWait wait;
    while (IsWindow(window)) {
        wait.Pause(pauseMilliseconds);
    }
}

}  // namespace quennet
