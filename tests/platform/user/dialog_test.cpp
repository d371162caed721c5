// Modal dialogs from templates, driven by keys and clicks of another thread.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <quennet_platform.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/user/window_support.h"
#include "support/dialog_user.h"

using testing::ElementsAre;

namespace {

enum : WORD { outerDialog = 500, innerDialog = 501, plainDialog = 502 };
enum : WORD { nameField = 10, listField = 11, checkField = 12, okButton = 13, label = 14 };

constexpr DWORD tabStop = WS_TABSTOP;
constexpr std::array outerControls = {
    QuennetControlTemplate{"Static", label, 0, 0, 0, 40, 8},
    QuennetControlTemplate{"Edit", nameField, tabStop, 44, 0, 60, 12},
    QuennetControlTemplate{"ListBox", listField, tabStop | LBS_NOTIFY, 0, 16, 60, 40},
    QuennetControlTemplate{"Button", checkField, tabStop | BS_AUTOCHECKBOX, 0, 60, 60, 12},
    QuennetControlTemplate{"Button", okButton, tabStop | BS_DEFPUSHBUTTON, 0, 76, 60, 12},
    QuennetControlTemplate{"Button", IDCANCEL, tabStop, 64, 76, 60, 12},
};
constexpr std::array innerControls = {
    QuennetControlTemplate{"Edit", nameField, tabStop, 0, 0, 60, 12},
};
constexpr std::array badControls = {
    QuennetControlTemplate{"no such class", nameField, 0, 0, 0, 60, 12},
};

enum : WORD { brokenDialog = 503 };
constexpr DWORD dialogStyle = WS_POPUP | WS_CAPTION;
constexpr std::array dialogs = {
    QuennetDialogTemplate{outerDialog, "outer", dialogStyle, 130, 90, outerControls.data(),
                          outerControls.size()},
    QuennetDialogTemplate{innerDialog, "inner", dialogStyle, 70, 20, innerControls.data(),
                          innerControls.size()},
    QuennetDialogTemplate{plainDialog, "plain", dialogStyle, 70, 20, nullptr, 0},
    QuennetDialogTemplate{brokenDialog, "broken", dialogStyle, 70, 20, badControls.data(),
                          badControls.size()},
};

using DialogHandler = std::function<INT_PTR(HWND, UINT, WPARAM, LPARAM)>;

INT_PTR CALLBACK TestDialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        SetWindowLongPtrA(dialog, DWLP_USER, lParam);
    }
    const auto handler =
        reinterpret_cast<const DialogHandler*>(GetWindowLongPtrA(dialog, DWLP_USER));
    return handler ? (*handler)(dialog, message, wParam, lParam) : FALSE;
}

/// Ends the dialog with the id of the button, and takes the default focus.
INT_PTR EndWithButton(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    const int id = LOWORD(wParam);
    if (message == WM_COMMAND && HIWORD(wParam) == BN_CLICKED && id != checkField &&
        id != nameField && id != listField) {
        EndDialog(dialog, id);
    }
    return message == WM_INITDIALOG;
}

class DialogTest : public testing::Test {
  protected:
    DialogTest() {
        QuennetRegisterDialogs(instance_, dialogs.data(), static_cast<UINT>(dialogs.size()));
    }
    ~DialogTest() override { QuennetUnregisterDialogs(dialogs.data()); }

    INT_PTR Run(WORD id, const DialogHandler& handler = EndWithButton, HWND owner = nullptr) const {
        return DialogBoxParamA(instance_, MAKEINTRESOURCEA(id), owner, TestDialogProcedure,
                               reinterpret_cast<LPARAM>(&handler));
    }

    /// Runs the dialog while a person on another thread does something with it.
    INT_PTR RunWith(const std::function<void()>& person, WORD id = outerDialog,
                    const DialogHandler& handler = EndWithButton, HWND owner = nullptr) const {
        std::thread thread(person);
        const INT_PTR result = Run(id, handler, owner);
        thread.join();
        return result;
    }

