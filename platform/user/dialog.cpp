// Modal dialogs: made from a template, run until EndDialog.

#include "user/dialog.h"
#include "user/controls.h"

#include <span>

namespace quennet::user {

namespace {

// A dialog unit is a quarter of a character's width and an eighth of its height.
constexpr INT pixelsPerUnit = 2;

struct DialogRequest {
    HINSTANCE instance;
    QuennetDialogTemplate dialogTemplate;
    HWND owner;
    DLGPROC procedure;
    LPARAM parameter;
};

bool AddControl(HWND dialog, HINSTANCE instance, const QuennetControlTemplate& control) {
    const auto id = reinterpret_cast<HMENU>(static_cast<ULONG_PTR>(control.id));
    const DWORD style = control.style | WS_CHILD | WS_VISIBLE;
    return CreateWindowExA(WS_EX_NOPARENTNOTIFY, control.className, control.text, style,
                           control.x * pixelsPerUnit, control.y * pixelsPerUnit,
                           control.width * pixelsPerUnit, control.height * pixelsPerUnit, dialog,
                           id, instance, nullptr) != nullptr;
}

/// The first default push button, 0 for none.
INT DefaultIdOf(std::span<const QuennetControlTemplate> controls) {
    for (const QuennetControlTemplate& control : controls) {
        if (lstrcmpiA(control.className, "Button") == 0 &&
            (control.style & BS_TYPEMASK) == BS_DEFPUSHBUTTON) {
            return control.id;
        }
    }
    return 0;
}

/// Makes the dialog and its controls, invisible still; null when one of them can't be made.
HWND MakeDialog(const DialogRequest& request, const std::shared_ptr<DialogState>& state) {
    const QuennetDialogTemplate& dialogTemplate = request.dialogTemplate;
    const std::span controls(dialogTemplate.controls, dialogTemplate.controlCount);
    const HWND dialog = CreateWindowExA(
        0, "#32770", dialogTemplate.title, dialogTemplate.style & ~DWORD{WS_VISIBLE}, 0, 0,
        dialogTemplate.width * pixelsPerUnit, dialogTemplate.height * pixelsPerUnit, request.owner,
        nullptr, request.instance, nullptr);
    if (!dialog) {
        return nullptr;
    }
    state->defaultId = DefaultIdOf(controls);
    SetState(dialog, state);
    SetWindowLongPtrA(dialog, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(request.procedure));
    for (const QuennetControlTemplate& control : controls) {
        if (!AddControl(dialog, request.instance, control)) {
            DestroyWindow(dialog);
            return nullptr;
        }
    }
    return dialog;
}

bool HasEnded(const DialogState& state) {
    DesktopLock desktop;
    return state.ended;
}

void Initialise(HWND dialog, const DialogRequest& request, const DialogState& state) {
    const HWND first = GetNextDlgTabItem(dialog, nullptr, FALSE);
    const LRESULT takesDefault =
        SendMessageA(dialog, WM_INITDIALOG, reinterpret_cast<WPARAM>(first), request.parameter);
    if (HasEnded(state) || !IsWindow(dialog)) {
        return;
    }
    if (takesDefault != 0) {
        // The procedure may have hidden or disabled the first one.
        FocusControl(GetNextDlgTabItem(dialog, nullptr, FALSE));
    } else if (!IsChild(dialog, GetFocus())) {
        SetFocus(dialog);
    }
    ShowWindow(dialog, SW_SHOW);
}

void RunLoop(HWND dialog, const DialogState& state) {
    MSG message = {};
    while (IsWindow(dialog) && !HasEnded(state)) {
        if (GetMessageA(&message, nullptr, 0, 0) == 0) {
            PostQuitMessage(static_cast<INT>(message.wParam));
            return;
        }
        if (!IsDialogMessageA(dialog, &message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
}

/// Once for each dialog, whoever comes first.
void EnableOwner(DialogState& state) {
    HWND owner = nullptr;
    {
        DesktopLock desktop;
        owner = std::exchange(state.ownerToEnable, nullptr);
    }
    EnableWindow(owner, TRUE);
}

INT_PTR RunDialog(const DialogRequest& request) {
    const auto state = std::make_shared<DialogState>();
    const HWND focusBefore = GetFocus();
    if (request.owner && IsWindowEnabled(request.owner)) {
        state->ownerToEnable = request.owner;
        EnableWindow(request.owner, FALSE);
    }
    const HWND dialog = MakeDialog(request, state);
    if (dialog) {
        Initialise(dialog, request, *state);
        RunLoop(dialog, *state);
    }
    EnableOwner(*state);
    DestroyWindow(dialog);
    SetFocus(focusBefore);
    DesktopLock desktop;
    return dialog ? state->result : -1;
}

}  // namespace

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

INT_PTR WINAPI DialogBoxParamA(HINSTANCE instance, LPCSTR templateName, HWND owner,
                               DLGPROC procedure, LPARAM parameter) {
    DialogRequest request = {instance, {}, TopWindow(owner), procedure, parameter};
    if (owner && !request.owner) {
        return 0;
    }
    if (!procedure || !FindDialogTemplate(instance, templateName, &request.dialogTemplate)) {
        return -1;
    }
    return RunDialog(request);
}

BOOL WINAPI EndDialog(HWND dialog, INT_PTR result) {
    const auto state = StateOf<DialogState>(dialog);
    if (!state) {
        return FALSE;
    }
    {
        DesktopLock desktop;
        state->ended = true;
        state->result = result;
    }
    EnableOwner(*state);
    // Wakes the loop.
    PostMessageA(dialog, WM_NULL, 0, 0);
    return TRUE;
}
}
