// Dialog 14300. While it is open the book in the settings already holds what was changed in it: a
// change of selection, an added site and the firewall dialog write at once. OK makes that last, by
// numbering the sites anew; Cancel undoes it from a snapshot taken at the start.

#include "sites/connect_dialog.h"

#include <cstring>

#include "host/dialogs.h"
#include "host/services.h"
#include "sites/connect_controls.h"
#include "sites/firewall_dialog.h"
#include "sites/site_fields.h"
#include "sites/site_store.h"

namespace quennet {

namespace {

constexpr int addButton = 97;
constexpr int deleteButton = 96;
constexpr int listButton1 = 14535;
constexpr int listButton2 = 14536;

constexpr u32 bookTooLargeText = 6006;
constexpr u32 bookNotSavedText = 6007;

constexpr u16 dialogTexts[] = {0,     14314, 14318, 14315, 14316, 14317, 14303, 14304, 14305,
                               14306, 99,    2,     97,    96,    14535, 14536, 0};

struct TextLimit {
    int control;
    WPARAM characters;
};

constexpr TextLimit textLimits[] = {
    {nameEdit, 63}, {hostEdit, 80}, {userEdit, 80}, {passwordEdit, 80}, {directoryEdit, 259},
};

// How the controls fill the site; a size counts the terminator.
struct SiteField {
    int control;
    std::size_t field;
    int size;
};

constexpr SiteField siteFields[] = {
    {nameEdit, offsetof(SiteRecord, name), 27},
    {userEdit, offsetof(SiteRecord, user), 80},
    {passwordEdit, offsetof(SiteRecord, password), 80},
    {hostEdit, offsetof(SiteRecord, host), 80},
    {directoryEdit, offsetof(SiteRecord, directory), 259},
};

struct ConnectDialogState {
    ConnectParams* params;
    char* snapshot;  // the book as it was when the dialog opened; null when it can't be had whole
};

ConnectDialogState* StateOf(HWND dialog) {
    return reinterpret_cast<ConnectDialogState*>(GetWindowLongPtrA(dialog, DWLP_USER));
}

const char* SectionOf(const ConnectDialogState* state) {
    return PointerFromWord<const char>(state->params->section);
}

SiteRecord* SiteOf(const ConnectDialogState* state) {
    return PointerFromWord<SiteRecord>(state->params->site);
}

LRESULT InList(HWND dialog, UINT message, LRESULT index = 0, LPARAM value = 0) {
    return SendDlgItemMessageA(dialog, siteList, message, static_cast<WPARAM>(index), value);
}

// --- Opening -----------------------------------------------------------------------------------

ConnectDialogState* NewState(ConnectParams* params, const char* file) {
    void* block = CoreAlloc(sizeof(ConnectDialogState));
    auto* state = static_cast<ConnectDialogState*>(block);
    if (state == nullptr) {
        return nullptr;
    }
    state->params = params;
    BookText book(file);
    if (!book.IsThere()) {
        CoreFree(&block);
        return nullptr;
    }
    state->snapshot = book.Release();
    return state;
}

void FreeState(HWND dialog) {
    void* state = StateOf(dialog);
    if (state != nullptr) {
        void* snapshot = StateOf(dialog)->snapshot;
        SetWindowLongPtrA(dialog, DWLP_USER, 0);
        CoreFree(&snapshot);
        CoreFree(&state);
    }
}

void FillList(HWND dialog, const char* file) {
    char name[settingSize];
    for (i32 id = 1;; ++id) {
        ReadSiteValue('M', id, file, name);
        if (name[0] == 0) {
            return;
        }
        const LRESULT entry =
            InList(dialog, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(static_cast<char*>(name)));
        if (entry < 0) {
            return;
        }
        InList(dialog, LB_SETITEMDATA, entry, id);
    }
}

/// The site chosen last, or the first one.
void SelectLastSite(HWND dialog, const ConnectDialogState* state, const char* file) {
    char name[settingSize];
    ShellReadSetting(SectionOf(state), lastSiteKey, name, settingSize, file);
    LRESULT entry = LB_ERR;
    if (name[0] != 0) {
        entry = InList(dialog, LB_FINDSTRINGEXACT, 0,
                       reinterpret_cast<LPARAM>(static_cast<char*>(name)));
    }
    InList(dialog, LB_SETCURSEL, entry == LB_ERR ? 0 : entry);
}

void Open(HWND dialog, ConnectParams* params) {
    CoreInitDialog(dialog);
    CoreApplyDialogTexts(dialog, dialogTexts);
    SetFocus(GetDlgItem(dialog, siteList));
    AddHelpButton(dialog);
    for (const TextLimit& limit : textLimits) {
        SendDlgItemMessageA(dialog, limit.control, EM_LIMITTEXT, limit.characters, 0);
    }
    if (params == nullptr) {
        return;
    }
    const SettingsPath file;
    ConnectDialogState* state = NewState(params, file.text);
    if (state == nullptr) {
        return;
    }
    SetWindowLongPtrA(dialog, DWLP_USER, reinterpret_cast<LONG_PTR>(state));
    FillList(dialog, file.text);
    SelectLastSite(dialog, state, file.text);
    LoadSiteFields(dialog, file.text, params);
}

// --- Commands ----------------------------------------------------------------------------------

void ChangeSelection(HWND dialog, ConnectDialogState* state) {
    const SettingsPath file;
    SaveSiteFields(dialog, file.text);
    LoadSiteFields(dialog, file.text, state->params);
}

/// A double click is OK.
void AcceptLater(HWND dialog, ConnectDialogState*) {
    PostMessageA(dialog, WM_COMMAND, okButton, 0);
}

void ChangeUser(HWND dialog, ConnectDialogState* state) {
    const SettingsPath file;
    ApplyAnonymousState(dialog, 0, file.text, state->params);
}

void ClickAnonymous(HWND dialog, ConnectDialogState* state) {
    const SettingsPath file;
    SetDlgItemTextA(dialog, userEdit, "");
    ApplyAnonymousState(dialog, ReadSiteOptions(dialog) & SiteOptionAnonymous, file.text,
                        state->params);
}

void ClickFirewall(HWND dialog, ConnectDialogState* state) {
    if ((ReadSiteOptions(dialog) & SiteOptionFirewall) != 0) {
        DialogBoxParamA(PointerFromWord<HINSTANCE__>(state->params->instance),
                        MAKEINTRESOURCEA(firewallDialogTemplate), dialog, FirewallDialogProc,
                        reinterpret_cast<LPARAM>(SiteOf(state)));
    }
}

void RunListAction1(HWND dialog, ConnectDialogState*) {
    ShellListAction1(dialog, siteList);
}

void RunListAction2(HWND dialog, ConnectDialogState*) {
    ShellListAction2(dialog, siteList);
}

/// An id that no entry has; a new entry has 0 until it gets its own.
i32 NewSiteId(HWND dialog) {
    i32 highest = 0;
    const LRESULT count = InList(dialog, LB_GETCOUNT);
    for (LRESULT index = 0; index < count; ++index) {
        const i32 id = static_cast<i32>(InList(dialog, LB_GETITEMDATA, index));
        highest = id > highest ? id : highest;
    }
    return highest + 1;
}

/// The new site stands in front of the selected one and begins as a copy of what is on show. The
/// selection stays where it was, though the fields are the new site's now.
void AddSite(HWND dialog, ConnectDialogState*) {
    char name[settingSize] = "";
    const LRESULT selection = InList(dialog, LB_GETCURSEL);
    if (GetDlgItemTextA(dialog, nameEdit, name, fieldSize) == 0) {
        return;
    }
    const LRESULT entry = InList(dialog, LB_INSERTSTRING, selection,
                                 reinterpret_cast<LPARAM>(static_cast<char*>(name)));
    if (entry < 0) {
        return;
    }
    const i32 id = NewSiteId(dialog);
    InList(dialog, LB_SETITEMDATA, entry, id);
    CurrentSiteId() = id;
    const SettingsPath file;
    SaveSiteFields(dialog, file.text);
}

/// The deleted site stays on show until another one is selected, and its keys stay in the book
/// until the sites are numbered anew.
void DeleteSite(HWND dialog, ConnectDialogState*) {
    const LRESULT selection = InList(dialog, LB_GETCURSEL);
    if (selection == LB_ERR) {
        return;
    }
    InList(dialog, LB_DELETESTRING, selection);
    const LRESULT count = InList(dialog, LB_GETCOUNT);
    InList(dialog, LB_SETCURSEL, selection < count ? selection : selection - 1);
    if (count == 0) {
        for (const SiteEdit& edit : siteEdits) {
            SetDlgItemTextA(dialog, edit.control, "");
        }
    }
}

/// Cuts a leading "ftp://", in any case.
void CutScheme(char* host) {
    constexpr char scheme[] = "ftp://";
    constexpr std::size_t length = sizeof scheme - 1;
    for (std::size_t index = 0; index < length; ++index) {
        const char letter = host[index];
        const bool isUpper = letter >= 'A' && letter <= 'Z';
        if ((isUpper ? static_cast<char>(letter + ('a' - 'A')) : letter) != scheme[index]) {
            return;
        }
    }
    std::memmove(host, host + length, std::strlen(host + length) + 1);
}

void FillSite(HWND dialog, SiteRecord* site) {
    for (const SiteField& field : siteFields) {
        GetDlgItemTextA(dialog, field.control, reinterpret_cast<char*>(site) + field.field,
                        field.size);
    }
    site->siteOptions = ReadSiteOptions(dialog);
    CutScheme(site->host);
}

void RestoreBook(const ConnectDialogState* state, const char* file) {
    if (state->snapshot != nullptr) {
        ShellWriteSection(siteSection, state->snapshot, file);
    }
}

/// The connection goes on whatever becomes of the book.
void TellOfBook(HWND dialog, const ConnectDialogState* state, BookOutcome outcome,
                const char* file) {
    switch (outcome) {
        case BookOutcome::stored:
            break;
        case BookOutcome::failed:
            CoreShowMessage(NumberFromWindow(dialog), bookNotSavedText);
            break;
        case BookOutcome::tooLarge:
            RestoreBook(state, file);
            CoreShowMessage(NumberFromWindow(dialog), bookTooLargeText);
            break;
    }
}

void Accept(HWND dialog, ConnectDialogState* state) {
    SiteRecord* site = SiteOf(state);
    FillSite(dialog, site);
    i32 count = static_cast<i32>(InList(dialog, LB_GETCOUNT));
    if (count == 0) {
        count = 1;
        CurrentSiteId() = 1;
    }
    const SettingsPath file;
    const bool isSaved = SaveSiteFields(dialog, file.text);
    if ((site->siteOptions & SiteOptionFirewall) != 0 && site->firewallHost[0] == 0) {
        LoadFirewallFields(site, file.text);
    }
    const BookOutcome outcome =
        isSaved ? RenumberSites(dialog, count, file.text) : BookOutcome::failed;
    TellOfBook(dialog, state, outcome, file.text);
    const LRESULT selection = InList(dialog, LB_GETCURSEL);
    EndDialog(dialog, selection == LB_ERR ? 1 : selection + 1);
    char name[settingSize] = "";
    GetDlgItemTextA(dialog, nameEdit, name, fieldSize);
    ShellWriteSetting(SectionOf(state), lastSiteKey, name, file.text);
}

void Cancel(HWND dialog, ConnectDialogState* state) {
    const SettingsPath file;
    RestoreBook(state, file.text);
    EndDialog(dialog, 0);
}

constexpr int anyNotification = -1;

struct Command {
    int control;
    int notification;
    void (*run)(HWND dialog, ConnectDialogState* state);
};

constexpr Command commands[] = {
    {siteList, LBN_SELCHANGE, ChangeSelection},
    {siteList, LBN_DBLCLK, AcceptLater},
    {userEdit, EN_CHANGE, ChangeUser},
    {anonymousBox, anyNotification, ClickAnonymous},
    {firewallBox, anyNotification, ClickFirewall},
    {listButton1, anyNotification, RunListAction1},
    {listButton2, anyNotification, RunListAction2},
    {addButton, anyNotification, AddSite},
    {deleteButton, anyNotification, DeleteSite},
    {IDOK, anyNotification, Accept},
    {okButton, anyNotification, Accept},
    {IDCANCEL, anyNotification, Cancel},
};

/// A dialog that has no state can only end.
bool EndWithoutState(HWND dialog, int control) {
    const bool ends = control == IDOK || control == okButton || control == IDCANCEL;
    if (ends) {
        EndDialog(dialog, 0);
    }
    return ends;
}

bool RunCommand(HWND dialog, int control, int notification) {
    ConnectDialogState* state = StateOf(dialog);
    if (state == nullptr) {
        return EndWithoutState(dialog, control);
    }
    for (const Command& command : commands) {
        if (command.control == control &&
            (command.notification == anyNotification || command.notification == notification)) {
            command.run(dialog, state);
            return true;
        }
    }
    return false;
}

}  // namespace

INT_PTR CALLBACK ConnectDialogProc(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_INITDIALOG:
            Open(dialog, reinterpret_cast<ConnectParams*>(lParam));
            return FALSE;  // the focus is set
        case WM_DESTROY:
            FreeState(dialog);
            return TRUE;
        case WM_COMMAND:
            return RunCommand(dialog, LOWORD(wParam), HIWORD(wParam));
        default:
            return FALSE;
    }
}

}  // namespace quennet
