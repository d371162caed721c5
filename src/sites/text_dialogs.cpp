#include "sites/text_dialogs.h"

#include "host/dialogs.h"
#include "host/services.h"

namespace quennet {

namespace {

struct TextDialog {
    int edit;
    WPARAM limit;        // characters that can be typed
    int size;            // bytes that OK stores, with the terminator
    bool cancelEmpties;  // the buffer
    u16 texts[5];
};

constexpr TextDialog mailAddressDialog = {14322, 80, 80, true, {0, 14321, 99, 2, 0}};
constexpr TextDialog autoDialog = {14352, 259, 260, false, {0, 14351, 99, 2, 0}};

char* BufferOf(HWND dialog) {
    return reinterpret_cast<char*>(GetWindowLongPtrA(dialog, DWLP_USER));
}

void Open(HWND dialog, const TextDialog& kind, char* buffer) {
    CoreInitDialog(dialog);
    CoreApplyDialogTexts(dialog, kind.texts);
    SetFocus(GetDlgItem(dialog, kind.edit));
    SetWindowLongPtrA(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(buffer));
    SendDlgItemMessageA(dialog, kind.edit, EM_LIMITTEXT, kind.limit, 0);
    if (buffer != nullptr && buffer[0] != 0) {
        SetDlgItemTextA(dialog, kind.edit, buffer);
    }
}

void Accept(HWND dialog, const TextDialog& kind) {
    char* buffer = BufferOf(dialog);
    if (buffer != nullptr) {
        GetDlgItemTextA(dialog, kind.edit, buffer, kind.size);
    }
    EndDialog(dialog, buffer != nullptr);
}

void Cancel(HWND dialog, const TextDialog& kind) {
    char* buffer = BufferOf(dialog);
    if (buffer != nullptr && kind.cancelEmpties) {
        buffer[0] = 0;
    }
    EndDialog(dialog, 0);
}

INT_PTR Handle(HWND dialog, const TextDialog& kind, UINT message, WPARAM wParam, LPARAM lParam) {
    return RunTwoButtons(
        message, wParam, [&] { Open(dialog, kind, reinterpret_cast<char*>(lParam)); },
        [&] { Accept(dialog, kind); }, [&] { Cancel(dialog, kind); });
}

}  // namespace

INT_PTR CALLBACK MailAddressDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return Handle(dialog, mailAddressDialog, message, wParam, lParam);
}

INT_PTR CALLBACK AutoDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return Handle(dialog, autoDialog, message, wParam, lParam);
}

i32 ShowAutoDialog(HWND owner, HINSTANCE instance, char* buffer) {
    return static_cast<i32>(DialogBoxParamA(instance, MAKEINTRESOURCEA(autoDialogTemplate), owner,
                                            AutoDialogProc, reinterpret_cast<LPARAM>(buffer)));
}

}  // namespace quennet
