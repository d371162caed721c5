// dialog_screen SCENE: opens dialogs in the terminal and says afterwards what became of them. The
// tests of the display run it in terminals of their own; a person can run it as well.

#include <quennet_platform.h>
#include <quennet_terminal.h>
#include <signal.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

#include "hostkit/terminal_questions.h"

namespace {

// While a dialog is on the screen nothing else is written there.
std::mutex toldMutex;
std::string told;

void Tell(const std::string& line) {
    const std::lock_guard lock(toldMutex);
    told += line + '\n';
}

enum : WORD { typesDialog = 200, smallDialog = 201 };
enum : WORD { typeList = 10, nameLabel = 11, nameField = 12, more = 13, note = 14, ok = 99 };

constexpr std::array typesControls = {
    QuennetControlTemplate{"ComboBox", typeList, CBS_DROPDOWNLIST | WS_TABSTOP, 4, 8, 176, 60},
    QuennetControlTemplate{"Static", nameLabel, 0, 4, 24, 36, 8},
    QuennetControlTemplate{"Edit", nameField, ES_AUTOHSCROLL | WS_TABSTOP, 44, 24, 60, 12},
    QuennetControlTemplate{"Static", note, SS_NOPREFIX, 4, 40, 176, 24},
    QuennetControlTemplate{"Button", ok, BS_DEFPUSHBUTTON | WS_TABSTOP, 4, 72, 52, 14},
    QuennetControlTemplate{"Button", IDCANCEL, WS_TABSTOP, 64, 72, 52, 14},
    QuennetControlTemplate{"Button", more, WS_TABSTOP, 124, 72, 52, 14},
};
constexpr std::array smallControls = {
    QuennetControlTemplate{"Static", nameLabel, 0, 4, 8, 60, 8},
    QuennetControlTemplate{"Edit", nameField, ES_AUTOHSCROLL | WS_TABSTOP, 4, 16, 60, 12},
};
constexpr DWORD style = WS_POPUP | WS_CAPTION | DS_CENTER;
constexpr std::array dialogs = {
    QuennetDialogTemplate{typesDialog, " Types", style, 184, 88, typesControls.data(),
                          typesControls.size()},
    QuennetDialogTemplate{smallDialog, " Small", style, 70, 32, smallControls.data(),
                          smallControls.size()},
};

constexpr std::pair<WORD, const char*> typesTexts[] = {
    {nameLabel, "&Name:"},
    {nameField, "a\344b"},
    {note,
     "R&D: \x1B[31mred\x07, \2332J, \xE2\x80\xAEright to left, \xE6\x97\xA5\xE6\x9C\xAC, "
     "e\xCC\x81, and so many words that they need two lines"},
    {ok, "OK"},
    {IDCANCEL, "Cancel"},
    {more, "&More"},
};

constexpr const char* types[] = {
    "USER User@Host", "SITE Host",
    "OPEN Host",      "A very long one that does not fit into the list that shows it",
    "five",           "six"};

/// What the button More does.
std::function<void(HWND)> pressedMore;

void Open(HWND dialog) {
    const HWND list = GetDlgItem(dialog, typeList);
    if (!list) {
        SetDlgItemTextA(dialog, nameLabel, "&Inner:");
        SetFocus(GetDlgItem(dialog, nameField));
        return;
    }
    for (const char* type : types) {
        SendMessageA(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(type));
    }
    SendMessageA(list, CB_SETCURSEL, 0, 0);
    for (const auto& [id, text] : typesTexts) {
        SetDlgItemTextA(dialog, id, text);
    }
    SetFocus(list);
}

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    if (message == WM_INITDIALOG) {
        Open(dialog);
        return FALSE;
    }
    if (message == WM_COMMAND && HIWORD(wParam) == EN_CHANGE && !GetDlgItem(dialog, typeList)) {
        SetForegroundWindow(GetParent(dialog));  // which does not cover its own dialog
    }
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) {
        return FALSE;
    }
    const INT id = LOWORD(wParam);
    if (id == more) {
        pressedMore(dialog);
    } else if (id == IDOK || id == IDCANCEL || id == ok) {
        for (const INT field : {typeList, nameField}) {
            char text[300] = "";
            if (id != IDCANCEL && GetDlgItemTextA(dialog, field, text, sizeof(text)) > 0) {
                Tell(std::to_string(field) + ": \"" + text + '"');
            }
        }
        EndDialog(dialog, id);
    }
    return TRUE;
}

const HINSTANCE own = reinterpret_cast<HINSTANCE>(const_cast<QuennetDialogTemplate*>(&dialogs[0]));

void Run(WORD id, HWND owner = nullptr) {
    const INT_PTR result = DialogBoxParamA(own, MAKEINTRESOURCEA(id), owner, Procedure, 0);
    Tell("dialog " + std::to_string(id) + ": " + std::to_string(result));
}

void RunTypes(const std::function<void(HWND)>& atMore) {
    pressedMore = atMore;
    Run(typesDialog);
}

void RunNested() {
    RunTypes([](HWND dialog) { Run(smallDialog, dialog); });
}

/// A dialog, one of another thread above it, and a thread that changes the first one's texts all
/// the time.
void RunThreads() {
    std::jthread other([](std::stop_token stop) {
        while (!IsWindowVisible(FindWindowA(nullptr, " Types")) && !stop.stop_requested()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        Run(smallDialog);
    });
    std::jthread painter([](std::stop_token stop) {
        for (int number = 0; !stop.stop_requested(); ++number) {
            if (const HWND dialog = FindWindowA(nullptr, " Types")) {
                SetDlgItemTextA(dialog, note, std::to_string(number % 10).c_str());
                InvalidateRect(dialog, nullptr, TRUE);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    RunNested();
}

void RunMessage() {
    hostkit::ShowMessageDialog(
        "The connection was lost and could not be made again, although it "
        "was tried over and over.\n\nR&D knows.");
    Tell("message: closed");
}

void RunPassword() {
    const auto password = hostkit::AskPasswordDialog("ftp.example.org");
    Tell("password: " + (password ? '"' + *password + '"' : "none"));
}

const std::map<std::string, void (*)()> scenes = {
    {"types", RunNested},
    {"threads", RunThreads},
    {"message", RunMessage},
    {"password", RunPassword},
    {"exit", [] { RunTypes([](HWND) { std::exit(7); }); }},
    {"terminate", [] { RunTypes([](HWND) { std::terminate(); }); }},
    {"crash", [] { RunTypes([](HWND) { raise(SIGSEGV); }); }},
};

}  // namespace

int main(int count, char** values) {
    QuennetRegisterDialogs(own, dialogs.data(), static_cast<UINT>(dialogs.size()));
    if (!quennet::UseTerminalDisplay()) {
        std::puts("no terminal");
        return 2;
    }
    scenes.at(count > 1 ? values[1] : "types")();
    std::printf("%sdone\n", told.c_str());
}