    const HINSTANCE instance_ = reinterpret_cast<HINSTANCE>(const_cast<INT_PTR*>(&someWord_));
    const INT_PTR someWord_ = 0;
};

}  // namespace

TEST_F(DialogTest, GivesWhatAPersonOfAnotherThreadDidToIt) {
    std::string name;
    bool checked = false;
    LRESULT chosen = LB_ERR;
    const DialogHandler handler = [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SendDlgItemMessageA(dialog, nameField, EM_LIMITTEXT, 6, 0);
            for (const char* entry : {"first", "second"}) {
                SendDlgItemMessageA(dialog, listField, LB_ADDSTRING, 0,
                                    reinterpret_cast<LPARAM>(entry));
            }
        }
        if (message == WM_COMMAND && LOWORD(wParam) == okButton) {
            char text[20];
            GetDlgItemTextA(dialog, nameField, text, sizeof(text));
            name = text;
            checked = IsDlgButtonChecked(dialog, checkField) != 0;
            chosen = SendDlgItemMessageA(dialog, listField, LB_GETCURSEL, 0, 0);
        }
        return EndWithButton(dialog, message, wParam, lParam);
    };
    const auto person = [] {
        const OpenDialog dialog = WaitForDialog("outer");
        EXPECT_THAT(dialog.Entries(listField), ElementsAre("first", "second"));
        dialog.SetField(nameField, "an");
        dialog.Type(nameField, "na-maria");
        dialog.SetChecked(checkField, true);
        dialog.Choose(listField, 1);
        EXPECT_EQ(dialog.Field(nameField), "anna-m");
        dialog.Press(okButton);
        EXPECT_TRUE(dialog.WaitUntilClosed());
    };
    EXPECT_EQ(RunWith(person, outerDialog, handler), okButton);
    EXPECT_EQ(name, "anna-m");
    EXPECT_TRUE(checked);
    EXPECT_EQ(chosen, 1);
}

TEST_F(DialogTest, EnterPressesTheFocusedButtonElseTheDefaultOneElseItIsOk) {
    struct {
        WORD dialog;
        const char* caption;
        int control;
        WPARAM key;
        INT_PTR result;
    } const cases[] = {
        {outerDialog, "outer", nameField, VK_RETURN, okButton},
        {outerDialog, "outer", checkField, VK_RETURN, okButton},
        {outerDialog, "outer", IDCANCEL, VK_RETURN, IDCANCEL},
        {innerDialog, "inner", nameField, VK_RETURN, IDOK},
        {innerDialog, "inner", nameField, VK_ESCAPE, IDCANCEL},
    };
    for (const auto& step : cases) {
        const auto person = [&] { WaitForDialog(step.caption).PressKey(step.control, step.key); };
        EXPECT_EQ(RunWith(person, step.dialog), step.result) << step.caption << ' ' << step.control;
    }
}

TEST_F(DialogTest, TabGoesRoundTheControlsThatTakeIt) {
    std::vector<int> visited;
    const DialogHandler handler = [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            EXPECT_EQ(GetDlgCtrlID(reinterpret_cast<HWND>(wParam)), nameField);
            EnableWindow(GetDlgItem(dialog, listField), FALSE);
        }
        if (message == WM_APP) {
            // Keys come to the control with the focus, as from a keyboard.
            const std::array<WPARAM, 7> keys = {VK_TAB,   VK_TAB, VK_TAB, VK_TAB,
                                                VK_SHIFT, VK_TAB, VK_TAB};
            MSG key = {};
            for (const WPARAM pressed : keys) {
                visited.push_back(GetDlgCtrlID(GetFocus()));
                PostMessageA(GetFocus(), WM_KEYDOWN, pressed, 0);
                PeekMessageA(&key, nullptr, WM_KEYDOWN, WM_KEYDOWN, PM_REMOVE);
                EXPECT_TRUE(IsDialogMessageA(dialog, &key));
            }
            PostMessageA(GetFocus(), WM_KEYUP, VK_SHIFT, 0);
            PeekMessageA(&key, nullptr, WM_KEYUP, WM_KEYUP, PM_REMOVE);
            visited.push_back(GetDlgCtrlID(GetFocus()));
            EndDialog(dialog, 1);
        }
        return EndWithButton(dialog, message, wParam, lParam);
    };
    const auto person = [] { PostMessageA(WaitForDialog("outer").Window(), WM_APP, 0, 0); };
    EXPECT_EQ(RunWith(person, outerDialog, handler), 1);
    EXPECT_THAT(visited, ElementsAre(nameField, checkField, okButton, IDCANCEL, nameField,
                                     nameField, IDCANCEL, okButton));
}

