// The list view: rows of an owner, their states and who hears of them, columns, what is asked.

#include <commctrl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/user/window_support.h"

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

constexpr INT listId = 66;
constexpr DWORD usualStyle = WS_CHILD | WS_VISIBLE | LVS_REPORT | LVS_OWNERDATA | LVS_SHOWSELALWAYS;

/// A list of 60 by 11 characters, ten rows under the titles, and what its parent hears.
class ListViewTest : public testing::Test {
  protected:
    void SetUp() override {
        parent = MakeWindow(&handler);
        list = CreateWindowExA(0, WC_LISTVIEWA, "", usualStyle, 0, 0, 480, 176, parent,
                               reinterpret_cast<HMENU>(INT_PTR{listId}), nullptr, nullptr);
        AddColumn(0, "Name", 120, LVCFMT_LEFT);
        AddColumn(1, "Size", 60, LVCFMT_RIGHT);
        SetCount(10);
    }
    void TearDown() override { DestroyWindow(parent); }

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageA(list, message, wParam, lParam);
    }
    void AddColumn(INT place, const char* title, INT width, INT format) const {
        LVCOLUMNA column = {};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
        column.pszText = const_cast<char*>(title);
        column.cx = width;
        column.fmt = format;
        column.iSubItem = place;
        EXPECT_EQ(
            Send(LVM_INSERTCOLUMNA, static_cast<WPARAM>(place), reinterpret_cast<LPARAM>(&column)),
            place);
    }
    void SetCount(int count) {
        EXPECT_TRUE(Send(LVM_SETITEMCOUNT, static_cast<WPARAM>(count),
                         LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL));
        heard.clear();
    }
    LRESULT SetState(INT row, UINT state, UINT mask) const {
        LVITEMA item = {};
        item.state = state;
        item.stateMask = mask;
        return Send(LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    }
    LRESULT Next(INT row, LPARAM flags) const {
        return Send(LVM_GETNEXTITEM, static_cast<WPARAM>(row), flags);
    }
    /// The keyboard is as the thread has read it.
    static void Hold(WPARAM key, bool down) {
        PostMessageA(nullptr, down ? WM_KEYDOWN : WM_KEYUP, key, 1);
        MSG message = {};
        while (PeekMessageA(&message, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE)) {
        }
    }
    /// What is heard while the key is pressed.
    std::vector<std::string> Press(WPARAM key, WPARAM with = 0) {
        heard.clear();
        Hold(with, with != 0);
        Send(WM_KEYDOWN, key, 1);
        Hold(with, false);
        return std::exchange(heard, {});
    }
    std::vector<std::string> Click(int x, int y, WPARAM keys = 0, UINT message = WM_LBUTTONDOWN) {
        heard.clear();
        Send(message, MK_LBUTTON | keys, MAKELPARAM(x * 8 + 4, y * 16 + 8));
        return std::exchange(heard, {});
    }
    std::vector<std::string> Drawn() const { return DrawnBy(list, 60, 11); }

    void Hear(const NMHDR& header, LPARAM lParam) {
        EXPECT_EQ(header.hwndFrom, list);
        EXPECT_EQ(header.idFrom, static_cast<UINT_PTR>(listId));
        const auto& change = *reinterpret_cast<const NMLISTVIEW*>(lParam);
        const auto& range = *reinterpret_cast<const NMLVODSTATECHANGE*>(lParam);
        using std::to_string;
        if (header.code == LVN_GETDISPINFOA) {
            Answer(*reinterpret_cast<NMLVDISPINFOA*>(lParam));
        } else if (header.code == LVN_ITEMCHANGED) {
            EXPECT_EQ(change.uChanged, UINT{LVIF_STATE});
            heard.push_back("row " + to_string(change.iItem) + " " + to_string(change.uOldState) +
                            ">" + to_string(change.uNewState));
        } else if (header.code == LVN_ODSTATECHANGED) {
            heard.push_back("rows " + to_string(range.iFrom) + "-" + to_string(range.iTo) + " " +
                            to_string(range.uOldState) + ">" + to_string(range.uNewState));
        } else if (header.code == LVN_ITEMACTIVATE) {
            heard.push_back("activate " + to_string(change.iItem));
        }
    }
    void Answer(NMLVDISPINFOA& asked) {
        EXPECT_GE(asked.item.cchTextMax, 260);
        asksOfRows.push_back(asked.item.iItem);
        static char longText[] = "a text of the owner's own that is too long";
        if (asked.item.iSubItem == 0 && asked.item.iItem == 3) {
            asked.item.pszText = longText;
            return;
        }
        const std::string text =
            (asked.item.iSubItem == 0 ? "row " : "") + std::to_string(asked.item.iItem);
        text.copy(asked.item.pszText, text.size());
        asked.item.pszText[text.size()] = '\0';
        asked.item.iImage = asked.item.iItem % 2;
    }

    HWND parent = nullptr;
    HWND list = nullptr;
    std::vector<std::string> heard;
    std::vector<int> asksOfRows;
    Handler handler = [this](HWND, UINT message, WPARAM, LPARAM lParam) -> LRESULT {
        if (message != WM_NOTIFY) {
            return unhandled;
        }
        Hear(*reinterpret_cast<const NMHDR*>(lParam), lParam);
        return 0;
    };
};

}  // namespace

