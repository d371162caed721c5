#pragma once
// What menus are, and the state of one that is being worked.

#include "quennet_canvas.h"
#include "windows.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace quennet::user {

struct MenuEntry {
    UINT state = 0;  // MF_ bits
    UINT id = 0;
    HMENU popup = nullptr;  // what it opens
    std::string text;

    bool IsSeparator() const { return (state & MF_SEPARATOR) != 0; }
    bool IsEnabled() const { return (state & (MF_GRAYED | MF_DISABLED)) == 0; }
    /// What stands in front of the tab, and behind it.
    std::string_view Label() const;
    std::string_view Shortcut() const;
};

using MenuEntries = std::vector<MenuEntry>;

/// All menus, by number. Guarded by the desktop's lock; no menu hangs on itself.
class Menus {
  public:
    HMENU Add();
    /// Null when there is no such menu.
    MenuEntries* Find(HMENU menu);
    /// With all that hang on it.
    void Remove(HMENU menu);
    /// Is `wanted` the menu, or does it hang on it?
    bool Reaches(HMENU menu, HMENU wanted);
    std::size_t Count() const { return menus_.size(); }
    /// The entry by number or position (MF_BYCOMMAND, MF_BYPOSITION) and the menu that has it.
    struct Place {
        MenuEntries* menu = nullptr;
        MenuEntry* entry = nullptr;
    };
    Place FindEntry(HMENU menu, UINT item, UINT flags);

  private:
    std::unordered_map<HMENU, MenuEntries> menus_;
    std::uint32_t lastNumber_ = 0;
};

/// A copy, empty when the menu is gone.
MenuEntries EntriesOf(HMENU menu);

/// One of the menus that are open: the bar, then popups.
struct MenuLevel {
    HMENU menu = nullptr;
    int selected = -1;
    int first = 0;  // entry in sight
    Area area;      // as last drawn, from the left end of the bar; with the frame
};

/// Touched by the window's thread alone.
struct MenuTracking {
    std::vector<MenuLevel> levels;
    bool ended = false;
    UINT chosen = 0;
};

/// What is being worked of the window's menus, null when nothing is.
std::shared_ptr<MenuTracking> TrackingOf(HWND window);

/// Where the entries of a bar stand: columns, with a space at each side.
std::vector<Area> BarAreas(const MenuEntries& bar);

/// A key, click or command that leads to the menu of the window's top window. False when the
/// message is none of these.
bool HandleMenuMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

}  // namespace quennet::user
