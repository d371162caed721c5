// The status bar, and the size of top windows.

#include <commctrl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/user/window_support.h"

using testing::ElementsAre;

namespace {

RECT PlaceOf(HWND window) {
    RECT place = {};
    GetWindowRect(window, &place);
    return place;
}

}  // namespace

TEST(StatusBar, StaysAtTheLowerEdgeAndKeepsItsTexts) {
    const HWND parent = MakeWindow(nullptr);
    MoveWindow(parent, 30, 40, 320, 160, FALSE);
    const HWND bar = CreateStatusWindowA(0x44000003, "ready", parent, 0);
    ASSERT_NE(bar, nullptr);
    EXPECT_FALSE(IsWindowVisible(bar));
    MoveWindow(parent, 30, 40, 400, 192, FALSE);
    SendMessageA(bar, WM_SIZE, 0, 0);
    EXPECT_EQ(PlaceOf(bar).top - PlaceOf(parent).top, 176);
    EXPECT_EQ(PlaceOf(bar).bottom, PlaceOf(parent).bottom);
    EXPECT_EQ(PlaceOf(bar).right - PlaceOf(bar).left, 400);

    const INT rights[] = {80, 200, -1};
    EXPECT_TRUE(SendMessageA(bar, SB_SETPARTS, 3, reinterpret_cast<LPARAM>(rights)));
    EXPECT_FALSE(SendMessageA(bar, SB_SETPARTS, 257, reinterpret_cast<LPARAM>(rights)));
    const std::string text = "a text\x1B[2J that does not fit";
    EXPECT_TRUE(
        SendMessageA(bar, SB_SETTEXTA, 1 | SBT_NOBORDERS, reinterpret_cast<LPARAM>(text.c_str())));
    EXPECT_TRUE(SendMessageA(bar, SB_SETTEXTA, 2, reinterpret_cast<LPARAM>("\t\tend")));
    EXPECT_FALSE(SendMessageA(bar, SB_SETTEXTA, 3, reinterpret_cast<LPARAM>("none")));
    EXPECT_EQ(DrawnBy(bar, 50, 1).front(), "ready     |a text?[2J tha|                     end");
    DestroyWindow(parent);
}

TEST(TopWindow, HearsItsSizeWhenItFirstShowsAndNamesItsLimits) {
    std::vector<std::string> heard;
    const Handler handler = [&](HWND, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == WM_SIZE) {
            heard.push_back(std::to_string(LOWORD(lParam)) + "x" + std::to_string(HIWORD(lParam)));
            EXPECT_EQ(wParam, WPARAM{SIZE_RESTORED});
        }
        if (message != WM_GETMINMAXINFO) {
            return unhandled;
        }
        auto& limits = *reinterpret_cast<MINMAXINFO*>(lParam);
        EXPECT_EQ(limits.ptMinTrackSize.x, 0);
        limits.ptMinTrackSize = {200, 100};
        limits.ptMaxTrackSize.x = 300;
        return 1;
    };
    const HWND window = MakeWindow(&handler, nullptr, WS_OVERLAPPEDWINDOW);
    EXPECT_THAT(heard, ElementsAre());
    ShowWindow(window, SW_SHOW);
    ShowWindow(window, SW_HIDE);
    ShowWindow(window, SW_SHOW);
    MoveWindow(window, 5, 6, 10, 5000, FALSE);
    MoveWindow(window, 7, 8, 10, 5000, FALSE);
    SetWindowPos(window, HWND_TOP, 1, 1, 900, 1, SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_THAT(heard, ElementsAre("0x0", "200x5000", "300x100"));
    EXPECT_EQ(PlaceOf(window).left, 7);
    RECT client = {};
    EXPECT_TRUE(GetClientRect(window, &client));
    EXPECT_THAT((std::vector{client.left, client.top, client.right, client.bottom}),
                ElementsAre(0, 0, 300, 100));
    PostMessageA(window, WM_SYSKEYDOWN, VK_F4, 1);
    MSG message = {};
    while (IsWindow(window) && GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);  // what Alt-F4 posts closes the window
    }
    EXPECT_FALSE(IsWindow(window));
}