TEST_F(DialogTest, LettersWithAMarkAndArrowsLeadThroughIt) {
    struct {
        int focus;
        UINT message;
        WPARAM key;
        int focusBehind;
        bool checkedBehind;
    } const steps[] = {
        {okButton, WM_SYSCHAR, 'n', nameField, false},   // of the label in front of the field
        {nameField, WM_SYSCHAR, 'C', checkField, true},  // a click
        {nameField, WM_CHAR, 'c', nameField, true},      // the field takes letters itself
        {okButton, WM_CHAR, 'c', checkField, false},     // a button does not
        {okButton, WM_CHAR, '&', okButton, false},       // no mark: the sign itself
        {checkField, WM_KEYDOWN, VK_DOWN, okButton, false},
        {okButton, WM_KEYDOWN, VK_LEFT, checkField, false},
        {checkField, WM_KEYDOWN, VK_UP, IDCANCEL, false},  // round the group, which it begins
        {listField, WM_KEYDOWN, VK_DOWN, listField, false},
    };
    const DialogHandler handler = [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SetDlgItemTextA(dialog, label, "&Name:");
            SetDlgItemTextA(dialog, checkField, "A && b, &check");
            const HWND first = GetDlgItem(dialog, checkField);
            SetWindowLongA(first, GWL_STYLE, GetWindowLongA(first, GWL_STYLE) | WS_GROUP);
        }
        if (message == WM_APP) {
            MSG key = {};
            for (const auto& step : steps) {
                const HWND focus = GetDlgItem(dialog, step.focus);
                SetFocus(focus);
                PostMessageA(focus, step.message, step.key, 0);
                PeekMessageA(&key, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE);
                EXPECT_TRUE(IsDialogMessageA(dialog, &key));
                EXPECT_EQ(GetDlgCtrlID(GetFocus()), step.focusBehind) << step.key;
                EXPECT_EQ(OpenDialog(dialog).IsChecked(checkField), step.checkedBehind) << step.key;
            }
            EndDialog(dialog, 1);
        }
        return EndWithButton(dialog, message, wParam, lParam);
    };
    const auto person = [] { PostMessageA(WaitForDialog("outer").Window(), WM_APP, 0, 0); };
    EXPECT_EQ(RunWith(person, outerDialog, handler), 1);
}

TEST_F(DialogTest, TabSelectsTheTextOfAFieldSoThatTypingReplacesIt) {
    const auto person = [] {
        const OpenDialog dialog = WaitForDialog("outer");
        dialog.SetField(nameField, "before");
        dialog.PressKey(IDCANCEL, VK_TAB);
        PostMessageA(GetDlgItem(dialog.Window(), nameField), WM_CHAR, 'x', 0);
        dialog.PressKey(nameField, VK_RETURN);
    };
    std::string name;
    const DialogHandler handler = [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            SetFocus(GetDlgItem(dialog, IDCANCEL));
            return INT_PTR{FALSE};
        }
        if (message == WM_COMMAND && LOWORD(wParam) == okButton) {
            name = OpenDialog(dialog).Field(nameField);
        }
        return EndWithButton(dialog, message, wParam, lParam);
    };
    EXPECT_EQ(RunWith(person, outerDialog, handler), okButton);
    EXPECT_EQ(name, "x");
}

