#include "find/find_layout.h"

#include "find/find_controls.h"

namespace quennet {

FindLayout PlaceFindControls(i32 top, i32 width, i32 height, i32 itemHeight) {
    constexpr i32 usualItemHeight = 14;
    const i32 item = itemHeight != 0 ? itemHeight : usualItemHeight;
    const i32 row = item + 2;
    const i32 half = width / 2;
    const i32 label = 6 * row;
    const i32 line2 = top + 2 * item + 7;
    const i32 line3 = top + 3 * item + 7;
    const i32 line4 = top + 4 * item + 7;
    const i32 belowAll = 6 * item + 7;
    return {{
                {findMaskLabel, 7, top + 10, label, row},
                {findMaskBox, label + 7, top + 7, width - label - 12, 8 * row},
                {findRecurseBox, 10, line2, half - 12, row},
                {findUseFilterBox, half, line3, half - 12 - row, row},
                {findFilterButton, width - row - 9, line3 - 4, row + 4, row + 6},
                {findLongListBox, 10, line4, half - 12, row},
                {findList, 0, top + belowAll, width, height - belowAll},
            },
            14 * row,
            top + 15 * item + 9};
}

}  // namespace quennet
