#include "sites/site_fields.h"

#include <cstring>

#include "host/services.h"
#include "sites/connect_controls.h"
#include "sites/site_store.h"
#include "sites/text_dialogs.h"

namespace quennet {

namespace {

constexpr char anonymousUser[] = "anonymous";
constexpr char mailAddressKey[] = "MAILADDR";  // of the host's main section
constexpr WPARAM passwordEcho = '*';
constexpr WPARAM plainEcho = 0;

bool IsChecked(HWND dialog, int box) {
    return SendDlgItemMessageA(dialog, box, BM_GETCHECK, 0, 0) == BST_CHECKED;
}

void Check(HWND dialog, int box, bool checked) {
    SendDlgItemMessageA(dialog, box, BM_SETCHECK, checked ? BST_CHECKED : BST_UNCHECKED, 0);
}

LRESULT InList(HWND dialog, UINT message, LRESULT index, LPARAM value = 0) {
    return SendDlgItemMessageA(dialog, siteList, message, static_cast<WPARAM>(index), value);
}

/// Puts a new text in the place of an entry, which keeps its id, and the list its selection.
void RenameEntry(HWND dialog, LRESULT index, const char* name) {
    const LRESULT selection = InList(dialog, LB_GETCURSEL, 0);
    const LRESULT id = InList(dialog, LB_GETITEMDATA, index);
    InList(dialog, LB_DELETESTRING, index);
    InList(dialog, LB_INSERTSTRING, index, reinterpret_cast<LPARAM>(name));
    InList(dialog, LB_SETITEMDATA, index, id);
    InList(dialog, LB_SETCURSEL, selection);
}

void RenameCurrentEntry(HWND dialog, const char* name) {
    const LRESULT count = InList(dialog, LB_GETCOUNT, 0);
    for (LRESULT index = 0; index < count; ++index) {
        if (static_cast<i32>(InList(dialog, LB_GETITEMDATA, index)) == CurrentSiteId()) {
            RenameEntry(dialog, index, name);
            return;
        }
    }
}

void UnscramblePasswordField(HWND dialog) {
    char password[settingSize] = "";
    GetDlgItemTextA(dialog, passwordEdit, password, fieldSize);
    UnscramblePassword(password);
    SetDlgItemTextA(dialog, passwordEdit, password);
}

WPARAM Echo(HWND dialog) {
    return static_cast<WPARAM>(SendDlgItemMessageA(dialog, passwordEdit, EM_GETPASSWORDCHAR, 0, 0));
}

bool IsAnonymous(HWND dialog) {
    return Echo(dialog) == plainEcho;
}

/// The fields of the selected site as they are stored, and its option word; 0 without a selection.
/// The user's field may bring the anonymous state, and with it an address in place of a password
/// that is not stored.
u32 LoadSelectedSite(HWND dialog, const char* file) {
    const LRESULT selection = InList(dialog, LB_GETCURSEL, 0);
    if (selection == LB_ERR) {
        return 0;
    }
    EnsurePasswordKey();
    const i32 id = static_cast<i32>(InList(dialog, LB_GETITEMDATA, selection));
    CurrentSiteId() = id;
    char value[settingSize];
    ReadSiteValue('O', id, file, value);
    const auto options = static_cast<u32>(NumberFromText(value));
    const bool wasAnonymous = IsAnonymous(dialog);
    for (const SiteEdit& edit : siteEdits) {
        ReadSiteValue(edit.letter, id, file, value);
        const bool isFilled = edit.letter == 'W' && !wasAnonymous && IsAnonymous(dialog);
        if (value[0] != 0 || !isFilled) {
            SetDlgItemTextA(dialog, edit.control, value);
        }
    }
    return options;
}

}  // namespace

u32 ReadSiteOptions(HWND dialog) {
    u32 options = 0;
    for (const OptionBox& box : optionBoxes) {
        if (IsChecked(dialog, box.control)) {
            options |= box.option;
        }
    }
    return options;
}

void LoadSiteFields(HWND dialog, const char* file, const ConnectParams* params) {
    const bool wasAnonymous = IsAnonymous(dialog);
    const u32 options = LoadSelectedSite(dialog, file);
    const bool keepsState = wasAnonymous && IsAnonymous(dialog);
    ApplyAnonymousState(dialog, options, file, params);
    if (IsChecked(dialog, anonymousBox)) {
        // Who enters the state has been asked for an address already.
        if (keepsState) {
            FillAnonymousPassword(dialog, file, params);
        }
    } else {
        UnscramblePasswordField(dialog);
    }
    for (const OptionBox& box : optionBoxes) {
        if (box.option != SiteOptionAnonymous) {
            Check(dialog, box.control, (options & box.option) != 0);
        }
    }
}

bool SaveSiteFields(HWND dialog, const char* file) {
    EnsurePasswordKey();
    const i32 id = CurrentSiteId();
    const u32 options = ReadSiteOptions(dialog);
    for (const SiteEdit& edit : siteEdits) {
        if (edit.letter == 'W' && (options & SiteOptionSavePassword) == 0) {
            continue;
        }
        char value[settingSize] = "";
        GetDlgItemTextA(dialog, edit.control, value, fieldSize);
        if (edit.letter == 'M') {
            RenameCurrentEntry(dialog, value);
        }
        if (edit.letter == 'W' && (options & SiteOptionAnonymous) == 0) {
            ScramblePassword(value);
        }
        WriteSiteValue(edit.letter, id, value, file);
    }
    WriteSiteValue('O', id, NumberText(options).text, file);
    char name[settingSize] = "";
    ReadSiteValue('M', id, file, name);
    return name[0] != 0 || GetDlgItemTextA(dialog, nameEdit, name, fieldSize) == 0;
}

void ApplyAnonymousState(HWND dialog, u32 options, const char* file, const ConnectParams* params) {
    constexpr int userSize = 63;
    const WPARAM echo = Echo(dialog);
    char user[userSize] = "";
    GetDlgItemTextA(dialog, userEdit, user, userSize);
    const bool anonymous =
        (options & SiteOptionAnonymous) != 0 || std::strcmp(user, anonymousUser) == 0;
    const WPARAM wantedEcho = anonymous ? plainEcho : passwordEcho;
    if (echo == wantedEcho) {
        return;
    }
    SetDlgItemTextA(dialog, passwordEdit, "");
    if (anonymous) {
        FillAnonymousPassword(dialog, file, params);
    }
    SendDlgItemMessageA(dialog, passwordEdit, EM_SETPASSWORDCHAR, wantedEcho, 0);
    InvalidateRect(GetDlgItem(dialog, passwordEdit), nullptr, TRUE);
    if (anonymous) {
        SetDlgItemTextA(dialog, userEdit, anonymousUser);
    }
    SendDlgItemMessageA(dialog, userEdit, EM_SETREADONLY, anonymous, 0);
    Check(dialog, anonymousBox, anonymous);
}

void FillAnonymousPassword(HWND dialog, const char* file, const ConnectParams* params) {
    constexpr int passwordSize = 80;
    char password[passwordSize] = "";
    GetDlgItemTextA(dialog, passwordEdit, password, passwordSize);
    if (password[0] != 0) {
        return;
    }
    const auto* section = PointerFromWord<const char>(params->section);
    char address[mailAddressSize] = "";
    ShellReadSetting(section, mailAddressKey, address, mailAddressSize, file);
    if (address[0] == 0) {
        DialogBoxParamA(PointerFromWord<HINSTANCE__>(params->instance),
                        MAKEINTRESOURCEA(mailAddressDialogTemplate), dialog, MailAddressDialogProc,
                        reinterpret_cast<LPARAM>(address));
        if (address[0] != 0) {
            ShellWriteSetting(section, mailAddressKey, address, file);
        }
    }
    SetDlgItemTextA(dialog, passwordEdit, address);
}

}  // namespace quennet