TEST_F(ListViewTest, AsksOnlyForTheRowsThatItPaints) {
    SetCount(1'000'000);
    const std::vector<std::string> lines = Drawn();
    EXPECT_EQ(lines[0], "Name                                            Size");
    EXPECT_EQ(lines[1], "row 0                                              0       |");
    EXPECT_EQ(lines[4], "a text of the owner's own that is too long         3       |");
    EXPECT_EQ(asksOfRows.size(), 20U);
    EXPECT_EQ(asksOfRows.back(), 9);

    EXPECT_TRUE(Send(LVM_ENSUREVISIBLE, 999'999, FALSE));
    EXPECT_EQ(Send(LVM_GETTOPINDEX), 999'990);
    EXPECT_EQ(Send(LVM_GETCOUNTPERPAGE), 10);
    asksOfRows.clear();
    EXPECT_EQ(Drawn()[10], "row 999999                                    999999       |");
    EXPECT_EQ(asksOfRows.size(), 20U);

    char text[6];
    LVITEMA item = {};
    item.iSubItem = 1;
    item.pszText = text;
    item.cchTextMax = sizeof(text);
    EXPECT_EQ(Send(LVM_GETITEMTEXTA, 123456, reinterpret_cast<LPARAM>(&item)), 5);
    EXPECT_STREQ(text, "12345");
}

TEST_F(ListViewTest, TellsOfWhatAPersonSelectsWithKeysAndClicks) {
    SetCount(100);
    EXPECT_THAT(Press(VK_DOWN), ElementsAre("row 0 0>3"));
    EXPECT_THAT(Press(VK_DOWN), ElementsAre("row 0 3>0", "row 1 0>3"));
    EXPECT_THAT(Press(VK_DOWN, VK_SHIFT), ElementsAre("rows 1-2 0>2", "row 1 3>2", "row 2 2>3"));
    EXPECT_THAT(Press(VK_NEXT, VK_CONTROL), ElementsAre("row 2 3>2", "row 11 0>1"));
    EXPECT_THAT(Press(VK_SPACE, VK_CONTROL), ElementsAre("row 11 1>3"));
    EXPECT_EQ(Send(LVM_GETSELECTEDCOUNT), 3);
    EXPECT_THAT(Press(VK_END, VK_SHIFT),
                ElementsAre("row -1 2>0", "rows 11-99 0>2", "row 11 3>2", "row 99 2>3"));
    EXPECT_THAT(Press(VK_HOME), ElementsAre("row -1 2>0", "row 99 1>0", "row 0 0>3"));
    EXPECT_THAT(Press(VK_RETURN), ElementsAre("activate 0"));
    EXPECT_THAT(Press('A', VK_CONTROL), ElementsAre("row -1 0>2"));
    EXPECT_EQ(Send(LVM_GETSELECTEDCOUNT), 100);

    EXPECT_THAT(Click(3, 2), ElementsAre("row -1 2>0", "row 0 1>0", "row 1 2>3"));
    EXPECT_THAT(Click(3, 4, MK_SHIFT), ElementsAre("rows 1-3 0>2", "row 1 3>2", "row 3 2>3"));
    EXPECT_THAT(Click(3, 4, MK_CONTROL), ElementsAre("row 3 3>1"));
    EXPECT_THAT(Click(3, 3, 0, WM_LBUTTONDBLCLK),
                ElementsAre("row -1 2>0", "row 3 1>0", "row 2 2>3", "activate 2"));
    SetCount(5);
    EXPECT_THAT(Click(3, 9), ElementsAre("row 2 3>1")) << "below the last row";
    EXPECT_THAT(Press(VK_LEFT), IsEmpty());
}

TEST_F(ListViewTest, StandsInLinesInTheOtherViews) {
    struct ViewCase {
        DWORD view;
        const char* first;
        const char* third;
        LRESULT afterRight;  // from row 0
        LRESULT afterDown;
    };
    for (const ViewCase& one : {
             ViewCase{LVS_LIST, " row 0                    /row 11",
                      " row 2                    /row 13", 11, 12},
             ViewCase{LVS_SMALLICON, " row 0                    /row 1",
                      " row 4                    /row 5", 1, 3},
             ViewCase{LVS_ICON, "row 0              row 1              row 2", "", 1, 4},
         }) {
        SetWindowLongA(list, GWL_STYLE,
                       static_cast<LONG>((usualStyle & ~DWORD{LVS_TYPEMASK}) | one.view));
        Send(LVM_SETIMAGELIST, LVSIL_SMALL, 1);
        SetCount(0);
        SetCount(40);
        SetState(0, LVIS_FOCUSED, LVIS_FOCUSED);
        EXPECT_THAT(Drawn()[0], StartsWith(one.first));
        EXPECT_THAT(Drawn()[2], StartsWith(one.third));
        Press(VK_RIGHT);
        EXPECT_EQ(Next(-1, LVNI_FOCUSED), one.afterRight) << one.view;
        Press(VK_DOWN);
        EXPECT_EQ(Next(-1, LVNI_FOCUSED), one.afterDown) << one.view;
        Press(VK_END);
        EXPECT_EQ(Next(-1, LVNI_SELECTED), 39);
        EXPECT_EQ(Send(LVM_GETSELECTEDCOUNT), 1);
    }
}

TEST_F(ListViewTest, KeepsStatesAsTheProgramSetsThem) {
    constexpr UINT both = LVIS_FOCUSED | LVIS_SELECTED;
    EXPECT_EQ(Next(-1, LVNI_FOCUSED), -1);
    EXPECT_TRUE(SetState(4, both, both));
    EXPECT_TRUE(SetState(7, LVIS_SELECTED, LVIS_SELECTED));
    EXPECT_TRUE(SetState(4, LVIS_SELECTED, LVIS_SELECTED)) << "nothing new";
    EXPECT_THAT(heard, ElementsAre("row 4 0>3", "row 7 0>2"));
    EXPECT_EQ(Next(4, LVNI_SELECTED), 7);
    EXPECT_EQ(Next(7, LVNI_SELECTED), -1);
    EXPECT_EQ(Next(-1, LVNI_FOCUSED | LVNI_SELECTED), 4);
    for (const INT row : {-2, 10}) {
        EXPECT_FALSE(SetState(row, both, both)) << row;
    }
    EXPECT_FALSE(SetState(-1, LVIS_FOCUSED, LVIS_FOCUSED)) << "one row has the focus";
    SetCount(5);
    EXPECT_EQ(Send(LVM_GETSELECTEDCOUNT), 1) << "row 7 is gone";
    EXPECT_TRUE(Send(LVM_DELETEALLITEMS));
    EXPECT_EQ(Next(-1, LVNI_FOCUSED), -1);
    EXPECT_FALSE(Send(LVM_SETITEMCOUNT, static_cast<WPARAM>(-1), 0));
    EXPECT_THAT(Press(VK_DOWN), IsEmpty());
}

TEST_F(ListViewTest, KeepsColumnsTheirWidthsAndTheirOrder) {
    AddColumn(2, "Date", 30, LVCFMT_CENTER);
    const INT wanted[] = {2, 0, 1};
    EXPECT_TRUE(Send(LVM_SETCOLUMNORDERARRAY, 3, reinterpret_cast<LPARAM>(wanted)));
    for (const std::vector<INT>& wrong : {std::vector{0, 0, 1}, {0, 1, 3}, {0, 1}}) {
        EXPECT_FALSE(
            Send(LVM_SETCOLUMNORDERARRAY, wrong.size(), reinterpret_cast<LPARAM>(wrong.data())));
    }
    EXPECT_EQ(Drawn()[0], "Date Name                                            Size");
    EXPECT_TRUE(Send(LVM_SETCOLUMNWIDTH, 0, 18));
    EXPECT_EQ(Send(LVM_GETCOLUMNWIDTH, 0), 18);
    EXPECT_EQ(Drawn()[4], " 3   a text of the owner's own that is too long         3");
}

TEST_F(ListViewTest, WidthsFollowTheRoomAndAPersonsKeys) {
    const auto lineInRoom = [&](int columns) {
        MoveWindow(list, 0, 0, columns * 8, 176, TRUE);
        return DrawnBy(list, columns, 11)[4];
    };
    EXPECT_EQ(lineInRoom(30), "a text of the owner's o|     3");
    EXPECT_EQ(lineInRoom(60), "a text of the owner's own that is too long         3");
    for (const char key : {'<', '<', '<', '>'}) {
        Send(WM_CHAR, static_cast<WPARAM>(key), 1);
    }
    EXPECT_EQ(lineInRoom(60), "a text of the owner's own that is too l|         3");
    Send(WM_CHAR, '+', 1);
    EXPECT_EQ(lineInRoom(60).find('|'), std::string::npos);
}

TEST_F(ListViewTest, SortsByKeysWhatItsOwnerKeepsInItsOrder) {
    SetCount(11);
    SetState(10, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
    Send(WM_CHAR, '2', 1);
    EXPECT_THAT(Drawn()[0], testing::EndsWith("Size ?"));
    Send(WM_CHAR, '2', 1);
    EXPECT_THAT(Drawn()[1], StartsWith("row 10 ")) << "numbers by their size";
    EXPECT_EQ(Next(-1, LVNI_SELECTED), 10);
    EXPECT_THAT(Press(VK_DOWN), ElementsAre("row 10 3>0", "row 9 0>3"));
    EXPECT_EQ(Send(LVM_GETITEMSTATE, 9, LVIS_SELECTED), LVIS_SELECTED);
    SetCount(12);
    EXPECT_THAT(Drawn()[1], StartsWith("row 0 "));
    EXPECT_EQ(Next(-1, LVNI_FOCUSED), 9);
}

TEST_F(ListViewTest, TakesAMillionRowsInItsStride) {
    const DWORD start = GetTickCount();
    SetCount(1'000'000);
    EXPECT_TRUE(SetState(-1, LVIS_SELECTED, LVIS_SELECTED));
    for (int turn = 0; turn < 1000; ++turn) {
        Send(LVM_SETITEMCOUNT, static_cast<WPARAM>(1'000'000 - turn), 0);
        Press(VK_END, VK_SHIFT);
        Press(VK_HOME, VK_SHIFT);
    }
    EXPECT_EQ(Send(LVM_GETSELECTEDCOUNT), 1);
    EXPECT_LT(GetTickCount() - start, 5000U);
}
