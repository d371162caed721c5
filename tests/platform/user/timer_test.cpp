// Timers, set and killed by any thread, firing on the one that owns the window.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "platform/user/window_support.h"

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

/// A thread whose window counts what its timers do.
struct TimedThread {
    std::atomic<int> fired = 0;
    std::atomic<bool> onItsThread = true;
    LoopThread thread{[this](HWND window, UINT message, WPARAM, LPARAM) {
        if (message == WM_TIMER) {
            onItsThread =
                onItsThread && GetCurrentThreadId() == GetWindowThreadProcessId(window, nullptr);
            ++fired;
        }
        return unhandled;
    }};

    HWND Window() const { return thread.Window(); }
    bool WaitFor(int count, std::chrono::milliseconds patience = 10s) const {
        const auto end = Clock::now() + patience;
        while (fired < count && Clock::now() < end) {
            std::this_thread::sleep_for(1ms);
        }
        return fired >= count;
    }
};

}  // namespace

TEST(Timer, DoesNotFireAfterItWasKilledFromAnotherThread) {
    TimedThread timed;
    for (int i = 0; i < 20; ++i) {
        SetTimer(timed.Window(), 1, 10, nullptr);
        std::this_thread::sleep_for(9ms);
        EXPECT_TRUE(KillTimer(timed.Window(), 1));
        // What was taken before the kill is through when this returns.
        SendMessageA(timed.Window(), WM_NULL, 0, 0);
        const int before = timed.fired;
        std::this_thread::sleep_for(12ms);
        EXPECT_EQ(timed.fired, before);
    }
    EXPECT_FALSE(KillTimer(timed.Window(), 1));
}

TEST(Timer, BeginsAnewWhenItIsSetAgain) {
    TimedThread timed;
    const auto start = Clock::now();
    while (Clock::now() - start < 400ms) {
        SetTimer(timed.Window(), 1, 300, nullptr);
        std::this_thread::sleep_for(10ms);
    }
    EXPECT_EQ(timed.fired, 0);
    EXPECT_TRUE(timed.WaitFor(1));
    KillTimer(timed.Window(), 1);
}

TEST(Timer, FiresInTimeWhateverItsThreadSleepsFor) {
    TimedThread timed;
    SetTimer(timed.Window(), 1, 60000, nullptr);
    SetTimer(timed.Window(), 2, 20, nullptr);
    EXPECT_TRUE(timed.WaitFor(1)) << "behind one that is due much later";
    KillTimer(timed.Window(), 2);
    KillTimer(timed.Window(), 1);
    // What was taken before the kill is through when this returns.
    SendMessageA(timed.Window(), WM_NULL, 0, 0);

    SetTimer(timed.Window(), 1, 50, nullptr);
    KillTimer(timed.Window(), 1);
    const int before = timed.fired;
    const auto start = Clock::now();
    SetTimer(timed.Window(), 1, 200, nullptr);
    EXPECT_TRUE(timed.WaitFor(before + 1)) << "behind one that was killed and due sooner";
    EXPECT_GE(Clock::now() - start, 200ms);
    KillTimer(timed.Window(), 1);
}

TEST(Timer, DoesNotPileUpAndComesBehindAllPostedMessages) {
    std::string order;
    const Handler note = [&](HWND, UINT message, WPARAM, LPARAM) {
        if (message == WM_TIMER || message == WM_APP) {
            order += message == WM_TIMER ? 't' : 'p';
        }
        return unhandled;
    };
    const HWND window = MakeWindow(&note);
    SetTimer(window, 1, 10, nullptr);
    std::this_thread::sleep_for(100ms);
    PostMessageA(window, WM_APP, 0, 0);
    PostMessageA(window, WM_APP, 0, 0);
    MSG message = {};
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
        DispatchMessageA(&message);
    }
    EXPECT_EQ(order, "ppt");
    // Nothing stands in line behind the one that came.
    KillTimer(window, 1);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    DestroyWindow(window);
}

TEST(Timer, WakesOnlyTheCallThatWantsIt) {
    const HWND window = MakeWindow(nullptr);
    const HWND other = MakeWindow(nullptr);
    SetTimer(other, 1, 10, nullptr);
    SetTimer(window, 2, 60, nullptr);
    MSG message = {};
    EXPECT_GT(GetMessageA(&message, window, 0, 0), 0);
    EXPECT_EQ(message.wParam, 2U);
    // The timer goes with its window.
    DestroyWindow(other);
    DestroyWindow(window);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

namespace {
int calls = 0;
void CALLBACK CountCall(HWND, UINT message, UINT_PTR, DWORD) {
    calls += message == WM_TIMER;
}
}  // namespace

TEST(Timer, CallsItsProcedureUnlessItWasKilledMeanwhile) {
    const UINT_PTR number = SetTimer(nullptr, 0, 10, CountCall);
    ASSERT_NE(number, 0U);
    const UINT_PTR another = SetTimer(nullptr, 0, 60000, CountCall);
    EXPECT_NE(another, number);
    EXPECT_TRUE(KillTimer(nullptr, another));
    EXPECT_TRUE(RunLoopUntil([] { return calls > 0; }));

    MSG message = {};
    ASSERT_GT(GetMessageA(&message, nullptr, WM_TIMER, WM_TIMER), 0);
    EXPECT_TRUE(KillTimer(nullptr, number));
    calls = 0;
    DispatchMessageA(&message);
    EXPECT_EQ(calls, 0);

    // A message that anybody could post does not choose the function that is called.
    message.lParam = 0x1234;
    EXPECT_EQ(DispatchMessageA(&message), 0);
}
