// Windows of the module that are no dialogs: where they stand, their menu, tool bar, status bar and
// font, and the keys that lead through them.

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <string>

#include "hostkit/memory.h"
#include "hostkit/service_help.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

using namespace quennet;

struct Placement {
    const char* key;
    i32 standard;
    i32 least;  // a stored value is brought to what lies between
    i32 most;
};
// Pixels. The standard is what a terminal of 80 columns and 24 lines has room for, with a frame.
constexpr Placement placements[] = {{"X", 8, 0, 10'000},
                                    {"Y", 32, 0, 10'000},
                                    {"Width", 624, 160, 20'000},
                                    {"Height", 336, 96, 20'000}};

constexpr int deepestMenu = 8;
constexpr UINT entryFlags = MF_GRAYED | MF_DISABLED | MF_CHECKED | MFT_RADIOCHECK;

constexpr char busyMark[] = " *";

constexpr char fontName[] = "Sans";
constexpr i32 pixelsOfAnInch = 96;
constexpr i32 pointsOfAnInch = 72;
constexpr LONG ordinaryWeight = 400;

std::optional<i32> ReadNumber(const std::optional<std::string>& text) {
    i32 number = 0;
    if (!text) {
        return std::nullopt;
    }
    const char* end = text->data() + text->size();
    const auto [rest, error] = std::from_chars(text->data(), end, number);
    return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

const char* TextOrNone(u32 id) {
    const char* text = TextOfId(id);
    return text != nullptr ? text : "";
}

/// Null when a menu can't be made. What is too deep is left out.
HMENU MakeMenu(const MenuRow* rows, bool isBar, int depth) {
    const HMENU menu = isBar ? CreateMenu() : CreatePopupMenu();
    if (menu == nullptr || depth > deepestMenu) {
        return menu;
    }
    for (const MenuRow* row = rows; row->id != 0; ++row) {
        const char* text = TextOrNone(row->id);
        if ((row->flags & MF_SEPARATOR) != 0) {
            AppendMenuA(menu, MF_SEPARATOR, 0, nullptr);
        } else if (row->entries == 0) {
            AppendMenuA(menu, MF_STRING | (row->flags & entryFlags), row->id, text);
        } else if (const HMENU popup =
                       MakeMenu(PointerFromWord<const MenuRow>(row->entries), false, depth + 1)) {
            AppendMenuA(menu, MF_POPUP | (row->flags & entryFlags),
                        reinterpret_cast<UINT_PTR>(popup), text);
        }
    }
    return menu;
}

extern "C" {

static void LoadPlacement(const char* file, const char* name, i32* x, i32* y, i32* width,
                          i32* height, u32* word) {
    i32* const results[] = {x, y, width, height};
    for (std::size_t i = 0; i < std::size(placements); ++i) {
        *results[i] = placements[i].standard;
    }
    *word = 0;
    for (std::size_t i = 0; i < std::size(placements); ++i) {
        const Placement& each = placements[i];
        if (const auto stored = ReadNumber(StoreOf(file)->Read(name, each.key))) {
            *results[i] = std::clamp(*stored, each.least, each.most);
        }
    }
}

static void SavePlacement(HWND window, const char*, const char* name) {
    RECT place;
    if (GetWindowRect(window, &place) == FALSE) {
        return;
    }
    const i32 values[] = {place.left, place.top, place.right - place.left,
                          place.bottom - place.top};
    KeepForWindow([&](SettingsStore& store) {
        for (std::size_t i = 0; i < std::size(placements); ++i) {
            store.Write(name, placements[i].key, std::to_string(values[i]));
        }
    });
}

static void MenuInit(HWND window, const MenuRow* rows) {
    const HMENU menu = MakeMenu(rows, true, 0);
    const HMENU before = GetMenu(window);
    if (menu == nullptr || SetMenu(window, menu) == FALSE) {
        DestroyMenu(menu);
        return;
    }
    if (before != nullptr) {
        DestroyMenu(before);
    }
}

/// The caller shows it. Its tips are asked for with TTN_GETDISPINFOA.
static HWND CreateToolbar(HWND window, HINSTANCE instance, const void* buttons, u32 style, u32 id,
                          u32, u32, u32 count, u32 bitmaps) {
    const HWND bar = CreateWindowExA(
        0, TOOLBARCLASSNAMEA, "", WS_CHILD | TBSTYLE_TOOLTIPS | style, 0, 0, 0, 0, window,
        reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), instance, nullptr);
    if (bar == nullptr) {
        return nullptr;
    }
    TBADDBITMAP strip = {instance, id};
    SendMessageA(bar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    SendMessageA(bar, TB_ADDBITMAP, bitmaps, reinterpret_cast<LPARAM>(&strip));
    SendMessageA(bar, TB_ADDBUTTONSA, count, reinterpret_cast<LPARAM>(buttons));
    SendMessageA(bar, TB_AUTOSIZE, 0, 0);
    return bar;
}

static void SetStatusIcon(HWND statusBar, u32 pane, u32 on) {
    SendMessageA(statusBar, SB_SETTEXTA, static_cast<BYTE>(pane),
                 reinterpret_cast<LPARAM>(on != 0 ? busyMark : ""));
}

/// `points` is the height of the letters.
static i32 GetDialogFont(HWND, void* font, u32 points) {
    LOGFONTA face = {};
    face.lfHeight = -static_cast<i32>(points) * pixelsOfAnInch / pointsOfAnInch;
    face.lfWeight = ordinaryWeight;
    AppendBounded(face.lfFaceName, fontName, sizeof(face.lfFaceName));
    std::memcpy(font, &face, sizeof(face));
    return 1;
}

static void MoveControl(HWND control, i32 x, i32 y, i32 width, i32 height) {
    MoveWindow(control, x, y, std::max(width, 0), std::max(height, 0), TRUE);
}

/// Every window is accepted; as long as it is registered, the host's loop lets Tab and marked
/// letters lead through its controls.
static u32 RegisterWindow(HWND window, u32, u32) {
    Host::Current()->GetServices().AddWindow(window);
    return 0;
}

static void UnregisterWindow(HWND window) {
    Host::Current()->GetServices().RemoveWindow(window);
}
}

}  // namespace

void FillWindowServices(ShellServices& shell) {
    Put<ShellLoadPlacementFunction, LoadPlacement>(shell, ShellService::loadPlacement);
    Put<ShellSavePlacementFunction, SavePlacement>(shell, ShellService::savePlacement);
    Put<ShellMenuInitFunction, MenuInit>(shell, ShellService::menuInit);
    Put<ShellCreateToolbarFunction, CreateToolbar>(shell, ShellService::createToolbar);
    Put<ShellSetStatusIconFunction, SetStatusIcon>(shell, ShellService::setStatusIcon);
    Put<ShellGetDialogFontFunction, GetDialogFont>(shell, ShellService::getDialogFont);
    Put<ShellMoveControlFunction, MoveControl>(shell, ShellService::moveControl);
    Put<ShellRegisterWindowFunction, RegisterWindow, 1>(shell, ShellService::registerWindow);
    Put<ShellUnregisterWindowFunction, UnregisterWindow>(shell, ShellService::unregisterWindow);
}

}  // namespace hostkit
