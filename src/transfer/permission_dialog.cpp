#include "transfer/permission_dialog.h"

#include "host/dialogs.h"
#include "host/services.h"
#include "transfer/permissions.h"

namespace quennet {

namespace {

constexpr int filterButton = 14503;
constexpr int octalField = 14375;
constexpr int octalDigits = 3;
constexpr u16 presetOfMany = 0x05A7;  // rwxr-xr-x

constexpr u16 dialogTexts[] = {10900, 99,    2,     14503, 10103, 14505, 14370, 14371, 14372, 14361,
                               14362, 14363, 14364, 14365, 14366, 14367, 14368, 14369, 0};

struct HostBox {
    int control;
    u32 flag;
};

constexpr HostBox filterBox = {14505, recordFlagFilter};
constexpr HostBox subfolderBox = {10103, recordFlagSubfolders};

struct Masks {
    u16 clear;
    u16 set;
};

TransferRecord* RecordOf(HWND dialog) {
    return reinterpret_cast<TransferRecord*>(GetWindowLongPtrA(dialog, DWLP_USER));
}

bool IsOneFile(const TransferRecord* record) {
    return record->setMask <= 1 && (record->clearMask & attributeDirectory) == 0;
}

/// 2 is the grey state, which a box of two states takes for checked.
void SetBox(HWND dialog, const PermissionRow& row, bool on) {
    SendDlgItemMessageA(dialog, row.control, BM_SETCHECK, on ? BST_INDETERMINATE : BST_UNCHECKED,
                        0);
}

void ShowOctalText(HWND dialog, u16 attributes) {
    char text[permissionTextSize];
    FormatPermissions(text, attributes & permissionBits);
    SetDlgItemTextA(dialog, octalField, text + 1);
}

/// What the boxes say. The validity bit is in both masks: no word stays as it is that has it.
Masks MasksOfBoxes(HWND dialog) {
    Masks masks = {attributePermissions, attributePermissions};
    for (const PermissionRow& row : PermissionTable) {
        if (row.control == 0) {
            continue;
        }
        const LRESULT state = SendDlgItemMessageA(dialog, row.control, BM_GETCHECK, 0, 0);
        if (state == BST_UNCHECKED) {
            masks.clear = static_cast<u16>(masks.clear | row.attribute);
        } else if (state == BST_CHECKED) {
            masks.set = static_cast<u16>(masks.set | row.attribute);
        }
    }
    return masks;
}

void MakeThreeState(HWND box) {
    const LONG style = GetWindowLongA(box, GWL_STYLE);
    SetWindowLongA(box, GWL_STYLE, (style & ~LONG{BS_TYPEMASK}) | BS_AUTO3STATE);
}

void CheckHostBox(HWND dialog, const HostBox& box, bool on) {
    if (on) {
        SendDlgItemMessageA(dialog, box.control, BM_SETCHECK, BST_CHECKED, 0);
    }
}

void OpenForOne(HWND dialog, const TransferRecord* record) {
    SetFocus(GetDlgItem(dialog, octalField));
    SendDlgItemMessageA(dialog, octalField, EM_LIMITTEXT, octalDigits, 0);
    ShowOctalText(dialog, static_cast<u16>(record->clearMask));
}

void OpenForMany(HWND dialog, TransferRecord* record) {
    SetFocus(GetDlgItem(dialog, okButton));
    for (const PermissionRow& row : PermissionTable) {
        if (row.control != 0) {
            MakeThreeState(GetDlgItem(dialog, row.control));
        }
    }
    record->setMask = record->setMask != 0 ? record->status : record->clearMask;
    CheckHostBox(dialog, subfolderBox, record->setMask != 0);
    CheckHostBox(dialog, filterBox, (record->flags & filterBox.flag) != 0);
}

void Open(HWND dialog, TransferRecord* record) {
    CoreInitDialog(dialog);
    CoreApplyDialogTexts(dialog, dialogTexts);
    SetWindowLongPtrA(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(record));
    u16 preset = presetOfMany;
    if (IsOneFile(record)) {
        preset = static_cast<u16>(record->clearMask);
        OpenForOne(dialog, record);
    } else {
        OpenForMany(dialog, record);
    }
    for (const PermissionRow& row : PermissionTable) {
        if (row.control != 0) {
            SetBox(dialog, row, (preset & row.attribute) != 0);
        }
    }
    record->status = 0;
}

bool IsPermissionBox(int control) {
    for (const PermissionRow& row : PermissionTable) {
        if (row.control != 0 && row.control == control) {
            return true;
        }
    }
    return false;
}

void TakeClick(HWND dialog) {
    if (GetDlgItem(dialog, octalField) != nullptr) {
        const Masks masks = MasksOfBoxes(dialog);
        ShowOctalText(dialog, static_cast<u16>(~masks.clear | masks.set));
    }
}

/// Sets the boxes from the number that is being typed. Without a digit they stay as they are. The
/// field's own updates come while a box has the focus, and end here.
void TakeOctalText(HWND dialog) {
    if (GetFocus() != GetDlgItem(dialog, octalField)) {
        return;
    }
    char text[8] = "";
    GetDlgItemTextA(dialog, octalField, text, sizeof text);
    const char* digit = text;
    while (*digit == ' ') {
        ++digit;
    }
    u32 number = 0;
    int count = 0;
    for (; count < octalDigits && *digit >= '0' && *digit <= '7'; ++count, ++digit) {
        number = number * 8 + static_cast<u32>(*digit - '0');
    }
    for (const PermissionRow& row : PermissionTable) {
        if (row.control != 0 && count > 0) {
            SetBox(dialog, row, (number & row.octal) != 0);
        }
    }
}

/// A box that the dialog does not have counts as unchecked.
void StoreHostBox(HWND dialog, const HostBox& box, TransferRecord* record) {
    const bool on = SendDlgItemMessageA(dialog, box.control, BM_GETCHECK, 0, 0) == BST_CHECKED;
    record->flags = on ? record->flags | box.flag : record->flags & ~box.flag;
}

void Accept(HWND dialog) {
    TransferRecord* record = RecordOf(dialog);
    StoreHostBox(dialog, filterBox, record);
    StoreHostBox(dialog, subfolderBox, record);
    const Masks masks = MasksOfBoxes(dialog);
    record->clearMask = masks.clear;
    record->setMask = masks.set;
    EndDialog(dialog, 1);
}

bool TakeCommand(HWND dialog, int control, UINT notification) {
    switch (control) {
        case IDOK:
        case okButton:
            Accept(dialog);
            return true;
        case IDCANCEL:
            EndDialog(dialog, 0);
            return true;
        case filterButton:
            ShellEditFilter(dialog, nullptr);
            return true;
        case octalField:
            if (notification == EN_CHANGE) {
                TakeOctalText(dialog);
            }
            return true;
        default:
            break;
    }
    if (IsPermissionBox(control) && notification == BN_CLICKED) {
        TakeClick(dialog);
        return true;
    }
    return false;
}

}  // namespace

INT_PTR CALLBACK PermissionDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        Open(dialog, reinterpret_cast<TransferRecord*>(lParam));
        return FALSE;  // the focus is set
    }
    return message == WM_COMMAND && TakeCommand(dialog, LOWORD(wParam), HIWORD(wParam));
}

i32 ShowPermissionDialog(HWND owner, HINSTANCE instance, TransferRecord* record) {
    const int name = IsOneFile(record) ? permissionsOfOneTemplate : permissionsOfManyTemplate;
    return static_cast<i32>(DialogBoxParamA(instance, MAKEINTRESOURCEA(name), owner,
                                            PermissionDialogProc,
                                            reinterpret_cast<LPARAM>(record)));
}

}  // namespace quennet
