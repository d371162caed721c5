// How the menu bar and its open popups look.

#include "user/desktop.h"
#include "user/menu.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr int marginLeft = 3;   // frame, mark, space
constexpr int marginRight = 3;  // space, arrow, frame
constexpr int shortcutGap = 2;

int LabelColumns(const MenuEntry& entry) {
    return ColumnsOf(WithoutMarks(entry.Label()));
}

int WidthOf(const MenuEntries& entries) {
    int labels = 0;
    int shortcuts = 0;
    for (const MenuEntry& entry : entries) {
        labels = std::max(labels, LabelColumns(entry));
        const int columns = ColumnsOf(entry.Shortcut());
        shortcuts = std::max(shortcuts, columns > 0 ? columns + shortcutGap : 0);
    }
    return marginLeft + labels + shortcuts + marginRight;
}

/// Where a popup goes: below its entry of the bar, or beside the popup that it hangs on, as far as
/// there is room.
Area PlaceOf(const std::vector<MenuLevel>& levels, std::size_t depth, const MenuEntries& entries,
             const Canvas& canvas) {
    const MenuLevel& parent = levels[depth - 1];
    Area area = {0, 1, WidthOf(entries), static_cast<int>(entries.size()) + 2};
    const auto place = static_cast<std::size_t>(std::max(0, parent.selected));
    if (depth == 1) {
        const std::vector<Area> bar = BarAreas(EntriesOf(parent.menu));
        area.left = place < bar.size() ? bar[place].left : 0;
    } else {
        area.left = parent.area.Right() - 1;
        area.top = parent.area.top + parent.selected - parent.first;
        if (area.Right() > canvas.Width() && parent.area.left - area.width + 1 >= 0) {
            area.left = parent.area.left - area.width + 1;
        }
    }
    area.height = std::clamp(area.height, 3, std::max(3, canvas.Height() - 1));
    area.left = std::max(0, std::min(area.left, canvas.Width() - area.width));
    area.top = std::max(1, std::min(area.top, canvas.Height() - area.height));
    return area;
}

char32_t MarkOf(const MenuEntry& entry) {
    if ((entry.state & MF_CHECKED) == 0) {
        return U' ';
    }
    return (entry.state & MFT_RADIOCHECK) != 0 ? U'•' : U'√';
}

void DrawEntry(const MenuEntry& entry, bool selected, const Area& row, Canvas& canvas) {
    if (entry.IsSeparator()) {
        canvas.Fill(row, U'─', Ink::menu);
        canvas.Put(row.left, row.top, U'├', Ink::menu);
        canvas.Put(row.Right() - 1, row.top, U'┤', Ink::menu);
        return;
    }
    const Area inside = {row.left + 1, row.top, row.width - 2, 1};
    const Ink ink = selected ? Ink::menuSelection : entry.IsEnabled() ? Ink::menu : Ink::disabled;
    canvas.Fill(inside, U' ', ink);
    canvas.Put(inside.left, row.top, MarkOf(entry), ink);
    const int end = row.Right() - 1;
    canvas.MarkedText(row.left + marginLeft, row.top, entry.Label(), ink,
                      ink == Ink::menu ? Ink::menuMark : ink, end);
    const std::string_view shortcut = entry.Shortcut();
    canvas.Text(row.Right() - marginRight - ColumnsOf(shortcut), row.top, shortcut, ink, end);
    if (entry.popup) {
        canvas.Put(end - 1, row.top, U'►', ink);
    }
}

void DrawPopup(MenuLevel& level, const MenuEntries& entries, Canvas& canvas) {
    const int rows = level.area.height - 2;
    const int last = std::max(0, static_cast<int>(entries.size()) - rows);
    const int wanted = std::max(0, level.selected);
    level.first = std::clamp(level.first, std::max(0, wanted - rows + 1), wanted);
    level.first = std::min(level.first, last);
    canvas.Fill(level.area, U' ', Ink::menu);
    canvas.Frame(level.area, Ink::menu);
    for (int row = 0; row < rows && level.first + row < static_cast<int>(entries.size()); ++row) {
        const int place = level.first + row;
        DrawEntry(entries[static_cast<std::size_t>(place)], place == level.selected,
                  {level.area.left, level.area.top + 1 + row, level.area.width, 1}, canvas);
    }
    canvas.ScrollBar(level.area.Right() - 1, level.area.top + 1, rows,
                     static_cast<long>(entries.size()), level.first);
}

}  // namespace

std::vector<Area> BarAreas(const MenuEntries& bar) {
    std::vector<Area> areas;
    int left = 1;
    for (const MenuEntry& entry : bar) {
        const int width = entry.IsSeparator() ? 0 : LabelColumns(entry) + 2;
        areas.push_back({left, 0, width, 1});
        left += width;
    }
    return areas;
}

}  // namespace quennet::user

namespace quennet {

using namespace user;

bool HasMenuBar(HWND window) {
    return GetMenu(window) != nullptr;
}

void DrawMenuRow(HWND window, Canvas& canvas) {
    const MenuEntries bar = EntriesOf(GetMenu(window));
    const std::vector<Area> areas = BarAreas(bar);
    const auto tracking = TrackingOf(window);
    const int selected = tracking ? tracking->levels.front().selected : -1;
    canvas.Fill({0, 0, canvas.Width(), 1}, U' ', Ink::menu);
    for (std::size_t place = 0; place < bar.size(); ++place) {
        const bool isSelected = static_cast<int>(place) == selected;
        const Ink ink = isSelected               ? Ink::menuSelection
                        : bar[place].IsEnabled() ? Ink::menu
                                                 : Ink::disabled;
        canvas.Fill(areas[place], U' ', ink);
        canvas.MarkedText(areas[place].left + 1, 0, bar[place].Label(), ink,
                          ink == Ink::menu ? Ink::menuMark : ink, canvas.Width());
        if (isSelected) {
            tracking->levels.front().area = areas[place];
        }
    }
}

Area DrawOpenMenus(HWND window, Canvas& canvas) {
    const auto tracking = TrackingOf(window);
    if (!tracking) {
        return {};
    }
    for (std::size_t depth = 1; depth < tracking->levels.size(); ++depth) {
        MenuLevel& level = tracking->levels[depth];
        const MenuEntries entries = EntriesOf(level.menu);
        level.area = PlaceOf(tracking->levels, depth, entries, canvas);
        DrawPopup(level, entries, canvas);
    }
    const MenuLevel& deepest = tracking->levels.back();
    const int row = std::max(0, deepest.selected - deepest.first);
    const bool onBar = tracking->levels.size() == 1;
    canvas.Caret(deepest.area.left + 1, onBar ? 0 : deepest.area.top + 1 + row);
    return deepest.area;
}

}  // namespace quennet
