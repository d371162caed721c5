#pragma once
// What the drop-down list keeps, for itself and for whoever draws it.

#include "user/controls.h"
#include "user/desktop.h"
#include "user/entries.h"

namespace quennet::user {

/// Height of the line that is always there, in pixels.
constexpr LONG comboLineHeight = 24;

struct ComboBoxState : ControlState {
    Entries entries;
    LRESULT rows = 0;  // of the list, as the window was made
    bool open = false;
    LRESULT selectedBefore = CB_ERR;  // the list was opened
};

/// Where the open list is, in pixels of the control: right below the line of text, or above it
/// where the parent has more room.
RECT ListAreaOf(HWND window, const ComboBoxState& combo);

}  // namespace quennet::user
