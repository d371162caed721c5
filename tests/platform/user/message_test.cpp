// Messages: posted, sent across threads, sent by timers, and what becomes of them when a window or
// thread ends.

#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <new>
#include <vector>

#include "platform/user/window_support.h"
#include "support/wait.h"

namespace {

constexpr UINT ping = WM_APP + 1;
constexpr UINT pong = WM_APP + 2;

}  // namespace

TEST(PostedMessage, ComesInOrderAndQuitComesLastAndGoesWithItsWindow) {
    const HWND window = MakeWindow(nullptr);
    PostQuitMessage(3);
    PostMessageA(window, ping, 1, 0);
    PostMessageA(nullptr, pong, 2, 0);
    MSG message = {};
    EXPECT_GT(GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.message, ping);
    EXPECT_TRUE(PeekMessageA(&message, nullptr, 0, 0, PM_NOREMOVE));
    EXPECT_EQ(message.message, pong);
    EXPECT_GT(GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.hwnd, nullptr);
    EXPECT_EQ(GetMessageA(&message, nullptr, 0, 0), 0);
    EXPECT_EQ(message.wParam, 3U);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
    // What stands in line for a window goes with it.
    PostMessageA(window, ping, 0, 0);
    DestroyWindow(window);
    EXPECT_FALSE(PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE));
}

TEST(SentMessage, IsServedWhileItsReceiverWaitsForAnAnswerHimself) {
    // here -> there, whose procedure sends back to here before it answers.
    HWND here = nullptr;
    LoopThread there([&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        return message == ping ? SendMessageA(here, pong, 0, 0) + 1 : unhandled;
    });
    const Handler answer = [](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        return message == pong ? 10 : unhandled;
    };
    here = MakeWindow(&answer);
    EXPECT_EQ(SendMessageA(there.Window(), ping, 0, 0), 11);
    DestroyWindow(here);
}

TEST(SentMessage, GivesNothingWhenItsReceiverHasNoMemoryForIt) {
    const Handler fail = [](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        return message == ping ? throw std::bad_alloc() : unhandled;
    };
    const LoopThread there(fail);
    const HWND here = MakeWindow(&fail);
    for (const HWND window : {here, there.Window()}) {
        EXPECT_EQ(SendMessageA(window, ping, 0, 0), 0);
    }
    EXPECT_TRUE(DestroyWindow(here));
}

TEST(SentMessage, OfTwoThreadsThatSendToEachOtherAtOnceBothGetThrough) {
    std::atomic<int> served = 0;
    const auto count = [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        return message == ping ? ++served : unhandled;
    };
    LoopThread left(count);
    LoopThread right(count);
    const auto sendTo = [](HWND target) {
        return [target] {
            for (int i = 0; i < 2000; ++i) {
                const HWND own = MakeWindow(nullptr);
                ASSERT_GT(SendMessageA(target, ping, 0, 0), 0);
                EXPECT_TRUE(DestroyWindow(own));
            }
        };
    };
    std::jthread leftSends([&] { left.Run(sendTo(right.Window())); });
    right.Run(sendTo(left.Window()));
    leftSends.join();
    EXPECT_EQ(served, 4000);
}

TEST(SentMessage, IsAnsweredWith0WhenItsWindowOrItsThreadEndsInFrontOfIt) {
    for (const bool destroys : {true, false}) {
        HWND window = nullptr;
        std::atomic<int> answered = 0;
        std::barrier made(5);
        std::jthread target([&] {
            window = MakeWindow(nullptr);
            made.arrive_and_wait();
            // Serves nothing while the senders stand in line.
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            if (destroys) {
                DestroyWindow(window);
                while (answered < 4) {
                    std::this_thread::yield();
                }
            }
        });
        std::vector<std::jthread> senders;
        for (int i = 0; i < 4; ++i) {
            senders.emplace_back([&] {
                made.arrive_and_wait();
                EXPECT_EQ(SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("text")), 0);
                ++answered;
            });
        }
    }
}

/// Counts the timer messages of another thread's window.
class TimerTest : public testing::Test {
  protected:
    /// What was taken before the kill is through when this returns.
    void Kill(UINT_PTR timer) const {
        EXPECT_TRUE(KillTimer(timed.Window(), timer));
        SendMessageA(timed.Window(), WM_NULL, 0, 0);
    }
    bool Fires(int count) const {
        return WaitUntil([&] { return fired >= count; });
    }

    std::atomic<int> fired = 0;
    const LoopThread timed{[&](HWND, UINT message, WPARAM, LPARAM) {
        fired += message == WM_TIMER;
        return unhandled;
    }};
};

TEST_F(TimerTest, DoesNotFireAfterItWasKilledFromAnotherThread) {
    using namespace std::chrono_literals;
    for (int i = 0; i < 20; ++i) {
        SetTimer(timed.Window(), 1, 10, nullptr);
        std::this_thread::sleep_for(9ms);
        Kill(1);
        const int before = fired;
        std::this_thread::sleep_for(12ms);
        EXPECT_EQ(fired, before);
    }
    EXPECT_FALSE(KillTimer(timed.Window(), 1));
}

TEST_F(TimerTest, FiresInTimeWhateverItsThreadSleepsFor) {
    SetTimer(timed.Window(), 1, 60000, nullptr);
    SetTimer(timed.Window(), 2, 20, nullptr);
    EXPECT_TRUE(Fires(1)) << "behind one that is due much later";
    Kill(2);
    SetTimer(timed.Window(), 1, 50, nullptr);
    Kill(1);
    const int before = fired;
    SetTimer(timed.Window(), 1, 200, nullptr);
    EXPECT_TRUE(Fires(before + 1)) << "behind one that was killed and due sooner";
}

TEST_F(TimerTest, DoesNotPileUpAndComesBehindAllPostedMessages) {
    std::string order;
    const Handler note = [&](HWND, UINT message, WPARAM, LPARAM) {
        if (message == WM_TIMER || message == WM_APP) {
            order += message == WM_TIMER ? 't' : 'p';
        }
        return unhandled;
    };
    const HWND window = MakeWindow(&note);
    SetTimer(window, 1, 10, nullptr);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
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