TEST_F(DialogTest, ClosingIsCancelUnlessThatIsDisabled) {
    const auto person = [] {
        const OpenDialog dialog = WaitForDialog("outer");
        const HWND cancel = GetDlgItem(dialog.Window(), IDCANCEL);
        EnableWindow(cancel, FALSE);
        SendMessageA(dialog.Window(), WM_CLOSE, 0, 0);
        EXPECT_FALSE(dialog.WaitUntilClosed(std::chrono::milliseconds(50)));
        EnableWindow(cancel, TRUE);
        SendMessageA(dialog.Window(), WM_CLOSE, 0, 0);
    };
    EXPECT_EQ(RunWith(person), IDCANCEL);
}

TEST_F(DialogTest, DisablesTheTopWindowOfItsOwnerWhileItRuns) {
    const HWND top = MakeWindow(nullptr);
    const HWND child = MakeWindow(nullptr, top, WS_CHILD);
    const auto person = [&] {
        const OpenDialog dialog = WaitForDialog("outer");
        EXPECT_EQ(GetParent(dialog.Window()), top);
        EXPECT_FALSE(IsWindowEnabled(top));
        dialog.Press(IDCANCEL);
    };
    RunWith(person, outerDialog, EndWithButton, child);
    EXPECT_TRUE(IsWindowEnabled(top));

    EnableWindow(top, FALSE);
    const auto cancel = [] { WaitForDialog("outer").Press(IDCANCEL); };
    RunWith(cancel, outerDialog, EndWithButton, top);
    EXPECT_FALSE(IsWindowEnabled(top)) << "it was disabled before";
    DestroyWindow(top);
}

TEST_F(DialogTest, NestsAndGivesTheFocusBack) {
    INT_PTR innerResult = 0;
    HWND focusBehind = nullptr;
    HWND checkBox = nullptr;
    const DialogHandler handler = [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COMMAND && LOWORD(wParam) == checkField) {
            checkBox = GetDlgItem(dialog, checkField);
            innerResult = Run(innerDialog, EndWithButton, dialog);
            focusBehind = GetFocus();
        }
        return EndWithButton(dialog, message, wParam, lParam);
    };
    const auto person = [] {
        const OpenDialog outer = WaitForDialog("outer");
        outer.Press(checkField);
        const OpenDialog inner = WaitForDialog("inner");
        EXPECT_FALSE(IsWindowEnabled(outer.Window()));
        // The dialog below still answers.
        outer.SetField(nameField, "below");
        inner.PressKey(nameField, VK_RETURN);
        EXPECT_TRUE(inner.WaitUntilClosed());
        EXPECT_EQ(outer.Field(nameField), "below");
        outer.Press(okButton);
    };
    EXPECT_EQ(RunWith(person, outerDialog, handler), okButton);
    EXPECT_EQ(innerResult, IDOK);
    EXPECT_EQ(focusBehind, checkBox);
}

TEST_F(DialogTest, KeepsTheTimersOfOtherWindowsGoing) {
    int ticks = 0;
    const Handler count = [&](HWND, UINT message, WPARAM, LPARAM) {
        ticks += message == WM_TIMER;
        return unhandled;
    };
    const HWND timed = MakeWindow(&count);
    SetTimer(timed, 1, 10, nullptr);
    const auto person = [] {
        const OpenDialog dialog = WaitForDialog("outer");
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        dialog.Press(okButton);
    };
    RunWith(person);
    EXPECT_GT(ticks, 0);
    DestroyWindow(timed);
}

TEST_F(DialogTest, EndsWithQuitAndPassesItOn) {
    const DialogHandler quits = [&](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) {
            PostMessageA(dialog, WM_APP, 0, 0);
        }
        if (message == WM_APP) {
            PostQuitMessage(7);
        }
        return FALSE;
    };
    EXPECT_EQ(Run(outerDialog, quits), 0);
    MSG message = {};
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.wParam, 7U);
}

TEST_F(DialogTest, EndsBeforeItIsShownOrWhenItIsDestroyed) {
    const DialogHandler endsAtOnce = [](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) {
            EndDialog(dialog, 9);
        }
        EXPECT_NE(message, UINT{WM_SHOWWINDOW});
        return FALSE;
    };
    EXPECT_EQ(Run(outerDialog, endsAtOnce), 9);

    const HWND owner = MakeWindow(nullptr);
    const DialogHandler destroysItself = [](HWND dialog, UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) {
            DestroyWindow(dialog);
        }
        return TRUE;
    };
    EXPECT_EQ(Run(outerDialog, destroysItself, owner), 0);
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_FALSE(EndDialog(owner, 1)) << "no dialog";
    DestroyWindow(owner);
}

