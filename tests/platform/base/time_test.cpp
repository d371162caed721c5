#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

SYSTEMTIME Time(WORD year, WORD month, WORD day, WORD hour = 0, WORD minute = 0, WORD second = 0) {
    return {year, month, 0, day, hour, minute, second, 0};
}

uint64_t Count(const FILETIME& time) {
    return uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

struct DosCase {
    SYSTEMTIME time;
    WORD dosDate;
    WORD dosTime;
};

TEST(TimeTest, DosDatesAndBack) {
    const DosCase cases[] = {
        {Time(1980, 1, 1), 0x0021, 0x0000},
        {Time(1999, 12, 31, 23, 59, 58), 0x279F, 0xBF7D},
        {Time(2000, 2, 29, 12, 30, 2), 0x285D, 0x63C1},
        {Time(2000, 2, 29, 12, 30, 3), 0x285D, 0x63C1},
        {Time(2107, 12, 31, 1, 2, 4), 0xFF9F, 0x0842},
    };
    for (const DosCase& one : cases) {
        SCOPED_TRACE(one.time.wYear);
        FILETIME fileTime{};
        FILETIME back{};
        WORD date = 0;
        WORD time = 0;
        ASSERT_TRUE(SystemTimeToFileTime(&one.time, &fileTime));
        ASSERT_TRUE(FileTimeToDosDateTime(&fileTime, &date, &time));
        EXPECT_EQ(date, one.dosDate);
        EXPECT_EQ(time, one.dosTime);
        ASSERT_TRUE(DosDateTimeToFileTime(date, time, &back));
        constexpr uint64_t second = 10'000'000;
        EXPECT_EQ(Count(back), Count(fileTime) - uint64_t{one.time.wSecond} % 2 * second);
    }
}

TEST(TimeTest, WhatTheCalendarDoesNotHaveIsRefused) {
    const SYSTEMTIME invalid[] = {
        Time(2001, 2, 29),       Time(1900, 2, 29), Time(2001, 4, 31),         Time(2001, 1, 0),
        Time(2001, 0, 1),        Time(2001, 13, 1), Time(1600, 1, 1),          Time(2001, 1, 1, 24),
        Time(2001, 1, 1, 0, 60), Time(30828, 1, 1), Time(2001, 1, 1, 0, 0, 60)};
    for (const SYSTEMTIME& time : invalid) {
        FILETIME fileTime{};
        EXPECT_FALSE(SystemTimeToFileTime(&time, &fileTime))
            << time.wYear << '-' << time.wMonth << '-' << time.wDay << ' ' << time.wHour;
        EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
    }
    FILETIME fileTime{};
    WORD date = 0;
    WORD dosTime = 0;
    for (const WORD year : {WORD{1979}, WORD{2108}}) {
        const SYSTEMTIME time = Time(year, 12, 31, 23, 59, 59);
        ASSERT_TRUE(SystemTimeToFileTime(&time, &fileTime));
        EXPECT_FALSE(FileTimeToDosDateTime(&fileTime, &date, &dosTime)) << year;
    }
    EXPECT_FALSE(DosDateTimeToFileTime(0, 0, &fileTime));
    EXPECT_FALSE(DosDateTimeToFileTime(0x285E, 0, &fileTime)) << "30 February";
    EXPECT_FALSE(DosDateTimeToFileTime(0x285D, 0xC000, &fileTime)) << "24 o'clock";
}

TEST(TimeTest, TheClockCountsWallTimeAndNotWork) {
    const clock_t start = clock();
    const DWORD startTicks = GetTickCount();
    Sleep(60);
    const double seconds = static_cast<double>(clock() - start) / CLOCKS_PER_SEC;
    EXPECT_GE(seconds, 0.055);
    EXPECT_LT(seconds, 30);
    EXPECT_GE(GetTickCount() - startTicks, 55u);
}

TEST(TimeTest, TheUsersFormatsFitTheBufferOrAreNotWritten) {
    setenv("LC_ALL", "C", 1);
    const SYSTEMTIME time = Time(2024, 11, 22, 13, 5, 59);
    char buffer[32] = "untouched";
    EXPECT_EQ(GetTimeFormatA(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &time, nullptr, nullptr, 0), 6);
    EXPECT_EQ(GetTimeFormatA(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &time, nullptr, buffer, 5), 0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_STREQ(buffer, "untouched");
    EXPECT_EQ(GetTimeFormatA(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &time, nullptr, buffer, 6), 6);
    EXPECT_STREQ(buffer, "13:05");
    EXPECT_EQ(GetDateFormatA(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &time, nullptr, buffer, 32), 9);
    EXPECT_STREQ(buffer, "11/22/24");
    const SYSTEMTIME invalid = Time(2024, 11, 31);
    EXPECT_EQ(GetDateFormatA(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &invalid, nullptr, buffer, 32),
              0);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INVALID_PARAMETER});
}

}  // namespace
