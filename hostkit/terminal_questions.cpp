#include "hostkit/terminal_questions.h"

#include <quennet_canvas.h>
#include <quennet_platform.h>

#include <algorithm>
#include <exception>
#include <string_view>
#include <vector>

#include "hostkit/dialog_cells.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

constexpr char title[] = " Quennet";
constexpr int widestText = 60;  // characters
constexpr int mostLines = 18;
constexpr std::size_t longestPassword = 79;

enum : WORD { dialogId = 1, textId = 100, passwordId = 101, okId = 99, cancelId = IDCANCEL };

struct Question {
    std::string text;
    bool asksPassword;
    std::optional<std::string> password;
};

INT_PTR Initialise(HWND dialog, const Question& question) {
    SetDlgItemTextA(dialog, textId, question.text.c_str());
    SetDlgItemTextA(dialog, okId, TextOfId(okId));
    SetDlgItemTextA(dialog, cancelId, TextOfId(cancelId));
    SendDlgItemMessageA(dialog, passwordId, EM_LIMITTEXT, longestPassword, 0);
    return TRUE;
}

void TakePassword(HWND dialog, Question& question) {
    char password[longestPassword + 1];
    GetDlgItemTextA(dialog, passwordId, password, sizeof(password));
    question.password = password;
}

extern "C" INT_PTR CALLBACK QuestionProcedure(HWND dialog, UINT message, WPARAM wParam,
                                              LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, lParam);
        return Initialise(dialog, *reinterpret_cast<const Question*>(lParam));
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) {
        return FALSE;
    }
    auto& question = *reinterpret_cast<Question*>(GetWindowLongPtrA(dialog, DWLP_USER));
    if (LOWORD(wParam) == cancelId) {
        EndDialog(dialog, 0);
        return TRUE;
    }
    if (LOWORD(wParam) == okId || LOWORD(wParam) == IDOK) {
        if (question.asksPassword) {
            TakePassword(dialog, question);
        }
        EndDialog(dialog, 1);
        return TRUE;
    }
    return FALSE;
}

/// The dialog that this thread shows already, if there is one.
HWND OwnerHere() {
    HWND window = nullptr;
    while ((window = FindWindowExA(nullptr, window, nullptr, nullptr)) != nullptr) {
        if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId() &&
            IsWindowVisible(window) && IsWindowEnabled(window)) {
            return window;
        }
    }
    return nullptr;
}

/// Makes a template as large as the text, and runs it. Its instance is the question itself, so
/// several threads can ask at once.
void Run(Question& question) {
    const std::vector<std::string> lines = quennet::WrapText(question.text, widestText);
    const int height = std::min(static_cast<int>(lines.size()), mostLines);
    int width = 24;
    for (const std::string& line : lines) {
        width = std::max(width, quennet::ColumnsOf(line));
    }
    std::vector<QuennetControlTemplate> controls = {
        CellControl("Static", textId, SS_LEFT | SS_NOPREFIX, 2, 1, width, height)};
    int row = height + 2;
    if (question.asksPassword) {
        constexpr DWORD style = ES_PASSWORD | ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP;
        controls.push_back(CellControl("Edit", passwordId, style, 2, row, width));
        row += 2;
        controls.push_back(
            CellControl("Button", okId, BS_DEFPUSHBUTTON | WS_TABSTOP, width / 2 - 10, row, 11));
        controls.push_back(
            CellControl("Button", cancelId, BS_PUSHBUTTON | WS_TABSTOP, width / 2 + 3, row, 11));
    } else {
        controls.push_back(
            CellControl("Button", okId, BS_DEFPUSHBUTTON | WS_TABSTOP, width / 2 - 3, row, 11));
    }
    const QuennetDialogTemplate dialog = {dialogId,
                                          title,
                                          WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME,
                                          static_cast<SHORT>((width + 4) * unitsAcross),
                                          static_cast<SHORT>((row + 1) * unitsDown),
                                          controls.data(),
                                          static_cast<UINT>(controls.size())};
    const auto instance = reinterpret_cast<HINSTANCE>(&question);
    QuennetRegisterDialogs(instance, &dialog, 1);
    DialogBoxParamA(instance, MAKEINTRESOURCEA(dialogId), OwnerHere(), QuestionProcedure,
                    reinterpret_cast<LPARAM>(&question));
    QuennetUnregisterDialogs(&dialog);
}

}  // namespace

void ShowMessageDialog(const std::string& text) {
    Question question = {text, false, std::nullopt};
    Run(question);
}

std::optional<std::string> AskPasswordDialog(const std::string& server) {
    Question question = {"Password for " + server + ":", true, std::nullopt};
    Run(question);
    return question.password;
}

void AskInDialogs(HostOptions& options) {
    const auto show = [](u32, const std::string& text) {
        try {
            ShowMessageDialog(text);
        } catch (const std::exception&) {
            // Without memory nothing is shown.
        }
    };
    options.showMessage = show;
    options.reportError = show;
    options.askPassword = [](const std::string& server) -> std::optional<std::string> {
        try {
            return AskPasswordDialog(server);
        } catch (const std::exception&) {
            return std::nullopt;
        }
    };
}

}  // namespace hostkit
