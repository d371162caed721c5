// Which character cells a window takes.

#include "quennet_canvas.h"

#include <algorithm>

namespace quennet {

namespace {

int CellsUp(LONG pixels, int cell) {
    return static_cast<int>(pixels + cell - 1) / cell;
}

HWND TopOf(HWND window) {
    while ((GetWindowLongA(window, GWL_STYLE) & WS_CHILD) != 0) {
        window = GetParent(window);
    }
    return window;
}

}  // namespace

Area CellsOf(HWND window) {
    RECT origin = {};
    RECT place = {};
    GetWindowRect(TopOf(window), &origin);
    GetWindowRect(window, &place);
    const int left = static_cast<int>(place.left - origin.left) / cellWidth;
    const int upper = static_cast<int>(place.top - origin.top) / cellHeight;
    const int right = CellsUp(place.right - origin.left, cellWidth);
    const int lower = static_cast<int>(place.bottom - origin.top) / cellHeight;
    return {left, upper, std::max(1, right - left), std::max(1, lower - upper)};
}

}  // namespace quennet
