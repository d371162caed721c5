// Window classes.

#include "user/desktop.h"

#include <new>

using namespace quennet::user;

extern "C" {

ATOM WINAPI RegisterClassExA(const WNDCLASSEXA* record) try {
    if (!record || record->cbSize != sizeof(WNDCLASSEXA) || !record->lpfnWndProc ||
        IS_INTRESOURCE(record->lpszClassName) || record->cbWndExtra < 0) {
        return 0;
    }
    DesktopLock desktop;
    const auto known = desktop->FindClass(record->hInstance, record->lpszClassName);
    if (known && !known->ofSystem && known->record.hInstance == record->hInstance) {
        return 0;
    }
    return desktop->AddClass(*record, false);
} catch (const std::bad_alloc&) {
    return 0;
}

BOOL WINAPI GetClassInfoExA(HINSTANCE instance, LPCSTR name, WNDCLASSEXA* record) {
    DesktopLock desktop;
    const auto windowClass = desktop->FindClass(instance, name);
    if (!windowClass) {
        return FALSE;
    }
    const UINT size = record->cbSize;
    *record = windowClass->record;
    record->cbSize = size;
    record->lpszClassName = name;
    return TRUE;
}

BOOL WINAPI UnregisterClassA(LPCSTR name, HINSTANCE instance) {
    DesktopLock desktop;
    const auto windowClass = desktop->FindClass(instance, name);
    if (!windowClass || windowClass->ofSystem || desktop->HasWindowOf(*windowClass)) {
        return FALSE;
    }
    desktop->RemoveClass(*windowClass);
    return TRUE;
}

INT WINAPI GetClassNameA(HWND handle, LPSTR buffer, INT size) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    if (!window || size <= 0) {
        return 0;
    }
    const std::string& name = window->windowClass->name;
    const std::size_t length = name.copy(buffer, static_cast<std::size_t>(size) - 1);
    buffer[length] = '\0';
    return static_cast<INT>(length);
}
}
