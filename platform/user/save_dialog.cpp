// The dialog for a file to be written.

#include "commdlg.h"
#include "dlgs.h"
#include "quennet_platform.h"
#include "user/controls.h"
#include "user/save_files.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <mutex>

namespace quennet::user {

namespace {

thread_local DWORD lastError = 0;

// ---- Templates --------------------------------------------------------------------------------

enum : WORD { saveDialog = 1, questionDialog = 2, noteDialog = 3 };

constexpr DWORD dialogStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME | DS_CENTER;

constexpr std::array saveControls = {
    QuennetControlTemplate{"Static", stc2, 0, 4, 8, 24, 8},
    QuennetControlTemplate{"Edit", edt1, ES_AUTOHSCROLL | WS_TABSTOP, 32, 8, 204, 12},
    QuennetControlTemplate{"Static", stc1, SS_NOPREFIX, 4, 24, 232, 16},
    QuennetControlTemplate{"ListBox", lst1, LBS_NOTIFY | WS_VSCROLL | WS_TABSTOP, 4, 40, 232, 64},
    QuennetControlTemplate{"Static", stc3, 0, 4, 112, 24, 8},
    QuennetControlTemplate{"ComboBox", cmb1, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, 32, 112,
                           204, 60},
    QuennetControlTemplate{"Button", IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 112, 128, 60, 14},
    QuennetControlTemplate{"Button", IDCANCEL, WS_TABSTOP, 176, 128, 60, 14},
};
constexpr std::array questionControls = {
    QuennetControlTemplate{"Static", stc1, SS_NOPREFIX, 8, 8, 184, 32},
    QuennetControlTemplate{"Button", IDYES, WS_TABSTOP, 64, 48, 60, 14},
    QuennetControlTemplate{"Button", IDNO, BS_DEFPUSHBUTTON | WS_TABSTOP, 132, 48, 60, 14},
};
constexpr std::array noteControls = {
    QuennetControlTemplate{"Static", stc1, SS_NOPREFIX, 8, 8, 184, 32},
    QuennetControlTemplate{"Button", IDOK, BS_DEFPUSHBUTTON | WS_TABSTOP, 132, 48, 60, 14},
};
constexpr std::array templates = {
    QuennetDialogTemplate{saveDialog, "Save As", dialogStyle, 240, 144, saveControls.data(),
                          saveControls.size()},
    QuennetDialogTemplate{questionDialog, "Save As", dialogStyle, 200, 64, questionControls.data(),
                          questionControls.size()},
    QuennetDialogTemplate{noteDialog, "Save As", dialogStyle, 200, 64, noteControls.data(),
                          noteControls.size()},
};

HINSTANCE OwnInstance() {
    static std::once_flag registered;
    const auto instance =
        reinterpret_cast<HINSTANCE>(const_cast<QuennetDialogTemplate*>(templates.data()));
    std::call_once(registered, [&] {
        QuennetRegisterDialogs(instance, templates.data(), static_cast<UINT>(templates.size()));
    });
    return instance;
}

INT_PTR RunDialog(WORD id, HWND owner, DLGPROC procedure, LPARAM parameter) {
    return DialogBoxParamA(OwnInstance(), MAKEINTRESOURCEA(id), owner, procedure, parameter);
}

// ---- Messages to a person ---------------------------------------------------------------------

INT_PTR CALLBACK MessageProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetDlgItemTextA(dialog, stc1, reinterpret_cast<LPCSTR>(lParam));
        SetDlgItemTextA(dialog, IDYES, "&Yes");
        SetDlgItemTextA(dialog, IDNO, "&No");
        SetDlgItemTextA(dialog, IDOK, "OK");
        SetFocus(GetDlgItem(dialog, GetDlgItem(dialog, IDNO) ? IDNO : IDOK));
        return FALSE;
    }
    if (message == WM_COMMAND) {
        EndDialog(dialog, LOWORD(wParam));
        return TRUE;
    }
    return FALSE;
}

bool Confirms(HWND owner, const std::string& question) {
    return RunDialog(questionDialog, owner, MessageProcedure,
                     reinterpret_cast<LPARAM>(question.c_str())) == IDYES;
}

void Tell(HWND owner, const std::string& note) {
    RunDialog(noteDialog, owner, MessageProcedure, reinterpret_cast<LPARAM>(note.c_str()));
}

// ---- The dialog -------------------------------------------------------------------------------

