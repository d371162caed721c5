#include "hostkit/filter_dialog.h"

#include <iterator>
#include <mutex>
#include <string>

#include "hostkit/dialog_cells.h"
#include "hostkit/filter_text.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

constexpr int width = 62;
constexpr int height = 14;
constexpr std::size_t longestNumber = 24;

enum : WORD {
    dialogId = 1,
    okId = 99,
    cancelId = IDCANCEL,
    masksId = 101,
    smallestId = 102,
    largestId = 103,
    firstDateId = 104,
    lastDateId = 105,
    problemId = 106,
};

// Labels and boxes that have a text are named by its number.
constexpr DWORD label = SS_LEFT;
constexpr DWORD field = ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP;
const QuennetControlTemplate controls[] = {
    CellControl("Static", filterMasksText, label, 2, 1, 14),
    CellControl("Edit", masksId, field, 17, 1, 43),
    CellControl("Static", filterSizesText, label, 2, 3, 14),
    CellControl("Edit", smallestId, field, 17, 3, 18),
    CellControl("Static", filterLargestText, label, 37, 3, 4),
    CellControl("Edit", largestId, field, 42, 3, 18),
    CellControl("Static", filterDatesText, label, 2, 5, 14),
    CellControl("Edit", firstDateId, field, 17, 5, 18),
    CellControl("Static", filterLastDateText, label, 37, 5, 4),
    CellControl("Edit", lastDateId, field, 42, 5, 18),
    CellControl("Static", filterHintText, label | SS_NOPREFIX, 2, 7, 58),
    CellControl("Button", filterFoldersText, BS_AUTOCHECKBOX | WS_TABSTOP, 2, 8, 40),
    CellControl("Static", problemId, label | SS_NOPREFIX, 2, 10, 58),
    CellControl("Button", okId, BS_DEFPUSHBUTTON | WS_TABSTOP, width / 2 - 14, 12, 12),
    CellControl("Button", cancelId, BS_PUSHBUTTON | WS_TABSTOP, width / 2 + 3, 12, 12),
};

struct Edit {
    FilterRecord& filter;
    std::shared_mutex& mutex;
};

Edit& EditOf(HWND dialog) {
    return *reinterpret_cast<Edit*>(GetWindowLongPtrA(dialog, DWLP_USER));
}

std::string FieldText(HWND dialog, int id) {
    char text[sizeof(FilterRecord::masks)] = "";
    GetDlgItemTextA(dialog, id, text, sizeof(text));
    return text;
}

struct FieldControl {
    FilterField name;
    int id;
    std::string FilterText::*text;
    std::size_t longest;
};
constexpr FieldControl fields[] = {
    {FilterField::masks, masksId, &FilterText::masks, sizeof(FilterRecord::masks) - 1},
    {FilterField::smallest, smallestId, &FilterText::smallest, longestNumber},
    {FilterField::largest, largestId, &FilterText::largest, longestNumber},
    {FilterField::firstDate, firstDateId, &FilterText::firstDate, longestNumber},
    {FilterField::lastDate, lastDateId, &FilterText::lastDate, longestNumber},
};

void Open(HWND dialog, const FilterRecord& filter) {
    SetWindowTextA(dialog, TextOfId(filterTitleText));
    for (const QuennetControlTemplate& control : controls) {
        if (const char* text = TextOfId(control.id)) {
            SetDlgItemTextA(dialog, control.id, text);
        }
    }
    const FilterText text = TextOfFilter(filter);
    for (const FieldControl& each : fields) {
        SendDlgItemMessageA(dialog, each.id, EM_LIMITTEXT, each.longest, 0);
        SetDlgItemTextA(dialog, each.id, (text.*each.text).c_str());
    }
    CheckDlgButton(dialog, filterFoldersText, text.takesFolders ? BST_CHECKED : BST_UNCHECKED);
}

/// The person is told, and stands in the field.
void Refuse(HWND dialog, const FilterProblem& problem) {
    SetDlgItemTextA(dialog, problemId, TextOfId(problem.textId));
    for (const FieldControl& each : fields) {
        if (each.name == problem.field) {
            SetFocus(GetDlgItem(dialog, each.id));
            SendDlgItemMessageA(dialog, each.id, EM_SETSEL, 0, -1);
        }
    }
}

void Accept(HWND dialog) {
    FilterText text;
    for (const FieldControl& each : fields) {
        text.*each.text = FieldText(dialog, each.id);
    }
    text.takesFolders = IsDlgButtonChecked(dialog, filterFoldersText) == BST_CHECKED;
    Edit& edit = EditOf(dialog);
    std::optional<FilterProblem> problem;
    {
        const std::unique_lock lock(edit.mutex);
        problem = ReadFilter(text, edit.filter);
    }
    if (problem) {
        Refuse(dialog, *problem);
    } else {
        EndDialog(dialog, 1);
    }
}

extern "C" INT_PTR CALLBACK FilterProcedure(HWND dialog, UINT message, WPARAM wParam,
                                            LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, lParam);
        Open(dialog, reinterpret_cast<const Edit*>(lParam)->filter);
        return TRUE;
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) {
        return FALSE;
    }
    switch (LOWORD(wParam)) {
        case IDOK:
        case okId:
            Accept(dialog);
            return TRUE;
        case cancelId:
            EndDialog(dialog, 0);
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

bool EditFilterDialog(HWND owner, FilterRecord& filter, std::shared_mutex& mutex) {
    Edit edit = {filter, mutex};
    const QuennetDialogTemplate dialog = {dialogId,
                                          "",
                                          WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME,
                                          static_cast<SHORT>(width * unitsAcross),
                                          static_cast<SHORT>(height * unitsDown),
                                          controls,
                                          static_cast<UINT>(std::size(controls))};
    // The instance is this edit's own, so several threads can show the dialog at once.
    const auto instance = reinterpret_cast<HINSTANCE>(&edit);
    QuennetRegisterDialogs(instance, &dialog, 1);
    const INT_PTR result = DialogBoxParamA(instance, MAKEINTRESOURCEA(dialogId), owner,
                                           FilterProcedure, reinterpret_cast<LPARAM>(&edit));
    QuennetUnregisterDialogs(&dialog);
    return result == 1;
}

}  // namespace hostkit
