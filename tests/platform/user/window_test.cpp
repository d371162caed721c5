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

/// Writes down which window was told what of the end.
struct EndRecorder {
    std::vector<std::string> told;
    HWND window = nullptr;

    Handler For(const char* name) {
        return [this, name](HWND, UINT message, WPARAM, LPARAM) {
            if (message == WM_DESTROY || message == WM_NCDESTROY) {
                const bool exists = IsWindow(window);
                told.push_back((message == WM_DESTROY ? "destroy " : "gone ") + std::string(name) +
                               (exists ? "" : " late"));
            }
            return unhandled;
        };
    }
};

}  // namespace

TEST(Window, TheWholeTreeIsToldBeforeItsLeavesGoFirst) {
    EndRecorder recorder;
    const Handler parent = recorder.For("parent");
    const Handler child = recorder.For("child");
    const Handler grandchild = recorder.For("grandchild");
    const Handler owned = recorder.For("owned");
    const HWND top = MakeWindow(&parent);
    const HWND middle = MakeWindow(&child, top, WS_CHILD);
    recorder.window = MakeWindow(&grandchild, middle, WS_CHILD);
    const HWND popup = MakeWindow(&owned, top, WS_POPUP);

    EXPECT_EQ(GetParent(middle), top);
    EXPECT_EQ(GetParent(popup), top);
    EXPECT_TRUE(IsChild(top, recorder.window));
    EXPECT_TRUE(DestroyWindow(top));
    EXPECT_THAT(recorder.told, ElementsAre("destroy parent", "destroy child", "destroy grandchild",
                                           "destroy owned", "gone grandchild", "gone child late",
                                           "gone owned late", "gone parent late"));
    EXPECT_FALSE(IsWindow(popup));
}

TEST(Window, AWindowMayDestroyItselfAndItsParentFromInside) {
    HWND top = nullptr;
    const Handler destroysParent = [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        return message == WM_DESTROY || message == WM_APP ? DestroyWindow(top) : unhandled;
    };
    for (const UINT message : {UINT{WM_APP}, UINT{WM_CLOSE}}) {
        top = MakeWindow(nullptr);
        const HWND child = MakeWindow(&destroysParent, top, WS_CHILD);
        SendMessageA(child, message, 0, 0);
        EXPECT_FALSE(IsWindow(child));
        EXPECT_FALSE(IsWindow(top));
    }
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
