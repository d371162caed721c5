// Messages: posted, sent across threads, and what becomes of them when a window or thread ends.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <barrier>
#include <vector>

#include "platform/user/window_support.h"

using testing::ElementsAre;

namespace {

constexpr UINT ping = WM_APP + 1;
constexpr UINT pong = WM_APP + 2;

std::vector<UINT> TakeAll() {
    std::vector<UINT> messages;
    MSG message = {};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        messages.push_back(message.message);
    }
    return messages;
}

}  // namespace

TEST(PostedMessage, ComesInOrderAndQuitComesLast) {
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
    DestroyWindow(window);
    EXPECT_EQ(GetMessageA(&message, window, 0, 0), -1);
}

TEST(PostedMessage, IsTakenByWindowItsChildrenAndNumber) {
    const HWND window = MakeWindow(nullptr);
    const HWND child = MakeWindow(nullptr, window, WS_CHILD);
    const HWND stranger = MakeWindow(nullptr);
    PostMessageA(stranger, ping, 0, 0);
    PostMessageA(child, pong, 0, 0);
    PostMessageA(child, ping, 0, 0);
    MSG message = {};
    EXPECT_GT(GetMessageA(&message, window, ping, ping), 0);
    EXPECT_EQ(message.hwnd, child);
    EXPECT_FALSE(PeekMessageA(&message, window, ping, ping, PM_REMOVE));
    EXPECT_THAT(TakeAll(), ElementsAre(ping, pong));
    DestroyWindow(window);
    DestroyWindow(stranger);
}

TEST(PostedMessage, IsDroppedWithItsWindowAndRefusedByAFullQueue) {
    const HWND window = MakeWindow(nullptr);
    const HWND child = MakeWindow(nullptr, window, WS_CHILD);
    PostMessageA(child, ping, 0, 0);
    PostMessageA(window, pong, 0, 0);
    DestroyWindow(child);
    EXPECT_THAT(TakeAll(), ElementsAre(pong));

    int accepted = 0;
    while (accepted < 20000 && PostMessageA(window, ping, 0, 0)) {
        ++accepted;
    }
    EXPECT_EQ(accepted, 10000);
    DestroyWindow(window);
}

TEST(PostedMessage, OfAKeyBecomesACharacterWithShift) {
    const HWND window = MakeWindow(nullptr);
    for (const WPARAM key : {WPARAM{'A'}, WPARAM{VK_SHIFT}, WPARAM{'A'}, WPARAM{VK_LEFT}}) {
        PostMessageA(window, WM_KEYDOWN, key, 0);
    }
    PostMessageA(window, WM_KEYUP, VK_SHIFT, 0);
    std::string typed;
    MSG message = {};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        if (message.message == WM_CHAR) {
            typed += static_cast<char>(message.wParam);
        }
    }
    EXPECT_EQ(typed, "aA");
    EXPECT_GE(GetKeyState(VK_SHIFT), 0);
    DestroyWindow(window);
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

TEST(SentMessage, OfTwoThreadsThatSendToEachOtherAtOnceBothGetThrough) {
    constexpr int rounds = 2000;
    std::atomic<int> served = 0;
    const auto count = [&](HWND, UINT message, WPARAM, LPARAM) -> LRESULT {
        return message == ping ? ++served : unhandled;
    };
    LoopThread left(count);
    LoopThread right(count);
    std::barrier together(2);
    const auto sendTo = [&](HWND target) {
        return [&, target] {
            together.arrive_and_wait();
            for (int i = 0; i < rounds; ++i) {
                ASSERT_GT(SendMessageA(target, ping, 0, 0), 0);
            }
        };
    };
    std::thread leftSends([&] { left.Run(sendTo(right.Window())); });
    right.Run(sendTo(left.Window()));
    leftSends.join();
    EXPECT_EQ(served, 2 * rounds);
}

TEST(SentMessage, IsNoMessageOfTheQueueAndLeavesPostedOnesAlone) {
    std::vector<UINT> seen;
    const Handler note = [&](HWND, UINT message, WPARAM, LPARAM) {
        seen.push_back(message);
        return unhandled;
    };
    const HWND here = MakeWindow(&note);
    seen.clear();
    LoopThread other;
    PostMessageA(here, ping, 0, 0);
    // The other thread sends to this one, which waits for the other.
    other.Run([&] { SendMessageA(here, pong, 0, 0); });
    EXPECT_THAT(seen, ElementsAre(pong));
    EXPECT_THAT(TakeAll(), ElementsAre(ping));
    DestroyWindow(here);
}

TEST(SentMessage, IsAnsweredWith0WhenTheThreadEndsInFrontOfIt) {
    std::atomic<bool> busy = false;
    std::atomic<bool> mayEnd = false;
    HWND window = nullptr;
    std::promise<void> made;
    std::thread target([&] {
        window = MakeWindow(nullptr);
        made.set_value();
        // Never serves anything.
        while (!mayEnd) {
            std::this_thread::yield();
        }
    });
    made.get_future().wait();
    std::vector<std::thread> senders;
    for (int i = 0; i < 4; ++i) {
        senders.emplace_back([&] {
            busy = true;
            EXPECT_EQ(SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("text")), 0);
        });
    }
    while (!busy) {
        std::this_thread::yield();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    mayEnd = true;
    for (std::thread& sender : senders) {
        sender.join();
    }
    target.join();
}

TEST(SentMessage, IsAnsweredWith0WhenItsWindowGoesInFrontOfIt) {
    std::atomic<bool> busy = false;
    std::atomic<bool> mayGo = false;
    LoopThread other;
    HWND window = nullptr;
    other.Run([&] { window = MakeWindow(nullptr); });
    const std::function<void()> destroyLater = [&] {
        busy = true;
        while (!mayGo) {
            std::this_thread::yield();
        }
        DestroyWindow(window);
    };
    std::thread keepsBusy([&] { other.Run(destroyLater); });
    while (!busy) {
        std::this_thread::yield();
    }
    std::thread sender([&] {
        EXPECT_EQ(SendMessageA(window, WM_SETTEXT, 0, reinterpret_cast<LPARAM>("text")), 0);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    mayGo = true;
    sender.join();
    keepsBusy.join();
}

TEST(SentMessage, StandsManyThreadsThatSendAndWindowsThatCome) {
    constexpr int rounds = 300;
    LoopThread target([](HWND, UINT message, WPARAM wParam, LPARAM) -> LRESULT {
        return message == ping ? static_cast<LRESULT>(wParam) + 1 : unhandled;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int round = 0; round < rounds; ++round) {
                const HWND own = MakeWindow(nullptr);
                EXPECT_EQ(SendMessageA(target.Window(), ping, 1, 0), 2);
                EXPECT_EQ(FindWindowA("test window", "no such text"), nullptr);
                SetTimer(target.Window(), 7, 1000, nullptr);
                EXPECT_TRUE(DestroyWindow(own));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
