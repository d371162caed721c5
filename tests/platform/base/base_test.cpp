// Locks and the clock.

#include <gtest/gtest.h>
#include <windows.h>

#include <thread>
#include <vector>

TEST(CriticalSectionTest, KeepsOthersOutUntilItIsLeftAsOftenAsEntered) {
    CRITICAL_SECTION section;
    InitializeCriticalSection(&section);
    int count = 0;
    std::vector<std::jthread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([&] {
            for (int turn = 0; turn < 10'000; ++turn) {
                EnterCriticalSection(&section);
                EnterCriticalSection(&section);
                ++count;
                LeaveCriticalSection(&section);
                ++count;  // still inside
                LeaveCriticalSection(&section);
            }
        });
    }
    threads.clear();
    EXPECT_EQ(count, 80'000);
    DeleteCriticalSection(&section);
}

TEST(TimeTest, TheClockCountsWallTimeAndNotWork) {
    const clock_t start = clock();
    Sleep(60);
    EXPECT_GE(static_cast<double>(clock() - start) / CLOCKS_PER_SEC, 0.055);
}
