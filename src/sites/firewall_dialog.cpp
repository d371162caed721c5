#include "sites/firewall_dialog.h"

#include "control/firewall.h"
#include "host/dialogs.h"
#include "host/services.h"
#include "sites/site_store.h"

namespace quennet {

namespace {

constexpr int typeList = 14301;
constexpr u16 dialogTexts[] = {0, 14312, 14315, 14316, 99, 2, 0};
constexpr WPARAM textLimit = 80;

constexpr int fieldSize = 259;  // of a text for the book, with the terminator
constexpr int recordSize = 80;  // of a text for the record

struct FirewallField {
    char letter;
    int control;
    std::size_t field;
    bool limited;
    bool scrambled;
};

constexpr FirewallField firewallFields[] = {
    {'G', 14203, offsetof(SiteRecord, firewallHost), false, false},
    {'N', 14302, offsetof(SiteRecord, firewallUser), true, false},
    {'P', 15202, offsetof(SiteRecord, firewallPassword), true, true},
};

SiteRecord* SiteOf(HWND dialog) {
    return reinterpret_cast<SiteRecord*>(GetWindowLongPtrA(dialog, DWLP_USER));
}

LRESULT InTypes(HWND dialog, UINT message, LRESULT index = 0, LPARAM value = 0) {
    return SendDlgItemMessageA(dialog, typeList, message, static_cast<WPARAM>(index), value);
}

/// A stored type that is none of the list's leaves the first one selected.
void FillTypes(HWND dialog, i32 storedType) {
    for (u32 type = 1; type < firewallTypes; ++type) {
        const LRESULT row =
            InTypes(dialog, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(FirewallTypeText(type)));
        InTypes(dialog, CB_SETITEMDATA, row, static_cast<LPARAM>(type));
        if (row == 0 || static_cast<i32>(type) == storedType) {
            InTypes(dialog, CB_SETCURSEL, row);
        }
    }
}

void Open(HWND dialog, SiteRecord* site) {
    SetWindowLongPtrA(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(site));
    CoreInitDialog(dialog);
    SetFocus(GetDlgItem(dialog, okButton));
    CoreApplyDialogTexts(dialog, dialogTexts);
    AddHelpButton(dialog);
    const SettingsPath file;
    EnsurePasswordKey();
    const i32 id = CurrentSiteId();
    char value[settingSize];
    for (const FirewallField& field : firewallFields) {
        if (field.limited) {
            SendDlgItemMessageA(dialog, field.control, EM_LIMITTEXT, textLimit, 0);
        }
        ReadSiteValue(field.letter, id, file.text, value);
        if (field.scrambled) {
            UnscramblePassword(value);
        }
        SetDlgItemTextA(dialog, field.control, value);
    }
    ReadSiteValue('T', id, file.text, value);
    FillTypes(dialog, NumberFromText(value));
}

void StoreField(HWND dialog, const FirewallField& field, SiteRecord* site, const char* file) {
    GetDlgItemTextA(dialog, field.control, reinterpret_cast<char*>(site) + field.field, recordSize);
    char value[settingSize] = "";
    GetDlgItemTextA(dialog, field.control, value, fieldSize);
    if (field.scrambled) {
        ScramblePassword(value);
    }
    WriteSiteValue(field.letter, CurrentSiteId(), value, file);
}

void Accept(HWND dialog) {
    SiteRecord* site = SiteOf(dialog);
    if (site != nullptr) {
        const SettingsPath file;
        EnsurePasswordKey();
        for (const FirewallField& field : firewallFields) {
            StoreField(dialog, field, site, file.text);
        }
        const LRESULT row = InTypes(dialog, CB_GETCURSEL);
        const LRESULT type = InTypes(dialog, CB_GETITEMDATA, row);
        if (type >= 0) {
            site->firewallType = static_cast<u32>(type);
            WriteSiteValue('T', CurrentSiteId(), NumberText(site->firewallType).text, file.text);
        }
    }
    EndDialog(dialog, 1);
}

}  // namespace

INT_PTR CALLBACK FirewallDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    return RunTwoButtons(
        message, wParam, [&] { Open(dialog, reinterpret_cast<SiteRecord*>(lParam)); },
        [&] { Accept(dialog); }, [&] { EndDialog(dialog, 0); });
}

}  // namespace quennet