class SaveDialog {
  public:
    explicit SaveDialog(const OPENFILENAMEA& request)
        : request_(request), filters_(FiltersOf(request.lpstrFilter)) {}

    /// False when the person gave it up, or it could not be shown.
    bool Run() {
        return RunDialog(saveDialog, request_.hwndOwner, Procedure,
                         reinterpret_cast<LPARAM>(this)) == IDOK;
    }

    const std::string& Path() const { return path_; }
    DWORD FilterIndex() const { return filterIndex_; }

  private:
    static INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SetWindowLongPtrA(dialog, DWLP_USER, lParam);
            reinterpret_cast<SaveDialog*>(lParam)->Open(dialog);
            return FALSE;
        }
        const auto self = reinterpret_cast<SaveDialog*>(GetWindowLongPtrA(dialog, DWLP_USER));
        return self && message == WM_COMMAND && self->Command(LOWORD(wParam), HIWORD(wParam));
    }

    void Open(HWND dialog) {
        dialog_ = dialog;
        const struct {
            INT id;
            const char* text;
        } texts[] = {{stc2, "&Name:"}, {stc3, "&Type:"}, {IDOK, "&Save"}, {IDCANCEL, "Cancel"}};
        for (const auto& [id, text] : texts) {
            SetDlgItemTextA(dialog, id, text);
        }
        if (request_.lpstrTitle) {
            SetWindowTextA(dialog, request_.lpstrTitle);
        }
        const std::string name(request_.lpstrFile, strnlen(request_.lpstrFile, request_.nMaxFile));
        folder_ = StartFolder(FolderPart(name));
        AddFilters();
        Fill();
        ProposeName(NamePart(name));
        SetFocus(Item(edt1));
    }

    HWND Item(INT id) const { return GetDlgItem(dialog_, id); }

    std::string StartFolder(std::string_view ofName) const {
        char current[PATH_MAX] = "/";
        if (!getcwd(current, sizeof(current))) {
            std::strcpy(current, "/");
        }
        std::string wanted(ofName);
        if (wanted.empty() && request_.lpstrInitialDir) {
            wanted = request_.lpstrInitialDir;
        }
        const std::string folder = FullPath(current, wanted);
        return IsFolder(folder) ? folder : current;
    }

    void AddFilters() {
        for (const FileFilter& filter : filters_) {
            SendMessageA(Item(cmb1), CB_ADDSTRING, 0,
                         reinterpret_cast<LPARAM>(filter.description.c_str()));
        }
        if (filters_.empty()) {
            ShowWindow(Item(stc3), SW_HIDE);
            ShowWindow(Item(cmb1), SW_HIDE);
            return;
        }
        const DWORD wanted = request_.nFilterIndex;
        filterIndex_ = wanted >= 1 && wanted <= filters_.size() ? wanted : 1;
        patterns_ = filters_[filterIndex_ - 1].patterns;
        SendMessageA(Item(cmb1), CB_SETCURSEL, filterIndex_ - 1, 0);
    }

    void Fill() {
        SetDlgItemTextA(dialog_, stc1, folder_.c_str());
        const HWND list = Item(lst1);
        SendMessageA(list, LB_RESETCONTENT, 0, 0);
        for (const std::string& entry : EntriesOfFolder(folder_, patterns_)) {
            SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(entry.c_str()));
        }
        SendMessageA(list, LB_SETTOPINDEX, 0, 0);
    }

    void ProposeName(std::string_view name) {
        SetDlgItemTextA(dialog_, edt1, std::string(name).c_str());
        SendMessageA(Item(edt1), EM_SETSEL, 0, -1);
    }

    bool Command(INT id, INT code) {
        switch (id) {
            case IDOK:
                Enter();
                return true;
            case IDCANCEL:
                EndDialog(dialog_, IDCANCEL);
                return true;
            case lst1:
                if (code == LBN_SELCHANGE && !SelectedEntry().ends_with('/')) {
                    ProposeName(SelectedEntry());
                } else if (code == LBN_DBLCLK) {
                    Enter();
                }
                return true;
            case cmb1:
                if (code == CBN_SELCHANGE) {
                    ChangeFilter();
                }
                return true;
            default:
                return false;
        }
    }

    std::string SelectedEntry() const {
        const HWND list = Item(lst1);
        const auto index = static_cast<WPARAM>(SendMessageA(list, LB_GETCURSEL, 0, 0));
        const LRESULT length = SendMessageA(list, LB_GETTEXTLEN, index, 0);
        std::string text(static_cast<std::size_t>(std::max<LRESULT>(0, length)) + 1, '\0');
        if (length >= 0) {
            SendMessageA(list, LB_GETTEXT, index, reinterpret_cast<LPARAM>(text.data()));
        }
        text.pop_back();
        return text;
    }

    void ChangeFilter() {
        const LRESULT selected = SendMessageA(Item(cmb1), CB_GETCURSEL, 0, 0);
        if (selected >= 0 && static_cast<std::size_t>(selected) < filters_.size()) {
            filterIndex_ = static_cast<DWORD>(selected) + 1;
            patterns_ = filters_[static_cast<std::size_t>(selected)].patterns;
            Fill();
        }
    }

    /// What has the focus is meant: a folder in the list, or the name.
    void Enter() {
        const std::string entry = GetFocus() == Item(lst1) ? SelectedEntry() : "";
        if (entry.ends_with('/')) {
            GoTo(FullPath(folder_, entry));
            SendMessageA(Item(lst1), LB_SETCURSEL, 0, 0);
        } else {
            Accept(TextOf(Item(edt1)));
        }
    }

    void GoTo(const std::string& folder) {
        folder_ = folder;
        Fill();
    }

    void Accept(const std::string& name) {
        if (name.empty()) {
            return;
        }
        if (NamePart(name).find_first_of("*?") != std::string_view::npos &&
            FolderPart(name).empty()) {
            patterns_ = name;
            Fill();
            ProposeName("");
            return;
        }
        const std::string typed = FullPath(folder_, name);
        if (IsFolder(typed)) {
            GoTo(typed);
            ProposeName("");
            return;
        }
        const std::string path = WithExtension(typed, request_.lpstrDefExt);
        if (name.ends_with('/') || !IsFolder(std::string(FolderPart(path)))) {
            return Tell(dialog_, "There is no such folder:\n" + std::string(FolderPart(path)));
        }
        if (IsFolder(path)) {
            return Tell(dialog_, "This is a folder:\n" + path);
        }
        if (path.size() >= request_.nMaxFile) {
            return Tell(dialog_, "This name is too long:\n" + path);
        }
        if ((request_.Flags & OFN_OVERWRITEPROMPT) == 0 || !Exists(path) ||
            Confirms(dialog_, "The file exists already. Write over it?\n" + path)) {
            path_ = path;
            EndDialog(dialog_, IDOK);
        }
    }

    const OPENFILENAMEA& request_;
    std::vector<FileFilter> filters_;
    HWND dialog_ = nullptr;
    std::string folder_;
    std::string patterns_ = "*.*";
    DWORD filterIndex_ = 0;
    std::string path_;
};

