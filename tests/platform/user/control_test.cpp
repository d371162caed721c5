// Edit controls, list boxes and drop-down lists, in a window that hears what they tell.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/user/window_support.h"
#include "support/dialog_user.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr INT controlId = 100;

/// A parent with one control.
class ControlTest : public testing::Test {
  protected:
    ControlTest() { parent_ = MakeWindow(&handler_); }
    ~ControlTest() override { DestroyWindow(parent_); }

    void Make(const char* className, DWORD style) {
        control_ = CreateWindowExA(0, className, "", style | WS_CHILD, 0, 0, 200, 64, parent_,
                                   reinterpret_cast<HMENU>(INT_PTR{controlId}), nullptr, nullptr);
        ASSERT_NE(control_, nullptr);
        EXPECT_THAT(Told(), IsEmpty()) << "nobody is told of the creation";
    }

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageA(control_, message, wParam, lParam);
    }
    std::string Text() const { return OpenDialog(parent_).Field(controlId); }
    void Type(const std::string& text) const { OpenDialog(parent_).Type(controlId, text); }

    /// Notification codes since the last call.
    std::vector<int> Told() { return std::exchange(told_, {}); }

    HWND parent_ = nullptr;
    HWND control_ = nullptr;
    std::function<void(int code)> whenTold_;

  private:
    Handler handler_ = [this](HWND, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COMMAND && LOWORD(wParam) == controlId) {
            EXPECT_EQ(reinterpret_cast<HWND>(lParam), control_);
            told_.push_back(HIWORD(wParam));
            if (whenTold_) {
                whenTold_(HIWORD(wParam));
            }
        }
        return unhandled;
    };
    std::vector<int> told_;
};

using EditTest = ControlTest;
using ListBoxTest = ControlTest;
using DropDownTest = ControlTest;

}  // namespace

TEST_F(EditTest, CanBeSetAgainOrDestroyedFromItsOwnNotification) {
    Make("Edit", 0);
    int depth = 0;
    whenTold_ = [&](int code) {
        if (code == EN_CHANGE && ++depth == 1) {
            SetDlgItemTextA(parent_, controlId, "inner");
        }
    };
    SetDlgItemTextA(parent_, controlId, "outer");
    EXPECT_EQ(Text(), "inner");
    EXPECT_THAT(Told(), ElementsAre(EN_UPDATE, EN_CHANGE, EN_UPDATE, EN_CHANGE));

    whenTold_ = [&](int code) {
        if (code == EN_UPDATE) {
            DestroyWindow(control_);
        }
    };
    Type("x");
    EXPECT_THAT(Told(), ElementsAre(EN_UPDATE));
    EXPECT_FALSE(IsWindow(control_));
}

TEST_F(EditTest, IsTypedInAndCorrectedWithKeys) {
    Make("Edit", 0);
    Type("ac\r\t\x1B");
    Send(WM_KEYDOWN, VK_LEFT);
    Send(WM_CHAR, 'b');
    EXPECT_EQ(Text(), "abc") << "control characters are none of a line's";
    Send(WM_KEYDOWN, VK_HOME);
    Send(WM_KEYDOWN, VK_DELETE);
    Send(WM_CHAR, VK_BACK);
    EXPECT_EQ(Text(), "bc");
    Send(EM_SETSEL, 0, -1);
    Type("");
    Send(EM_SETSEL, 0, -1);
    Send(WM_CHAR, 'z');
    EXPECT_EQ(Text(), "z") << "the selection goes";
    Type("\xC3\xA4");
    Send(WM_CHAR, VK_BACK);
    EXPECT_EQ(Text(), "z") << "a character of two bytes goes whole";

    Type("\xE4.");
    Send(WM_CHAR, VK_BACK);
    Send(WM_CHAR, VK_BACK);
    EXPECT_EQ(Text(), "z") << "a byte that is no UTF-8 is a character";
    Send(EM_LIMITTEXT, 3);
    Type("y\xC3\xA4x");
    EXPECT_EQ(Text(), "zyx") << "half a character is not taken";

    Send(WM_CHAR, VK_BACK);
    Send(WM_CHAR, VK_BACK);
    Send(EM_SETREADONLY, TRUE);
    Told();
    Type("no");
    Send(WM_CHAR, VK_BACK);
    EXPECT_EQ(Text(), "z");
    EXPECT_THAT(Told(), IsEmpty());
    SetDlgItemTextA(parent_, controlId, "set");
    EXPECT_EQ(Text(), "set");
}

