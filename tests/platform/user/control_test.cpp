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
    LRESULT SendText(UINT message, WPARAM wParam, const char* text) {
        return Send(message, wParam, reinterpret_cast<LPARAM>(text));
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

TEST_F(EditTest, TellsAChangeBeforeSettingTheTextReturns) {
    Make("Edit", 0, "old");
    std::string seen;
    whenTold_ = [&](int code) {
        if (code == EN_CHANGE) {
            seen = Text();
        }
    };
    EXPECT_TRUE(SetDlgItemTextA(parent_, controlId, "new"));
    EXPECT_EQ(seen, "new");
    EXPECT_THAT(Told(), ElementsAre(EN_UPDATE, EN_CHANGE));
}

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

TEST_F(EditTest, CountsTheTerminatorInTheSizeOfABuffer) {
    Make("Edit", 0, "abcdef");
    struct {
        INT size;
        UINT copied;
        const char* text;
    } const cases[] = {
        {0, 0, "######"}, {1, 0, ""}, {4, 3, "abc"}, {6, 5, "abcde"}, {7, 6, "abcdef"}};
    for (const auto& expected : cases) {
        char buffer[] = "######~";
        EXPECT_EQ(GetDlgItemTextA(parent_, controlId, buffer, expected.size), expected.copied);
        EXPECT_EQ(std::string(buffer).substr(0, 6), expected.text) << expected.size;
        if (expected.size < 7) {
            EXPECT_EQ(buffer[6], '~');
        }
    }
    char missing[] = "before";
    EXPECT_EQ(GetDlgItemTextA(parent_, 4711, missing, sizeof(missing)), 0U);
    EXPECT_STREQ(missing, "");
}

TEST_F(EditTest, LimitsTypingAndNotSetting) {
    Make("Edit", 0);
    Send(EM_LIMITTEXT, 5);
    SetDlgItemTextA(parent_, controlId, "seven77");
    EXPECT_EQ(Text(), "seven77");
    Told();
    Type("8");
    EXPECT_EQ(Text(), "seven77");
    EXPECT_THAT(Told(), ElementsAre(EN_MAXTEXT));

    SetDlgItemTextA(parent_, controlId, "abc");
    Type("defg");
    EXPECT_EQ(Text(), "abcde");
    Send(EM_SETSEL, 1, 3);
    SendText(EM_REPLACESEL, 0, "1234567");
    EXPECT_EQ(Text(), "a12de");

    Send(EM_LIMITTEXT, 0);
    SendText(EM_REPLACESEL, 0, std::string(40000, 'x').c_str());
    EXPECT_EQ(Text().size(), 40005U);
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

TEST_F(ButtonTest, ABoxOfTwoStatesTakesTwoForOne) {
    Make("Button", BS_AUTOCHECKBOX);
    for (const UINT check : {2U, 0U, 1U, 77U}) {
        CheckDlgButton(parent_, controlId, check);
        EXPECT_EQ(IsDlgButtonChecked(parent_, controlId), check == 0 ? 0U : 1U);
    }
    EXPECT_THAT(Told(), IsEmpty()) << "setting is no click";
}

TEST_F(ButtonTest, AnAutomaticBoxHasTurnedWhenItTellsTheClick) {
    Make("Button", BS_AUTOCHECKBOX);
    std::vector<UINT> seen;
    whenTold_ = [&](int) { seen.push_back(IsDlgButtonChecked(parent_, controlId)); };
    Send(BM_CLICK);
    Send(WM_KEYDOWN, VK_SPACE);
    Send(WM_KEYUP, VK_SPACE);
    Send(WM_LBUTTONDOWN);
    Send(WM_LBUTTONUP);
    EXPECT_THAT(seen, ElementsAre(1U, 0U, 1U));
    EnableWindow(control_, FALSE);
    Send(BM_CLICK);
    EXPECT_EQ(seen.size(), 3U);
}

TEST_F(ButtonTest, ABoxOfTwoStatesBecomesOneOfThreeByItsStyle) {
    Make("Button", BS_AUTOCHECKBOX);
    SetWindowLongA(control_, GWL_STYLE,
                   (GetWindowLongA(control_, GWL_STYLE) & ~LONG{BS_TYPEMASK}) | BS_AUTO3STATE);
    CheckDlgButton(parent_, controlId, 77);
    std::vector<UINT> seen = {IsDlgButtonChecked(parent_, controlId)};
    for (int click = 0; click < 3; ++click) {
        Send(BM_CLICK);
        seen.push_back(IsDlgButtonChecked(parent_, controlId));
    }
    EXPECT_THAT(seen, ElementsAre(2U, 0U, 1U, 2U));
}

TEST_F(ListBoxTest, FindsAWholeTextBehindAnEntryAndGoesRound) {
    Make("ListBox", LBS_NOTIFY);
    for (const char* text : {"one", "two", "ONE", "three", "on"}) {
        SendText(LB_ADDSTRING, 0, text);
    }
    struct {
        INT after;
        const char* text;
        LRESULT found;
    } const cases[] = {
        {-1, "one", 0},  {0, "one", 2},  {2, "One", 0},       {0, "on", 4},    {4, "three", 3},
        {3, "three", 3}, {99, "two", 1}, {0, "thre", LB_ERR}, {0, "", LB_ERR},
    };
    for (const auto& expected : cases) {
        EXPECT_EQ(SendText(LB_FINDSTRINGEXACT, static_cast<WPARAM>(expected.after), expected.text),
                  expected.found)
            << expected.text << " behind " << expected.after;
    }
    Send(LB_RESETCONTENT);
    EXPECT_EQ(SendText(LB_FINDSTRINGEXACT, 0, "one"), LB_ERR);
}

TEST_F(ListBoxTest, KeepsDataAndSelectionWithTheirEntries) {
    Make("ListBox", LBS_NOTIFY);
    const auto data = [&](int index) { return Send(LB_GETITEMDATA, static_cast<WPARAM>(index)); };
    EXPECT_EQ(SendText(LB_INSERTSTRING, 0, "b"), 0);
    EXPECT_EQ(SendText(LB_ADDSTRING, 0, "c"), 1);
    Send(LB_SETITEMDATA, 0, 'b');
    Send(LB_SETITEMDATA, 1, 'c');
    EXPECT_EQ(Send(LB_SETCURSEL, 0), 0);
    EXPECT_EQ(SendText(LB_INSERTSTRING, 0, "a"), 0);
    EXPECT_EQ(Send(LB_GETCURSEL), 1) << "with the entry that had it";
    EXPECT_EQ(data(0), 0);
    EXPECT_EQ(data(1), 'b');
    EXPECT_EQ(SendText(LB_INSERTSTRING, static_cast<WPARAM>(-1), "d"), 3);
    EXPECT_EQ(SendText(LB_INSERTSTRING, 9, "e"), LB_ERR);

    EXPECT_EQ(Send(LB_DELETESTRING, 0), 3);
    EXPECT_EQ(Send(LB_GETCURSEL), 0);
    EXPECT_EQ(Send(LB_DELETESTRING, 0), 2);
    EXPECT_EQ(Send(LB_GETCURSEL), LB_ERR);
    EXPECT_EQ(data(0), 'c');
    for (const UINT message :
         {UINT{LB_DELETESTRING}, UINT{LB_GETITEMDATA}, UINT{LB_GETTEXTLEN}, UINT{LB_SETCURSEL}}) {
        EXPECT_EQ(Send(message, 2), LB_ERR) << message;
        EXPECT_EQ(Send(message, static_cast<WPARAM>(-1)), LB_ERR) << message;
    }
    EXPECT_THAT(OpenDialog(parent_).Entries(controlId), ElementsAre("c", "d"));
    EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(ListBoxTest, TellsOnlyWhatAPersonChose) {
    Make("ListBox", LBS_NOTIFY);
    for (int i = 0; i < 20; ++i) {
        SendText(LB_ADDSTRING, 0, std::to_string(i).c_str());
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

TEST_F(DropDownTest, KeepsEntriesDataAndSelectionAndTellsNothingOfThat) {
    Make("ComboBox", CBS_DROPDOWNLIST | WS_VSCROLL);
    EXPECT_EQ(SendText(CB_ADDSTRING, 0, "two"), 0);
    EXPECT_EQ(SendText(CB_ADDSTRING, 0, "three"), 1);
    EXPECT_EQ(SendText(CB_INSERTSTRING, 0, "one"), 0);
    Send(CB_SETITEMDATA, 0, 11);
    Send(CB_SETITEMDATA, 2, 33);
    EXPECT_EQ(Send(CB_GETCURSEL), CB_ERR);
    EXPECT_EQ(Text(), "");
    EXPECT_EQ(Send(CB_SETCURSEL, 2), 2);
    EXPECT_EQ(Text(), "three") << "the selected entry's";
    SetDlgItemTextA(parent_, controlId, "typed");
    EXPECT_EQ(Text(), "three");
    EXPECT_EQ(Send(CB_GETITEMDATA, 2), 33);
    EXPECT_EQ(SendText(CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), "TWO"), 1);
    for (const UINT message : {UINT{CB_GETITEMDATA}, UINT{CB_GETLBTEXTLEN}, UINT{CB_SETCURSEL}}) {
        EXPECT_EQ(Send(message, 3), CB_ERR) << message;
    }
    EXPECT_EQ(Send(CB_DELETESTRING, 0), 2);
    EXPECT_EQ(Send(CB_GETCURSEL), 1) << "with the entry that had it";
    EXPECT_THAT(OpenDialog(parent_).Entries(controlId), ElementsAre("two", "three"));
    Send(CB_RESETCONTENT);
    EXPECT_EQ(Send(CB_GETCOUNT), 0);
    EXPECT_EQ(Send(CB_GETCURSEL), CB_ERR);
    EXPECT_THAT(Told(), IsEmpty());
    RECT place = {};
    GetWindowRect(control_, &place);
    EXPECT_LT(place.bottom, 64) << "the height of the window is that of the line";
}

TEST_F(DropDownTest, TellsWhatAPersonChose) {
    MoveWindow(parent_, 0, 0, 400, 300, TRUE);
    Make("ComboBox", CBS_DROPDOWNLIST);
    for (const char* text : {"alpha", "beta", "gamma", "berlin"}) {
        SendText(CB_ADDSTRING, 0, text);
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
