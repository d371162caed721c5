#include "find/window_test.h"

#include "find/find_store.h"
#include "support/replaced_services.h"

using namespace quennet;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

RECT PlaceOf(HWND window, int control) {
    RECT place = {};
    GetWindowRect(GetDlgItem(window, control), &place);
    return place;
}

bool IsChecked(HWND window, u32 command) {
    return (GetMenuState(GetMenu(window), command, MF_BYCOMMAND) & MF_CHECKED) != 0;
}

TEST_F(FindWindowTest, ARunFillsTheListAndTheStatusBar) {
    Make("pub/sub/c.txt", "12345");
    Make("pub/a.txt", "1");
    Make("other");
    filter.flags = 0x7FFF;
    const HWND window = Open();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(filter.flags, 0x8010) << "its word for folders";
    EXPECT_EQ(Allowed(window), "S");
    Run("*.*");
    EXPECT_EQ(Allowed(window), "SGTCH");
    ASSERT_EQ(Rows(window), 5);
    std::vector<std::string> rows;
    for (int row = 0; row < 5; ++row) {
        rows.push_back(Cell(window, row, 4) + ": " + Cell(window, row, 0) + " " +
                       Cell(window, row, 1));
    }
    EXPECT_THAT(rows, ElementsAre("/: other 0", "/: pub ", "/pub: a.txt 1", "/pub: sub ",
                                  "/pub/sub: c.txt 5"));
    EXPECT_NE(Cell(window, 0, 2), "");
    EXPECT_NE(Cell(window, 0, 3), "");
    EXPECT_NE(Cell(window, 1, 5), "");
    EXPECT_EQ(Pane(window, 0), "Selected: 1 file") << "the first row became the current one";
    EXPECT_EQ(Pane(window, 1), "Found: 3 files, 2 folders, 6 bytes");
    EXPECT_THAT(notices.All(), ElementsAre("foreground"));
    char entry[8] = "";
    SendDlgItemMessageA(window, findMaskBox, CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(&entry[0]));
    EXPECT_STREQ(entry, ".") << "what stands for every name";
    Run("none*");
    EXPECT_EQ(Rows(window), 0);
    EXPECT_EQ(Allowed(window), "S");
    EXPECT_EQ(Pane(window, 1), "");
}

TEST_F(FindWindowTest, TheSelectionIsSummedUpAndAnEntryGoneTo) {
    Make("a", "123");
    Make("b", "1234");
    Make("c/");
    const HWND window = Open();
    Command(window, findGoTo);  // no hits, so it does nothing
    Run();
    Select(window, 0);
    Select(window, 1);
    Select(window, 2);
    EXPECT_EQ(Pane(window, 0), "Selected: 2 files, 1 folder, 7 bytes");
    const auto states = [this] {
        std::string text;
        for (u32 row = 0; row < RowCount(Record()); ++row) {
            text += static_cast<char>('0' + HitAtRow(Record(), row)->listState);
        }
        return text;
    };
    EXPECT_EQ(states(), "223") << "selected, and the last one current";
    SendDlgItemMessageA(window, findList, WM_KEYDOWN, VK_UP, 0);
    EXPECT_EQ(states(), "030");
    Select(window, 2);
    Command(window, findGoTo);
    EXPECT_THAT(notices.All(), ElementsAre("foreground", "go to c in /"));
}

TEST_F(FindWindowTest, AConnectionHasOneWindow) {
    Make("pub/x");
    const HWND window = Open(connection, "C:/pub");
    ASSERT_NE(window, nullptr);
    notices.Clear();
    EXPECT_EQ(Open(connection, "/"), window);
    EXPECT_THAT(notices.All(), ElementsAre("foreground"));
    Run();
    EXPECT_EQ(Cell(window, 0, 4), "/pub") << "the path of the first message, without its drive";
}

TEST_F(FindWindowTest, BarsAreHiddenAndShownAndTheControlsMakeRoom) {
    const HWND window = Open();
    FindWindow* find = Record();
    const RECT full = PlaceOf(window, findList);
    Command(window, findToolBar);
    EXPECT_FALSE(IsWindowVisible(find->toolBar));
    const RECT higher = PlaceOf(window, findList);
    EXPECT_LT(higher.top, full.top);
    EXPECT_EQ(higher.bottom, full.bottom);
    Command(window, findStatusBar);
    EXPECT_FALSE(IsWindowVisible(find->statusBar));
    EXPECT_GT(PlaceOf(window, findList).bottom, full.bottom);
    SendMessageA(window, WM_INITMENUPOPUP, 0, 1);
    EXPECT_FALSE(IsChecked(window, findToolBar));
    Command(window, findToolBar);
    Command(window, findStatusBar);
    EXPECT_EQ(PlaceOf(window, findList).top, full.top);
    EXPECT_EQ(PlaceOf(window, findList).bottom, full.bottom);
    SendMessageA(window, WM_SIZE, SIZE_MINIMIZED, 0);
    EXPECT_EQ(PlaceOf(window, findList).bottom, full.bottom);
    SendMessageA(window, WM_INITMENUPOPUP, 0, 1);
    EXPECT_TRUE(IsChecked(window, findToolBar));
    EXPECT_TRUE(IsChecked(window, findStatusBar));
    MINMAXINFO limits = {};
    EXPECT_EQ(SendMessageA(window, WM_GETMINMAXINFO, 0, reinterpret_cast<LPARAM>(&limits)), 1);
    EXPECT_EQ(limits.ptMinTrackSize.x, find->minimumWidth);
    EXPECT_GT(limits.ptMinTrackSize.y, full.top);
}

