// Menus as data: what a program builds, asks and changes.

#include "user/menu.h"

#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr UINT noState = UINT32_MAX;
constexpr UINT enabledBits = MF_GRAYED | MF_DISABLED;

BOOL ChangeState(HMENU menu, UINT item, UINT flags, UINT bits) {
    DesktopLock desktop;
    MenuEntry* entry = desktop->menus.FindEntry(menu, item, flags).entry;
    if (!entry) {
        return -1;
    }
    const UINT before = entry->state & bits;
    entry->state = (entry->state & ~bits) | (flags & bits);
    return static_cast<BOOL>(before);
}

}  // namespace

std::string_view MenuEntry::Label() const {
    return std::string_view(text).substr(0, text.find('\t'));
}

std::string_view MenuEntry::Shortcut() const {
    const std::size_t tab = text.find('\t');
    return tab == text.npos ? std::string_view() : std::string_view(text).substr(tab + 1);
}

HMENU Menus::Add() {
    HMENU menu = nullptr;
    do {
        menu = reinterpret_cast<HMENU>(static_cast<std::uintptr_t>(++lastNumber_));
    } while (!menu || menus_.contains(menu));
    menus_[menu] = {};
    return menu;
}

MenuEntries* Menus::Find(HMENU menu) {
    const auto found = menus_.find(menu);
    return found == menus_.end() ? nullptr : &found->second;
}

void Menus::Remove(HMENU menu) {
    const auto node = menus_.extract(menu);
    if (node.empty()) {
        return;
    }
    for (const MenuEntry& entry : node.mapped()) {
        Remove(entry.popup);
    }
}

bool Menus::Reaches(HMENU menu, HMENU wanted) {
    const MenuEntries* entries = Find(menu);
    return menu == wanted || (entries && std::ranges::any_of(*entries, [&](const MenuEntry& entry) {
                                  return entry.popup && Reaches(entry.popup, wanted);
                              }));
}

Menus::Place Menus::FindEntry(HMENU menu, UINT item, UINT flags) {
    MenuEntries* entries = Find(menu);
    if (!entries) {
        return {};
    }
    if ((flags & MF_BYPOSITION) != 0) {
        return item < entries->size() ? Place{entries, &(*entries)[item]} : Place{};
    }
    for (MenuEntry& entry : *entries) {
        if (entry.popup) {
            if (const Place place = FindEntry(entry.popup, item, flags); place.entry) {
                return place;
            }
        } else if (entry.id == item && !entry.IsSeparator()) {
            return {entries, &entry};
        }
    }
    return {};
}

MenuEntries EntriesOf(HMENU menu) {
    DesktopLock desktop;
    const MenuEntries* entries = desktop->menus.Find(menu);
    return entries ? *entries : MenuEntries();
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

HMENU WINAPI CreateMenu(void) {
    DesktopLock desktop;
    return desktop->menus.Add();
}

HMENU WINAPI CreatePopupMenu(void) {
    return CreateMenu();
}

BOOL WINAPI DestroyMenu(HMENU menu) {
    DesktopLock desktop;
    const bool known = desktop->menus.Find(menu) != nullptr;
    desktop->menus.Remove(menu);
    return known;
}

BOOL WINAPI IsMenu(HMENU menu) {
    DesktopLock desktop;
    return desktop->menus.Find(menu) != nullptr;
}

BOOL WINAPI AppendMenuA(HMENU menu, UINT flags, UINT_PTR idOrPopup, LPCSTR text) {
    constexpr UINT kept =
        MF_SEPARATOR | MF_POPUP | MF_GRAYED | MF_DISABLED | MF_CHECKED | MFT_RADIOCHECK;
    MenuEntry entry;
    entry.state = flags & kept;
    entry.text = text && !entry.IsSeparator() ? text : "";
    DesktopLock desktop;
    MenuEntries* entries = desktop->menus.Find(menu);
    if ((flags & MF_POPUP) != 0) {
        entry.popup = reinterpret_cast<HMENU>(idOrPopup);
        if (!desktop->menus.Find(entry.popup) || desktop->menus.Reaches(entry.popup, menu)) {
            return FALSE;
        }
    } else {
        entry.id = static_cast<UINT>(idOrPopup);
    }
    if (!entries) {
        return FALSE;
    }
    entries->push_back(std::move(entry));
    return TRUE;
}

BOOL WINAPI SetMenu(HWND handle, HMENU menu) {
    {
        DesktopLock desktop;
        Window* window = desktop->Find(handle);
        if (!window || window->IsChild() || (menu && !desktop->menus.Find(menu))) {
            return FALSE;
        }
        window->menu = menu;
    }
    TellChanged(handle);
    return TRUE;
}

HMENU WINAPI GetMenu(HWND handle) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window ? window->menu : nullptr;
}

