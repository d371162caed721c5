// Handles of fonts, icons and cursors: numbers that stand for what was asked for.

#include "windows.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <tuple>
#include <utility>

namespace quennet::user {

namespace {

// None of these numbers is a window's.
constexpr std::uintptr_t firstFont = 0x80000001;
constexpr std::uintptr_t firstImage = 0xC0000001;

using ImageName = std::tuple<HINSTANCE, UINT, ULONG_PTR>;

struct Resources {
    std::mutex mutex;
    std::map<HGDIOBJ, LOGFONTA> fonts;
    std::uintptr_t nextFont = firstFont;
    std::map<ImageName, HANDLE> images;
};

/// Never destroyed: threads may still run when the process ends.
Resources& Shared() {
    static Resources& resources = *new Resources;
    return resources;
}

HANDLE ImageOf(HINSTANCE instance, UINT type, LPCSTR name) {
    if (!name || !IS_INTRESOURCE(name)) {
        return nullptr;
    }
    Resources& resources = Shared();
    const std::lock_guard lock(resources.mutex);
    const auto next = reinterpret_cast<HANDLE>(firstImage + resources.images.size());
    return resources.images.try_emplace({instance, type, reinterpret_cast<ULONG_PTR>(name)}, next)
        .first->second;
}

}  // namespace

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

HFONT WINAPI CreateFontIndirectA(const LOGFONTA* font) {
    if (!font) {
        return nullptr;
    }
    Resources& resources = Shared();
    const std::lock_guard lock(resources.mutex);
    const auto handle = reinterpret_cast<HFONT>(resources.nextFont++);
    resources.fonts[handle] = *font;
    return handle;
}

INT WINAPI GetObjectA(HANDLE object, INT size, LPVOID buffer) {
    Resources& resources = Shared();
    const std::lock_guard lock(resources.mutex);
    const auto font = resources.fonts.find(object);
    if (font == resources.fonts.end() || size < 0) {
        return 0;
    }
    if (!buffer) {
        return sizeof(LOGFONTA);
    }
    const INT copied = std::min<INT>(size, sizeof(LOGFONTA));
    std::memcpy(buffer, &font->second, static_cast<std::size_t>(copied));
    return copied;
}

BOOL WINAPI DeleteObject(HGDIOBJ object) {
    Resources& resources = Shared();
    const std::lock_guard lock(resources.mutex);
    return resources.fonts.erase(object) != 0;
}

HANDLE WINAPI LoadImageA(HINSTANCE instance, LPCSTR name, UINT type, INT, INT, UINT) {
    return type == IMAGE_ICON || type == IMAGE_CURSOR ? ImageOf(instance, type, name) : nullptr;
}

HICON WINAPI LoadIconA(HINSTANCE instance, LPCSTR name) {
    return static_cast<HICON>(ImageOf(instance, IMAGE_ICON, name));
}

HCURSOR WINAPI LoadCursorA(HINSTANCE instance, LPCSTR name) {
    return static_cast<HCURSOR>(ImageOf(instance, IMAGE_CURSOR, name));
}

HCURSOR WINAPI SetCursor(HCURSOR cursor) {
    thread_local HCURSOR current = nullptr;
    return std::exchange(current, cursor);
}
}
