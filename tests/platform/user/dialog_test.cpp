// Modal dialogs from templates, driven by keys and clicks of another thread.

#include <gtest/gtest.h>
#include <quennet_platform.h>

#include <array>
#include <functional>

#include "platform/user/window_support.h"
#include "support/dialog_user.h"

namespace {

enum : WORD { outerDialog = 500, innerDialog = 501, brokenDialog = 503 };
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

constexpr DWORD dialogStyle = WS_POPUP | WS_CAPTION;
constexpr std::array dialogs = {
    QuennetDialogTemplate{outerDialog, "outer", dialogStyle, 130, 90, outerControls.data(),
                          outerControls.size()},
    QuennetDialogTemplate{innerDialog, "inner", dialogStyle, 70, 20, innerControls.data(),
                          innerControls.size()},
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

    const HINSTANCE instance_ = reinterpret_cast<HINSTANCE>(const_cast<INT_PTR*>(&someWord_));
    const INT_PTR someWord_ = 0;
};

}  // namespace

TEST_F(DialogTest, EnterPressesTheFocusedButtonElseTheDefaultOneElseItIsOk) {
    struct {
        WORD dialog;
        int control;
        WPARAM key;
        INT_PTR result;
    } const cases[] = {
        {outerDialog, nameField, VK_RETURN, okButton},
        {outerDialog, checkField, VK_RETURN, okButton},
        {outerDialog, IDCANCEL, VK_RETURN, IDCANCEL},
        {innerDialog, nameField, VK_RETURN, IDOK},
        {innerDialog, nameField, VK_ESCAPE, IDCANCEL},
    };
    for (const auto& step : cases) {
        std::jthread person([&, caption = step.dialog == outerDialog ? "outer" : "inner"] {
            WaitForDialog(caption).PressKey(step.control, step.key);
        });
        EXPECT_EQ(Run(step.dialog), step.result) << step.dialog << ' ' << step.control;
    }
}

TEST_F(DialogTest, TabLettersWithAMarkAndArrowsLeadThroughIt) {
    struct {
        int focus;
        UINT message;
        WPARAM key;
        int focusBehind;
        bool checkedBehind;
    } const steps[] = {
        {nameField, WM_KEYDOWN, VK_TAB, checkField, false},  // past the list, which is disabled
        {IDCANCEL, WM_KEYDOWN, VK_TAB, nameField, false},
        {nameField, WM_KEYDOWN, VK_SHIFT, nameField, false},
        {nameField, WM_KEYDOWN, VK_TAB, IDCANCEL, false},
        {IDCANCEL, WM_KEYUP, VK_SHIFT, IDCANCEL, false},
        {okButton, WM_SYSCHAR, 'n', nameField, false},   // of the label in front of the field
        {nameField, WM_SYSCHAR, 'C', checkField, true},  // a click
        {nameField, WM_CHAR, 'c', nameField, true},      // the field takes letters itself
        {okButton, WM_CHAR, 'c', checkField, false},     // a button does not
        {okButton, WM_CHAR, '&', okButton, false},       // no mark: the sign itself
        {checkField, WM_KEYDOWN, VK_DOWN, okButton, false},
        {okButton, WM_KEYDOWN, VK_LEFT, checkField, false},
        {checkField, WM_KEYDOWN, VK_UP, IDCANCEL, false},  // round the group, which it begins
    };
    const DialogHandler handler = [&](HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_INITDIALOG) {
            EXPECT_EQ(GetDlgCtrlID(reinterpret_cast<HWND>(wParam)), nameField);
            EnableWindow(GetDlgItem(dialog, listField), FALSE);
            SetDlgItemTextA(dialog, label, "&Name:");
            SetDlgItemTextA(dialog, checkField, "A && b, &check");
            const HWND first = GetDlgItem(dialog, checkField);
            SetWindowLongA(first, GWL_STYLE, GetWindowLongA(first, GWL_STYLE) | WS_GROUP);
            PostMessageA(dialog, WM_APP, 0, 0);
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
    EXPECT_EQ(Run(outerDialog, handler), 1);
}

TEST_F(DialogTest, KeepsTheTimersOfOtherWindowsGoing) {
    const Handler closesTheDialog = [&](HWND, UINT message, WPARAM, LPARAM) {
        const HWND dialog = FindWindowA(nullptr, "outer");
        if (message == WM_TIMER && IsWindowVisible(dialog)) {
            EndDialog(dialog, 77);
        }
        return unhandled;
    };
    const HWND timed = MakeWindow(&closesTheDialog);
    SetTimer(timed, 1, 10, nullptr);
    EXPECT_EQ(Run(outerDialog), 77);
    DestroyWindow(timed);
}

TEST_F(DialogTest, EndsWithQuitAndPassesItOn) {
    const DialogHandler quits = [&](HWND, UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) {
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
    const HWND owner = MakeWindow(nullptr);
    for (const bool destroys : {false, true}) {
        const DialogHandler ends = [&](HWND dialog, UINT message, WPARAM, LPARAM) -> INT_PTR {
            EXPECT_NE(message, UINT{WM_SHOWWINDOW});
            return message == WM_INITDIALOG &&
                   (destroys ? DestroyWindow(dialog) : EndDialog(dialog, 9));
        };
        EXPECT_EQ(Run(outerDialog, ends, owner), destroys ? 0 : 9);
        EXPECT_TRUE(IsWindowEnabled(owner));
    }
    DestroyWindow(owner);
}

TEST_F(DialogTest, IsNotFoundWithoutATemplateOfItsInstance) {
    const HWND owner = MakeWindow(nullptr);
    EXPECT_EQ(Run(999, EndWithButton, owner), -1);
    EXPECT_EQ(Run(brokenDialog, EndWithButton, owner), -1);
    EXPECT_TRUE(IsWindowEnabled(owner));
    EXPECT_EQ(FindWindowA("#32770", nullptr), nullptr) << "nothing is left of the broken one";
    DestroyWindow(owner);
    EXPECT_EQ(Run(outerDialog, EndWithButton, owner), 0) << "the owner is gone";
    QuennetUnregisterDialogs(dialogs.data());
    EXPECT_EQ(Run(outerDialog), -1);
}
