// Locks, the clock and the user's formats.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdlib>
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

TEST(TimeTest, TheUsersFormatsFitTheBufferOrAreNotWritten) {
    setenv("LC_ALL", "C", 1);
    const SYSTEMTIME time = {2024, 11, 0, 22, 13, 5, 59, 0};
    char buffer[32] = "untouched";
    EXPECT_EQ(GetTimeFormatA(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &time, nullptr, buffer, 5), 0);
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(GetTimeFormatA(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &time, nullptr, buffer, 6), 6);
    EXPECT_STREQ(buffer, "13:05");
    EXPECT_EQ(GetDateFormatA(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &time, nullptr, buffer, 32), 9);
    EXPECT_STREQ(buffer, "11/22/24");
}