HMENU WINAPI GetSubMenu(HMENU menu, INT position) {
    DesktopLock desktop;
    const MenuEntry* entry =
        desktop->menus.FindEntry(menu, static_cast<UINT>(position), MF_BYPOSITION).entry;
    return entry ? entry->popup : nullptr;
}

INT WINAPI GetMenuItemCount(HMENU menu) {
    DesktopLock desktop;
    const MenuEntries* entries = desktop->menus.Find(menu);
    return entries ? static_cast<INT>(entries->size()) : -1;
}

UINT WINAPI GetMenuItemID(HMENU menu, INT position) {
    DesktopLock desktop;
    const MenuEntry* entry =
        desktop->menus.FindEntry(menu, static_cast<UINT>(position), MF_BYPOSITION).entry;
    return entry && !entry->popup ? entry->id : noState;
}

UINT WINAPI GetMenuState(HMENU menu, UINT item, UINT flags) {
    DesktopLock desktop;
    const MenuEntry* entry = desktop->menus.FindEntry(menu, item, flags).entry;
    if (!entry) {
        return noState;
    }
    const MenuEntries* popup = desktop->menus.Find(entry->popup);
    return popup ? (entry->state & 0xFF) | (static_cast<UINT>(popup->size()) & 0xFF) << 8
                 : entry->state;
}

INT WINAPI GetMenuStringA(HMENU menu, UINT item, LPSTR buffer, INT size, UINT flags) {
    DesktopLock desktop;
    const MenuEntry* entry = desktop->menus.FindEntry(menu, item, flags).entry;
    if (!entry) {
        return 0;
    }
    if (!buffer) {
        return static_cast<INT>(entry->text.size());
    }
    return static_cast<INT>(CopyText(entry->text.data(), entry->text.size(), buffer,
                                     static_cast<std::size_t>(std::max(0, size))));
}

BOOL WINAPI EnableMenuItem(HMENU menu, UINT item, UINT flags) {
    return ChangeState(menu, item, flags, enabledBits);
}

DWORD WINAPI CheckMenuItem(HMENU menu, UINT item, UINT flags) {
    return static_cast<DWORD>(ChangeState(menu, item, flags, MF_CHECKED));
}

BOOL WINAPI CheckMenuRadioItem(HMENU menu, UINT first, UINT last, UINT checked, UINT flags) {
    const bool byPosition = (flags & MF_BYPOSITION) != 0;
    DesktopLock desktop;
    const Menus::Place place = desktop->menus.FindEntry(menu, first, flags);
    bool found = false;
    for (std::size_t position = 0; place.menu && position < place.menu->size(); ++position) {
        MenuEntry& entry = (*place.menu)[position];
        const UINT item = byPosition ? static_cast<UINT>(position) : entry.id;
        if (item < first || item > last || entry.popup || entry.IsSeparator()) {
            continue;
        }
        constexpr UINT bits = MF_CHECKED | MFT_RADIOCHECK;
        entry.state = item == checked ? entry.state | bits : entry.state & ~bits;
        found = found || item == checked;
    }
    return found;
}
}