TEST_F(ListBoxTest, TellsOnlyWhatAPersonChose) {
    Make("ListBox", LBS_NOTIFY);
    for (int i = 0; i < 20; ++i) {
        Send(LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(std::to_string(i).c_str()));
    }
    Send(LB_SETCURSEL, 3);
    EXPECT_THAT(Told(), IsEmpty());
    const OpenDialog user(parent_);
    user.Choose(controlId, 17);
    EXPECT_THAT(Told(), ElementsAre(LBN_SETFOCUS, LBN_SELCHANGE));
    user.Choose(controlId, 17);
    EXPECT_THAT(Told(), IsEmpty()) << "chosen already";
    for (const int key : {VK_END, VK_DOWN, VK_HOME, VK_UP, VK_DOWN, VK_NEXT}) {
        Send(WM_KEYDOWN, static_cast<WPARAM>(key));
    }
    EXPECT_EQ(user.Selected(controlId), 5) << "a page has four entries";
    EXPECT_THAT(Told(), ElementsAre(1, 1, 1, 1)) << "not at the ends";
    Send(WM_CHAR, '1');
    EXPECT_EQ(user.Selected(controlId), 10) << "the next one that begins with the character";
}

TEST_F(DropDownTest, TakesATextOfOnesOwnWhereItsLineIsAnEditControl) {
    MoveWindow(parent_, 0, 0, 400, 300, TRUE);
    Make("ComboBox", CBS_DROPDOWN | CBS_AUTOHSCROLL);
    for (const char* text : {"*.txt", "*.cpp"}) {
        Send(CB_INSERTSTRING, 0, reinterpret_cast<LPARAM>(text));
    }
    EXPECT_EQ(Send(CB_SETCURSEL, 1), 1);
    EXPECT_EQ(Text(), "*.txt");
    Send(CB_SETCURSEL, static_cast<WPARAM>(-1));
    EXPECT_EQ(Text(), "");
    EXPECT_THAT(Told(), IsEmpty()) << "all of that is the program's";

    SetFocus(control_);
    const HWND edit = GetFocus();
    EXPECT_EQ(GetParent(edit), control_);
    Send(CB_LIMITTEXT, 5);
    Type("*.CPPX");
    EXPECT_EQ(Text(), "*.CPP");
    EXPECT_EQ(Send(CB_GETCURSEL), 0) << "the entry that was typed";

    // What a person does goes to the edit control, which has the focus.
    struct {
        UINT message;
        WPARAM key;
        const char* text;
    } const steps[] = {
        {WM_KEYDOWN, VK_DOWN, "*.txt"}, {WM_CHAR, 'y', "y"},  // a chosen text is selected
        {WM_SYSKEYDOWN, VK_DOWN, "y"},                        // opens the list
        {WM_KEYDOWN, VK_DOWN, "*.cpp"}, {WM_KEYDOWN, VK_ESCAPE, "y"},
    };
    for (const auto& step : steps) {
        const bool opened = Send(CB_GETDROPPEDSTATE) != 0;
        EXPECT_EQ((SendMessageA(edit, WM_GETDLGCODE, VK_ESCAPE, 0) & DLGC_WANTMESSAGE) != 0,
                  opened);
        SendMessageA(edit, step.message, step.key, 0);
        EXPECT_EQ(Text(), step.text);
    }
    Told();
    Send(WM_LBUTTONDOWN, 0, MAKELPARAM(195, 2));
    Send(WM_LBUTTONDOWN, 0, MAKELPARAM(20, 16 + 16 + 3));
    EXPECT_EQ(Text(), "*.txt");
    EXPECT_THAT(Told(), ElementsAre(CBN_DROPDOWN, CBN_SELENDOK, CBN_CLOSEUP, CBN_SELCHANGE));

    MoveWindow(control_, 0, 0, 300, 200, TRUE);
    RECT place = {};
    GetWindowRect(control_, &place);
    EXPECT_EQ(place.bottom, 24) << "the rest of the height is the list's";
}
