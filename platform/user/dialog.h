#pragma once
// What the dialog calls share.

#include "quennet_platform.h"
#include "user/desktop.h"

namespace quennet::user {

/// What a dialog keeps. Guarded by the desktop's lock: any thread may end a dialog.
struct DialogState : ControlState {
    bool ended = false;
    INT_PTR result = 0;
    INT defaultId = 0;             // of the default push button, 0 for none
    HWND ownerToEnable = nullptr;  // null once it is enabled again
};

/// False when the instance has no such template.
bool FindDialogTemplate(HINSTANCE instance, LPCSTR name, QuennetDialogTemplate* found);

/// Gives the focus to a control of a dialog; an edit control has all its text selected.
void FocusControl(HWND control);

}  // namespace quennet::user
