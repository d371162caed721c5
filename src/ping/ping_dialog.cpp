#include "ping/ping_dialog.h"

#include "control/session.h"
#include "control/worker.h"
#include "host/dialogs.h"
#include "host/services.h"
#include "ping/ping_state.h"
#include "ping/ping_worker.h"

namespace quennet {

namespace {

constexpr int targetBox = 14302;
constexpr u16 dialogTexts[] = {0, 14312, 7, 2, 0};
constexpr char historySection[] = "Ping";
constexpr i32 historyLimit = 30;

void EnableButton(HWND dialog, int button, bool enable) {
    EnableWindow(GetDlgItem(dialog, button), enable ? TRUE : FALSE);
}

void Open(HWND dialog, PingState* state) {
    SetWindowLongPtrA(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(state));
    CoreInitDialog(dialog);
    state->window.Store(NumberFromWindow(dialog));
    HWND target = GetDlgItem(dialog, targetBox);
    SetFocus(target);
    AddHelpButton(dialog);
    CoreApplyDialogTexts(dialog, dialogTexts);
    char file[pathSize] = "";
    CoreGetProfilePath(file);
    CoreLoadHistory(target, file, historySection, historyLimit);
    SendMessageA(target, CB_SETCURSEL, 0, 0);
    EnableButton(dialog, pingStopButton, false);
}

void TakeTarget(HWND dialog, PingState* state) {
    HWND target = GetDlgItem(dialog, targetBox);
    GetDlgItemTextA(dialog, targetBox, state->target, sizeof state->target);
    CoreAddHistory(target, state->target);
    char file[pathSize] = "";
    CoreGetProfilePath(file);
    CoreSaveHistory(target, file, historySection, historyLimit);
}

void Start(HWND dialog, PingState* state) {
    // The worker's place is taken here, so that a second start can't slip in before it runs; and a
    // stop that comes as early must not be forgotten by a worker that begins.
    if (state == nullptr || state->running.ExchangeIf(0, 1) != 0) {
        return;
    }
    state->stopRequests.Store(0);
    TakeTarget(dialog, state);
    EnableButton(dialog, pingStopButton, true);
    EnableButton(dialog, pingStartButton, false);
    SetFocus(GetDlgItem(dialog, IDCANCEL));
    if (!StartWorker(PingWorker, state)) {
        EnableButton(dialog, pingStartButton, true);
        EnableButton(dialog, pingStopButton, false);
        state->running.Store(0);
    }
}

/// The start button takes the focus once the worker has ended and enabled it; till then the close
/// button has it, so that keys still reach the dialog.
void Stop(HWND dialog, PingState* state) {
    state->stopRequests.Add(1);
    HWND start = GetDlgItem(dialog, pingStartButton);
    SetFocus(IsWindowEnabled(start) ? start : GetDlgItem(dialog, IDCANCEL));
    EnableButton(dialog, pingStopButton, false);
}

void Close(HWND dialog, PingState* state) {
    state->stopRequests.Add(1);
    EndDialog(dialog, 0);
}

void TakeCommand(HWND dialog, int control) {
    auto* state = reinterpret_cast<PingState*>(GetWindowLongPtrA(dialog, DWLP_USER));
    switch (control) {
        case IDOK:
        case pingStartButton:
            Start(dialog, state);
            break;
        case IDCANCEL:
            Close(dialog, state);
            break;
        case pingStopButton:
            Stop(dialog, state);
            break;
        default:
            break;
    }
}

}  // namespace

INT_PTR CALLBACK PingDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        Open(dialog, reinterpret_cast<PingState*>(lParam));
    } else if (message == WM_COMMAND) {
        TakeCommand(dialog, LOWORD(wParam));
    }
    return FALSE;
}

void OpenPingDialog(HWND owner, HINSTANCE instance, HostWord* stateWord) {
    if (*stateWord == 0) {
        *stateWord = WordFromPointer(CoreAlloc(sizeof(PingState)));
    }
    if (*stateWord != 0) {
        DialogBoxParamA(instance, MAKEINTRESOURCEA(pingDialogTemplate), owner, PingDialogProc,
                        static_cast<LPARAM>(*stateWord));
    }
}

}  // namespace quennet
