#pragma once
// What the drop-down list keeps, with an edit control in its line or without.

#include "user/controls.h"
#include "user/desktop.h"
#include "user/entries.h"

#include <string>

namespace quennet::user {

/// Height of the line that is always there, in pixels.
constexpr LONG comboLineHeight = 24;

struct ComboBoxState : ControlState {
    Entries entries;
    LRESULT rows = 0;  // of the list, as the window was made
    bool open = false;
    LRESULT selectedBefore = CB_ERR;  // the list was opened
    HWND edit = nullptr;              // of CBS_DROPDOWN
    std::string textBefore;           // of the edit control
    bool quiet = false;               // it is the program that changes the text
};

/// Where the open list is, in pixels of the control: right below the line of text, or above it
/// where the parent has more room.
RECT ListAreaOf(HWND window, const ComboBoxState& combo);

// What follows does nothing where the line is no edit control.

/// Puts the edit control into the line, with the text that the window is made with.
bool MakeEdit(HWND window, ComboBoxState& combo, LPCSTR text);
/// Sets its text, and nobody is told; `select` selects all of it.
void SetEditText(ComboBoxState& combo, const std::string& text, bool select);
/// It shows the selected entry, or nothing when none is.
void ShowSelection(ComboBoxState& combo);
/// What concerns the edit control alone. False for a message that does not.
bool HandleEdit(HWND window, ComboBoxState& combo, UINT message, WPARAM wParam, LPARAM lParam,
                LRESULT* result);

}  // namespace quennet::user
