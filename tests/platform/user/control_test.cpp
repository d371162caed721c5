// Edit controls, buttons, list boxes and drop-down lists, in a window that hears what they tell.

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

    void Make(const char* className, DWORD style, const char* text = "") {
        control_ = CreateWindowExA(0, className, text, style | WS_CHILD, 0, 0, 200, 64, parent_,
                                   reinterpret_cast<HMENU>(INT_PTR{controlId}), nullptr, nullptr);
        ASSERT_NE(control_, nullptr);
        EXPECT_THAT(Told(), IsEmpty()) << "nobody is told of the creation";
    }

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageA(control_, message, wParam, lParam);
    }
    void Add(UINT message, const std::string& text) {
        Send(message, 0, reinterpret_cast<LPARAM>(text.c_str()));
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
using ButtonTest = ControlTest;
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

    Type(
        "\xE4"
        "b");
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

TEST_F(ButtonTest, ABoxOfTwoStatesTakesTwoForOneUntilItsStyleHasThree) {
    Make("Button", BS_AUTOCHECKBOX);
    const auto checked = [&] { return IsDlgButtonChecked(parent_, controlId); };
    for (const UINT check : {2U, 0U, 1U, 77U}) {
        CheckDlgButton(parent_, controlId, check);
        EXPECT_EQ(checked(), check == 0 ? 0U : 1U);
    }
    EXPECT_THAT(Told(), IsEmpty()) << "setting is no click";
    SetWindowLongA(control_, GWL_STYLE,
                   (GetWindowLongA(control_, GWL_STYLE) & ~LONG{BS_TYPEMASK}) | BS_AUTO3STATE);
    CheckDlgButton(parent_, controlId, 77);
    std::vector<UINT> seen = {checked()};
    whenTold_ = [&](int) { seen.push_back(checked()); };
    Send(BM_CLICK);
    Send(WM_KEYDOWN, VK_SPACE);
    Send(WM_KEYUP, VK_SPACE);
    Send(WM_LBUTTONDOWN);
    Send(WM_LBUTTONUP);
    EXPECT_THAT(seen, ElementsAre(2U, 0U, 1U, 2U)) << "turned when the click is told";
}

TEST_F(ListBoxTest, TellsOnlyWhatAPersonChose) {
    Make("ListBox", LBS_NOTIFY);
    for (int i = 0; i < 20; ++i) {
        Add(LB_ADDSTRING, std::to_string(i));
    }
    Send(LB_SETCURSEL, 3);
    EXPECT_THAT(Told(), IsEmpty());
    const OpenDialog user(parent_);
    user.Choose(controlId, 17);
    EXPECT_EQ(user.Selected(controlId), 17);
    EXPECT_THAT(Told(), ElementsAre(LBN_SETFOCUS, LBN_SELCHANGE));
    user.Choose(controlId, 17);
    EXPECT_THAT(Told(), IsEmpty()) << "chosen already";
    Send(WM_LBUTTONDBLCLK, 0, MAKELPARAM(1, 1));
    EXPECT_THAT(Told(), ElementsAre(LBN_DBLCLK));
    for (const int key : {VK_END, VK_DOWN, VK_HOME, VK_UP, VK_DOWN, VK_NEXT}) {
        Send(WM_KEYDOWN, static_cast<WPARAM>(key));
    }
    EXPECT_EQ(user.Selected(controlId), 5) << "a page has four entries";
    EXPECT_THAT(Told(), ElementsAre(1, 1, 1, 1)) << "not at the ends";
    Send(WM_CHAR, '1');
    EXPECT_EQ(user.Selected(controlId), 10) << "the next one that begins with the character";
}

TEST_F(DropDownTest, TellsWhatAPersonChose) {
    MoveWindow(parent_, 0, 0, 400, 300, TRUE);
    Make("ComboBox", CBS_DROPDOWNLIST);
    for (const char* text : {"alpha", "beta", "gamma", "berlin"}) {
        Add(CB_ADDSTRING, text);
    }
    constexpr int ok = CBN_SELENDOK, cancel = CBN_SELENDCANCEL, change = CBN_SELCHANGE;
    constexpr int down = CBN_DROPDOWN, up = CBN_CLOSEUP;
    SetFocus(control_);
    EXPECT_THAT(Told(), ElementsAre(CBN_SETFOCUS));
    struct {
        const char* what;
        std::vector<std::pair<UINT, WPARAM>> input;
        LRESULT selected;
        std::vector<int> told;
    } const steps[] = {
        {"an arrow chooses at once", {{WM_KEYDOWN, VK_DOWN}}, 0, {ok, change}},
        {"nothing at the end", {{WM_KEYDOWN, VK_UP}}, 0, {}},
        {"a letter", {{WM_CHAR, 'B'}}, 1, {ok, change}},
        {"the next with the letter", {{WM_CHAR, 'b'}}, 3, {ok, change}},
        {"opened, moved and given up",
         {{WM_KEYDOWN, VK_F4}, {WM_KEYDOWN, VK_HOME}, {WM_KEYDOWN, VK_ESCAPE}},
         3,
         {down, cancel, up}},
        {"opened, moved and taken",
         {{WM_SYSKEYDOWN, VK_DOWN}, {WM_KEYDOWN, VK_UP}, {WM_KEYDOWN, VK_RETURN}},
         2,
         {down, ok, up, change}},
        {"clicked open, an entry clicked",
         {{WM_LBUTTONDOWN, MAKELPARAM(2, 2)}, {WM_LBUTTONDOWN, MAKELPARAM(2, 16 + 16 + 3)}},
         1,
         {down, ok, up, change}},
        {"clicked open, clicked elsewhere",
         {{WM_LBUTTONDOWN, MAKELPARAM(2, 2)}, {WM_LBUTTONDOWN, MAKELPARAM(2, 300)}},
         1,
         {down, ok, up}},
    };
    for (const auto& step : steps) {
        for (const auto& [message, value] : step.input) {
            const bool click = message == WM_LBUTTONDOWN;
            Send(message, click ? 0 : value, click ? static_cast<LPARAM>(value) : 0);
        }
        EXPECT_EQ(Send(CB_GETCURSEL), step.selected) << step.what;
        EXPECT_EQ(Told(), step.told) << step.what;
        EXPECT_FALSE(Send(CB_GETDROPPEDSTATE)) << step.what;
    }
    Send(CB_SHOWDROPDOWN, TRUE);
    EXPECT_TRUE(Send(CB_GETDROPPEDSTATE));
    Told();
    SetFocus(nullptr);
    EXPECT_FALSE(Send(CB_GETDROPPEDSTATE));
    EXPECT_THAT(Told(), ElementsAre(ok, up, CBN_KILLFOCUS));
}
