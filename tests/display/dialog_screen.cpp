// dialog_screen SCENE: opens dialogs in the terminal and says afterwards what became of them. The
// tests of the display run it in terminals of their own; a person can run it as well.

#include <quennet_platform.h>
#include <quennet_terminal.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "hostkit/terminal_questions.h"

namespace {

// While a dialog is on the screen nothing else is written there.
std::mutex toldMutex;
std::string told;

void Tell(const std::string& line) {
    const std::lock_guard lock(toldMutex);
    told += line + '\n';
}

std::string TextOf(HWND dialog, INT id) {
    char text[300];
    GetDlgItemTextA(dialog, id, text, sizeof(text));
    return text;
}

enum : WORD { typesDialog = 200, smallDialog = 201 };
enum : WORD { typeList = 10, nameLabel = 11, nameField = 12, more = 13, note = 14 };

constexpr std::array typesControls = {
    QuennetControlTemplate{"ComboBox", typeList, CBS_DROPDOWNLIST | WS_TABSTOP, 4, 8, 176, 60},
    QuennetControlTemplate{"Static", nameLabel, 0, 4, 24, 36, 8},
    QuennetControlTemplate{"Edit", nameField, ES_AUTOHSCROLL | WS_TABSTOP, 44, 24, 60, 12},
    QuennetControlTemplate{"Static", note, SS_NOPREFIX, 4, 40, 176, 24},
    QuennetControlTemplate{"Button", 99, BS_DEFPUSHBUTTON | WS_TABSTOP, 4, 72, 52, 14},
    QuennetControlTemplate{"Button", 2, WS_TABSTOP, 64, 72, 52, 14},
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

const HINSTANCE own = reinterpret_cast<HINSTANCE>(const_cast<QuennetDialogTemplate*>(&dialogs[0]));

using Opening = std::function<void(HWND)>;
using Command = std::function<void(HWND, INT id, INT code)>;

struct Behaviour {
    Opening open;
    Command command;
    std::vector<INT> fields;  // printed at the end
};

INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, lParam);
        reinterpret_cast<const Behaviour*>(lParam)->open(dialog);
        return FALSE;
    }
    if (message != WM_COMMAND) {
        return FALSE;
    }
    const auto& behaviour =
        *reinterpret_cast<const Behaviour*>(GetWindowLongPtrA(dialog, DWLP_USER));
    const INT id = LOWORD(wParam);
    if (behaviour.command) {
        behaviour.command(dialog, id, HIWORD(wParam));
    }
    if (HIWORD(wParam) == BN_CLICKED && (id == IDOK || id == IDCANCEL || id == 99)) {
        if (id != IDCANCEL) {
            for (const INT field : behaviour.fields) {
                Tell(std::to_string(field) + ": \"" + TextOf(dialog, field) + '"');
            }
        }
        EndDialog(dialog, id);
    }
    return TRUE;
}

void Run(WORD id, const Behaviour& behaviour, HWND owner = nullptr) {
    const INT_PTR result = DialogBoxParamA(own, MAKEINTRESOURCEA(id), owner, Procedure,
                                           reinterpret_cast<LPARAM>(&behaviour));
    Tell("dialog " + std::to_string(id) + ": " + std::to_string(result));
}

void OpenSmall(HWND dialog) {
    SetDlgItemTextA(dialog, nameLabel, "&Inner:");
    SetFocus(GetDlgItem(dialog, nameField));
}
const Behaviour smallOne = {OpenSmall, {}, {nameField}};

void OpenTypes(HWND dialog) {
    for (const char* type : {"USER User@Host", "SITE Host", "OPEN Host",
                             "A very long one that does "
                             "not fit into the list that shows it",
                             "five", "six"}) {
        SendDlgItemMessageA(dialog, typeList, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(type));
    }
    SendDlgItemMessageA(dialog, typeList, CB_SETCURSEL, 0, 0);
    SetDlgItemTextA(dialog, nameLabel, "&Name:");
    SetDlgItemTextA(dialog, nameField,
                    "a\xE4"
                    "b");
    SetDlgItemTextA(dialog, note,
                    "R&D: \x1B[31mred\x07, \x9B"
                    "2J, \xE2\x80\xAEright to left, \xE6\x97\xA5"
                    "\xE6\x9C\xAC, e\xCC\x81, and so many words that they need two lines");
    SetDlgItemTextA(dialog, 99, "OK");
    SetDlgItemTextA(dialog, 2, "Cancel");
    SetDlgItemTextA(dialog, more, "&More");
    SetFocus(GetDlgItem(dialog, typeList));
}

void CommandTypes(HWND dialog, INT id, INT code) {
    if (id == more && code == BN_CLICKED) {
        Run(smallDialog, smallOne, dialog);
    }
}
const Behaviour types = {OpenTypes, CommandTypes, {typeList, nameField}};

void RunTypes() {
    Run(typesDialog, types);
}

/// A dialog, one of another thread above it, and a thread that changes the first one's texts all
/// the time.
void RunThreads() {
    std::atomic<bool> closed = false;
    std::thread other([&] {
        while (!IsWindowVisible(FindWindowA(nullptr, " Types")) && !closed) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        Run(smallDialog, smallOne);
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
    Run(typesDialog, types);
    closed = true;
    other.join();
}

// ---- Ends in the middle of a dialog -----------------------------------------------------------

void RunEnding(const std::function<void()>& end) {
    const auto command = [&](HWND, INT id, INT code) {
        if (id == more && code == BN_CLICKED) {
            end();
        }
    };
    Run(typesDialog, {OpenTypes, command, {}});
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

struct Scene {
    const char* name;
    std::function<void()> run;
};

const Scene scenes[] = {
    {"types", RunTypes},
    {"threads", RunThreads},
    {"message", RunMessage},
    {"password", RunPassword},
    {"exit", [] { RunEnding([] { std::exit(7); }); }},
    {"terminate", [] { RunEnding([] { std::terminate(); }); }},
    {"crash", [] { RunEnding([] { raise(SIGSEGV); }); }},
};

}  // namespace

int main(int count, char** values) {
    const std::string wanted = count > 1 ? values[1] : "types";
    QuennetRegisterDialogs(own, dialogs.data(), static_cast<UINT>(dialogs.size()));
    if (!quennet::UseTerminalDisplay()) {
        std::puts("no terminal");
        return 2;
    }
    for (const Scene& scene : scenes) {
        if (scene.name == wanted) {
            scene.run();
        }
    }
    std::printf("%sdone\n", told.c_str());
}