BOOL Fail(DWORD error) {
    lastError = error;
    return FALSE;
}

void FillRecord(OPENFILENAMEA& request, const std::string& path) {
    std::memcpy(request.lpstrFile, path.c_str(), path.size() + 1);
    const std::string_view name = NamePart(path);
    const std::size_t offset = path.size() - name.size();
    const std::size_t dot = name.rfind('.');
    request.nFileOffset = static_cast<WORD>(offset);
    request.nFileExtension = static_cast<WORD>(dot == name.npos ? 0 : offset + dot + 1);
    if (request.lpstrFileTitle && request.nMaxFileTitle > 0) {
        CopyText(name.data(), name.size(), request.lpstrFileTitle, request.nMaxFileTitle);
    }
}

}  // namespace

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

BOOL WINAPI GetSaveFileNameA(OPENFILENAMEA* request) {
    lastError = 0;
    if (!request || (request->lStructSize != sizeof(OPENFILENAMEA) &&
                     request->lStructSize != OPENFILENAME_SIZE_VERSION_400A)) {
        return Fail(CDERR_STRUCTSIZE);
    }
    if (request->hwndOwner && !IsWindow(request->hwndOwner)) {
        return Fail(CDERR_INITIALIZATION);
    }
    if (!request->lpstrFile || request->nMaxFile == 0) {
        return Fail(FNERR_BUFFERTOOSMALL);
    }
    SaveDialog dialog(*request);
    if (!dialog.Run()) {
        return FALSE;
    }
    request->nFilterIndex = dialog.FilterIndex();
    FillRecord(*request, dialog.Path());
    return TRUE;
}

DWORD WINAPI CommDlgExtendedError(void) {
    return lastError;
}
}
