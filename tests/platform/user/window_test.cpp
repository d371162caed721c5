// Windows: their life, their numbers, their words, and whose they are.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/user/window_support.h"

using testing::ElementsAre;

namespace {

std::uintptr_t Number(HWND window) {
    return reinterpret_cast<std::uintptr_t>(window);
}

}  // namespace

TEST(Window, AWindowMayDestroyItselfAndItsParentFromInside) {
    HWND top = nullptr;
    int told = 0;
    const Handler destroysParent = [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        told += message == WM_DESTROY && IsWindow(top);
        return message == WM_DESTROY || message == WM_APP ? DestroyWindow(top) : unhandled;
    };
    for (const UINT message : {UINT{WM_APP}, UINT{WM_CLOSE}}) {
        top = MakeWindow(nullptr);
        const HWND child = MakeWindow(&destroysParent, top, WS_CHILD);
        SendMessageA(child, message, 0, 0);
        EXPECT_FALSE(IsWindow(child));
        EXPECT_FALSE(IsWindow(top));
    }
    EXPECT_EQ(told, 2) << "each time before the tree went";
}

TEST(Window, ANumberFits32BitsAndIsNotUsedAgain) {
    const HWND first = MakeWindow(nullptr);
    EXPECT_LE(Number(first), UINT32_MAX);
    DestroyWindow(first);
    for (int i = 0; i < 5000; ++i) {
        const HWND next = MakeWindow(nullptr);
        ASSERT_NE(next, nullptr);
        ASSERT_NE(next, first);
        ASSERT_TRUE(DestroyWindow(next));
    }
    EXPECT_FALSE(IsWindow(first));
    EXPECT_EQ(SendMessageA(first, WM_GETTEXTLENGTH, 0, 0), 0);
    EXPECT_FALSE(PostMessageA(first, WM_APP, 0, 0));
    EXPECT_EQ(SetTimer(first, 1, 10, nullptr), 0U);
    EXPECT_FALSE(DestroyWindow(first));
    EXPECT_FALSE(IsWindow(reinterpret_cast<HWND>(Number(first) & 0xFFFF)));
}

TEST(Window, BelongsToTheThreadThatMadeIt) {
    LoopThread other;
    DWORD otherThread = 0;
    other.Run([&] { otherThread = GetCurrentThreadId(); });
    EXPECT_EQ(GetWindowThreadProcessId(other.Window(), nullptr), otherThread);
    EXPECT_FALSE(DestroyWindow(other.Window()));
    EXPECT_EQ(SetFocus(other.Window()), nullptr);
    EXPECT_TRUE(IsWindow(other.Window()));
    other.Finish();
    EXPECT_FALSE(IsWindow(other.Window()));
}

TEST(Window, HearsItsSizeWhenItFirstShowsAndNamesItsLimits) {
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
    RECT place = {};
    GetWindowRect(window, &place);
    EXPECT_EQ(place.left, 7);
    PostMessageA(window, WM_SYSKEYDOWN, VK_F4, 1);
    MSG message = {};
    while (IsWindow(window) && GetMessageA(&message, nullptr, 0, 0) > 0) {
        DispatchMessageA(&message);  // what Alt-F4 posts closes the window
    }
    EXPECT_FALSE(IsWindow(window));
}
