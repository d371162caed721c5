// Where the rows of a list view stand, and which ones are in sight.

#include "user/list_view.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr int smallItemWidth = 26;
constexpr int iconWidth = 19;
constexpr int iconHeight = 3;  // two lines of text and one between

int Lines(int count, int perLine) {
    return (count + perLine - 1) / perLine;
}

int WidthInList(const ListViewState& list, int width) {
    const int wanted =
        list.itemWidth > 0 ? (list.itemWidth + cellWidth - 1) / cellWidth : smallItemWidth;
    return std::clamp(wanted, 1, width);
}

void Arrange(ListLayout& layout, const ListViewState& list) {
    layout.itemHeight = 1;
    switch (layout.view) {
        case LVS_REPORT:
            layout.itemWidth = layout.width;
            layout.perLine = 1;
            layout.lines = layout.height;
            break;
        case LVS_LIST:
            layout.itemWidth = WidthInList(list, layout.width);
            layout.perLine = layout.height;
            layout.lines = std::max(1, layout.width / layout.itemWidth);
            break;
        default: {
            const bool large = layout.view == LVS_ICON;
            layout.itemWidth = std::min(large ? iconWidth : smallItemWidth, layout.width);
            layout.itemHeight = large ? std::min(iconHeight, layout.height) : 1;
            layout.perLine = std::max(1, layout.width / layout.itemWidth);
            layout.lines = std::max(1, layout.height / layout.itemHeight);
            break;
        }
    }
    layout.linesOfList = Lines(list.count, layout.perLine);
}

}  // namespace

Area ListLayout::AreaOf(int row) const {
    const int line = LineOf(row) - topLine;
    const int place = row % perLine;
    const bool down = view == LVS_LIST;
    return {(down ? line : place) * itemWidth, (down ? place : line) * itemHeight, itemWidth,
            itemHeight};
}

ListLayout LayoutOf(HWND window, const ListViewState& list, int width, int height) {
    const DWORD style = StyleOf(window);
    ListLayout layout;
    layout.view = style & LVS_TYPEMASK;
    layout.titles = layout.view == LVS_REPORT && (style & LVS_NOCOLUMNHEADER) == 0 ? 1 : 0;
    layout.width = width;
    layout.height = std::max(1, height - layout.titles);
    Arrange(layout, list);
    if (layout.linesOfList > layout.lines && width > 1) {
        layout.hasBar = true;
        --layout.width;
        Arrange(layout, list);
    }
    layout.topLine =
        std::clamp(layout.LineOf(list.top), 0, std::max(0, layout.linesOfList - layout.lines));
    return layout;
}

ListLayout LayoutOf(HWND window, const ListViewState& list) {
    const Area area = CellsOf(window);
    return LayoutOf(window, list, area.width, area.height);
}

void ScrollToLine(ListViewState& list, const ListLayout& layout, int line) {
    line = std::clamp(line, 0, std::max(0, layout.linesOfList - layout.lines));
    list.top = line * layout.perLine;
}

void BringIntoSight(HWND window, ListViewState& list, INT row) {
    const ListLayout layout = LayoutOf(window, list);
    const int line = layout.LineOf(row);
    ScrollToLine(list, layout, std::max(line - layout.lines + 1, std::min(layout.topLine, line)));
}

}  // namespace quennet::user