TEST_F(FindWindowTest, ViewsAreOnesOfFour) {
    const HWND window = Open();
    const HWND list = GetDlgItem(window, findList);
    const std::pair<u32, LONG> views[] = {{findViewIcons, LVS_ICON},
                                          {findViewSmall, LVS_SMALLICON},
                                          {findViewList, LVS_LIST},
                                          {findViewReport, LVS_REPORT}};
    for (const auto& [chosen, style] : views) {
        Command(window, chosen);
        EXPECT_EQ(GetWindowLongA(list, GWL_STYLE) & LVS_TYPEMASK, style);
        SendMessageA(window, WM_INITMENUPOPUP, 0, 1);
        for (u32 command = findViewIcons; command <= findViewReport; ++command) {
            EXPECT_EQ(IsChecked(window, command), command == chosen);
        }
    }
}

TEST_F(FindWindowTest, OptionsPlaceAndColumnsOutliveTheWindow) {
    HWND window = Open();
    MoveWindow(window, 40, 50, 500, 400, TRUE);
    SendDlgItemMessageA(window, findRecurseBox, BM_CLICK, 0, 0);
    const bool recurses = IsDlgButtonChecked(window, findRecurseBox) == BST_CHECKED;
    SendDlgItemMessageA(window, findList, LVM_SETCOLUMNWIDTH, 1, 77);
    Command(window, findViewList);
    Command(window, findClose);
    ASSERT_TRUE(WaitUntil([&] { return !IsWindow(window); }));
    EXPECT_EQ(Record(), nullptr);
    window = Open();
    ASSERT_NE(window, nullptr);
    RECT place = {};
    GetWindowRect(window, &place);
    EXPECT_EQ(place.left, 40);
    EXPECT_EQ(place.right - place.left, 500);
    EXPECT_EQ(IsDlgButtonChecked(window, findRecurseBox) == BST_CHECKED, recurses);
    EXPECT_EQ(Record()->options & FindOptViewBits, FindOptViewList);
    Command(window, findViewReport);
    EXPECT_EQ(SendDlgItemMessageA(window, findList, LVM_GETCOLUMNWIDTH, 1, 0), 77);
}

TEST_F(FindWindowTest, TwoConnectionsHaveTwoWindowsWithStatesOfTheirOwn) {
    Make("file");
    const HWND first = Open();
    hostkit::Connection another(Host());
    const HWND second = Open(another, "/");
    ASSERT_NE(second, nullptr);
    ASSERT_NE(second, first);
    Run(connection);
    EXPECT_EQ(Allowed(first), "SGTCH");
    EXPECT_EQ(Allowed(second), "S");
    Run(another);
    Run(connection, "none");
    EXPECT_EQ(Allowed(first), "S");
    EXPECT_EQ(Allowed(second), "SGTCH");
    another.Disconnect();
    EXPECT_FALSE(IsWindow(second));
    EXPECT_TRUE(IsWindow(first));
}

std::function<void()> whenPlaced;

extern "C" void PlaceWindow(const char*, const char*, i32* x, i32* y, i32* width, i32* height,
                            u32*) {
    *x = *y = 0;
    *width = *height = 400;
    if (const auto act = std::exchange(whenPlaced, {})) {
        act();
    }
}

TEST_F(FindWindowTest, TwoOpeningsAtOnceMakeOneWindow) {
    Connect(connection);
    ReplacedServices services;
    services.Replace(ShellService::loadPlacement, PlaceWindow);
    HWND first = nullptr;
    whenPlaced = [&] { first = Open(); };
    EXPECT_EQ(Open(), first);
    EXPECT_EQ(FindWindowA("FTPFind", nullptr), first);
    EXPECT_EQ(FindWindowExA(nullptr, first, "FTPFind", nullptr), nullptr);
    connection.Disconnect();
    EXPECT_FALSE(IsWindow(first));
}

extern "C" u32 RefuseWindow(HWND, u32, u32) {
    return 0xABCD0001;
}

TEST_F(FindWindowTest, AWindowThatTheHostRefusesLeavesNothing) {
    Connect(connection);
    u32 word = 0;
    Host().Loop().Invoke([&] { word = ShellOptionWord() |= FindOptRecurse; });
    {
        ReplacedServices services;
        services.Replace(ShellService::registerWindow, RefuseWindow);
        EXPECT_EQ(Open(), nullptr);
        EXPECT_EQ(FindWindowA("FTPFind", nullptr), nullptr);
    }
    EXPECT_EQ(ShellOptionWord(), word);
    EXPECT_NE(Open(), nullptr);
}

}  // namespace
