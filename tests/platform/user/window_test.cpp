// Windows: their life, their numbers, their words, and whose they are.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/user/window_support.h"

using testing::ElementsAre;
using testing::IsEmpty;

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
    EXPECT_EQ(GetWindowThreadProcessId(first, nullptr), 0U);
    EXPECT_FALSE(DestroyWindow(first));
}

TEST(Window, NumbersThatAreNoWindowFindNothing) {
    const HWND window = MakeWindow(nullptr);
    for (const std::uintptr_t number :
         {std::uintptr_t{0}, Number(window) & 0xFFFF, Number(window) + 1, Number(window) ^ 0x10000,
          std::uintptr_t{0xFFFF}, UINTPTR_MAX}) {
        EXPECT_FALSE(IsWindow(reinterpret_cast<HWND>(number))) << number;
    }
    DestroyWindow(window);
}

TEST(Window, AProcedureCanRefuseToBeMade) {
    for (const UINT refused : {UINT{WM_NCCREATE}, UINT{WM_CREATE}}) {
        std::vector<UINT> messages;
        HWND made = nullptr;
        const Handler refuse = [&](HWND window, UINT message, WPARAM, LPARAM) -> LRESULT {
            made = window;
            messages.push_back(message);
            return message != refused ? unhandled : message == WM_NCCREATE ? 0 : -1;
        };
        EXPECT_EQ(MakeWindow(&refuse), nullptr);
        EXPECT_FALSE(IsWindow(made));
        // One that never was is not told of its end.
        EXPECT_EQ(messages.back(), refused == WM_CREATE ? UINT{WM_NCDESTROY} : refused);
    }
    EXPECT_EQ(MakeWindow(nullptr, nullptr, WS_CHILD), nullptr);
    EXPECT_EQ(
        CreateWindowExA(0, "no such class", "", 0, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr),
        nullptr);
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

TEST(Window, AChildOnAnotherThreadIsDestroyedByThatThread) {
    LoopThread other;
    const HWND parent = MakeWindow(nullptr);
    HWND child = nullptr;
    DWORD destroyedBy = 0;
    const Handler note = [&](HWND, UINT message, WPARAM, LPARAM) {
        if (message == WM_NCDESTROY) {
            destroyedBy = GetCurrentThreadId();
        }
        return unhandled;
    };
    other.Run([&] { child = MakeWindow(&note, parent, WS_CHILD); });
    EXPECT_TRUE(DestroyWindow(parent));
    EXPECT_FALSE(IsWindow(child));
    EXPECT_EQ(destroyedBy, GetWindowThreadProcessId(other.Window(), nullptr));
}

TEST(Window, KeepsItsWordsInsideTheRoomOfItsClass) {
    constexpr int room = 2 * sizeof(LONG_PTR);
    WNDCLASSEXA windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = DefWindowProcA;
    windowClass.cbWndExtra = room;
    windowClass.lpszClassName = "words";
    windowClass.hInstance = reinterpret_cast<HINSTANCE>(&windowClass);
    ASSERT_NE(RegisterClassExA(&windowClass), 0);
    EXPECT_EQ(RegisterClassExA(&windowClass), 0) << "twice";
    WNDCLASSEXA found = {};
    EXPECT_TRUE(GetClassInfoExA(windowClass.hInstance, "WORDS", &found));
    EXPECT_FALSE(GetClassInfoExA(nullptr, "words", &found)) << "another instance's";
    const HWND window = CreateWindowExA(0, "words", "the title", 0, 0, 0, 0, 0, nullptr, nullptr,
                                        windowClass.hInstance, nullptr);
    const auto pointer = reinterpret_cast<LONG_PTR>(&windowClass);
    EXPECT_EQ(SetWindowLongPtrA(window, room / 2, pointer), 0);
    EXPECT_EQ(SetWindowLongPtrA(window, room / 2 + 1, 1), 0) << "past the end";
    EXPECT_EQ(SetWindowLongPtrA(window, room / 2, 1), pointer);
    EXPECT_EQ(FindWindowA("words", "THE TITLE"), window);
    EXPECT_EQ(FindWindowA("words", "the"), nullptr);
    EXPECT_FALSE(UnregisterClassA("words", windowClass.hInstance)) << "in use";
    DestroyWindow(window);
    EXPECT_TRUE(UnregisterClassA("words", windowClass.hInstance));
}

TEST(Window, IsVisibleWithItsParentsAndLosesTheFocusWhenDisabled) {
    const HWND top = MakeWindow(nullptr);
    const HWND child = MakeWindow(nullptr, top, WS_CHILD | WS_VISIBLE);
    EXPECT_FALSE(IsWindowVisible(child));
    EXPECT_FALSE(ShowWindow(top, SW_SHOW));
    EXPECT_TRUE(IsWindowVisible(child));

    SetFocus(child);
    EXPECT_EQ(GetFocus(), child);
    EXPECT_FALSE(EnableWindow(child, FALSE));
    EXPECT_EQ(GetFocus(), nullptr);
    EXPECT_TRUE(EnableWindow(child, TRUE));
    EnableWindow(top, FALSE);
    EXPECT_EQ(SetFocus(child), nullptr);
    EXPECT_EQ(GetFocus(), nullptr);
    DestroyWindow(top);
}