TEST_F(DialogTest, CanBeEndedFromAnotherThread) {
    EXPECT_EQ(RunWith([] { EndDialog(WaitForDialog("outer").Window(), 77); }), 77);
}

TEST_F(DialogTest, GivesTheResultThatTheProcedureChose) {
    const DialogHandler answers = [](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message != WM_APP) {
            return EndWithButton(dialog, message, wParam, lParam);
        }
        SetWindowLongPtrA(dialog, DWLP_MSGRESULT, 1234);
        return static_cast<INT_PTR>(wParam);
    };
    const auto person = [] {
        const OpenDialog dialog = WaitForDialog("outer");
        EXPECT_EQ(SendMessageA(dialog.Window(), WM_APP, TRUE, 0), 1234);
        EXPECT_EQ(SendMessageA(dialog.Window(), WM_APP, FALSE, 0), 0) << "not handled";
        EXPECT_EQ(SendMessageA(dialog.Window(), DM_GETDEFID, 0, 0),
                  MAKELONG(okButton, DC_HASDEFID));
        SendMessageA(dialog.Window(), DM_SETDEFID, IDCANCEL, 0);
        dialog.PressKey(nameField, VK_RETURN);
    };
    EXPECT_EQ(RunWith(person, outerDialog, answers), IDCANCEL);
}

TEST_F(DialogTest, IsNotFoundWithoutATemplateOfItsInstance) {
    const HWND owner = MakeWindow(nullptr);
    EXPECT_EQ(Run(999, EndWithButton, owner), -1);
    EXPECT_EQ(Run(brokenDialog, EndWithButton, owner), -1);
    EXPECT_EQ(
        DialogBoxParamA(nullptr, MAKEINTRESOURCEA(outerDialog), owner, TestDialogProcedure, 0), -1);
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_EQ(FindWindowA("#32770", nullptr), nullptr) << "nothing is left of the broken one";
    DestroyWindow(owner);
    EXPECT_EQ(Run(outerDialog, EndWithButton, owner), 0) << "the owner is gone";
    QuennetUnregisterDialogs(dialogs.data());
    EXPECT_EQ(Run(outerDialog), -1);
}

namespace {

/// Shows nothing, but presses Enter in the first field that gets the focus.
struct ImpatientDisplay : quennet::Display {
    int windows = 0;
    int turns = 0;
    HWND dialog = nullptr;
    bool pressed = false;

    void WindowCreated(HWND) override { ++windows; }
    void WindowChanged(HWND window) override {
        if (!GetParent(window) && IsWindowVisible(window)) {
            dialog = window;
        }
    }
    void WindowDestroyed(HWND window) override {
        EXPECT_FALSE(IsWindow(window));
        --windows;
    }
    void RunInput() override {
        ++turns;
        if (dialog && !std::exchange(pressed, true)) {
            PostMessageA(GetFocus(), WM_KEYDOWN, VK_RETURN, 0);
        }
    }
};

}  // namespace

TEST_F(DialogTest, IsShownByADisplayAndTakesItsInput) {
    ImpatientDisplay display;
    quennet::SetDisplay(&display);
    EXPECT_EQ(Run(outerDialog), okButton);
    EXPECT_GT(display.turns, 0);
    EXPECT_EQ(display.windows, 0);

    // A thread that waits has a turn when the display asks for one.
    const HWND window = MakeWindow(nullptr);
    const DWORD here = GetCurrentThreadId();
    display.pressed = false;
    SetFocus(window);
    MSG message = {};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
    }
    display.pressed = false;
    std::thread waker([&] { QuennetWakeThread(here); });
    EXPECT_GT(GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.message, UINT{WM_KEYDOWN});
    waker.join();
    DestroyWindow(window);
    quennet::SetDisplay(nullptr);
}
