// Calendar records, file times, DOS dates and the clocks.

#include <time.h>

#include <chrono>
#include <limits>

#include "winbase.h"

namespace {

using std::chrono::day;
using std::chrono::days;
using std::chrono::month;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

using Ticks = std::chrono::duration<int64_t, std::ratio<1, 10'000'000>>;

constexpr sys_days fileTimeEpoch{year{1601} / 1 / 1};
constexpr int firstFileTimeYear = 1601;
constexpr int lastFileTimeYear = 30827;
constexpr int firstDosYear = 1980;
constexpr int lastDosYear = 2107;

const std::chrono::steady_clock::time_point processStart = std::chrono::steady_clock::now();

BOOL Refuse() {
    SetLastError(ERROR_INVALID_PARAMETER);
    return FALSE;
}

bool IsCalendarTime(const SYSTEMTIME& time) {
    // The calendar's own types keep a byte of a month and of a day.
    if (time.wMonth > 12 || time.wDay > 31) {
        return false;
    }
    const year_month_day date{year{time.wYear}, month{time.wMonth}, day{time.wDay}};
    return time.wYear >= firstFileTimeYear && time.wYear <= lastFileTimeYear && date.ok() &&
           time.wHour < 24 && time.wMinute < 60 && time.wSecond < 60 && time.wMilliseconds < 1000;
}

void FillTime(SYSTEMTIME* time, const tm& parts, long nanoseconds) {
    time->wYear = static_cast<WORD>(parts.tm_year + 1900);
    time->wMonth = static_cast<WORD>(parts.tm_mon + 1);
    time->wDayOfWeek = static_cast<WORD>(parts.tm_wday);
    time->wDay = static_cast<WORD>(parts.tm_mday);
    time->wHour = static_cast<WORD>(parts.tm_hour);
    time->wMinute = static_cast<WORD>(parts.tm_min);
    // A leap second is one that the record cannot hold.
    time->wSecond = static_cast<WORD>(parts.tm_sec > 59 ? 59 : parts.tm_sec);
    time->wMilliseconds = static_cast<WORD>(nanoseconds / 1'000'000);
}

timespec Now(clockid_t clockId) {
    timespec now{};
    clock_gettime(clockId, &now);
    return now;
}

// Readers of listings ask for the local time once a line, so the zone is looked up once a second.
const tm& LocalParts(time_t seconds) {
    struct LastAnswer {
        time_t seconds;
        tm parts;
    };
    thread_local LastAnswer last{std::numeric_limits<time_t>::min(), {}};
    if (last.seconds != seconds) {
        localtime_r(&seconds, &last.parts);
        last.seconds = seconds;
    }
    return last.parts;
}

}  // namespace

void WINAPI GetLocalTime(SYSTEMTIME* time) {
    const timespec now = Now(CLOCK_REALTIME);
    FillTime(time, LocalParts(now.tv_sec), now.tv_nsec);
}

BOOL WINAPI SystemTimeToFileTime(const SYSTEMTIME* time, FILETIME* fileTime) {
    if (!IsCalendarTime(*time)) {
        return Refuse();
    }
    const sys_days date{year{time->wYear} / month{time->wMonth} / day{time->wDay}};
    const Ticks ticks = date - fileTimeEpoch + std::chrono::hours{time->wHour} +
                        std::chrono::minutes{time->wMinute} + std::chrono::seconds{time->wSecond} +
                        std::chrono::milliseconds{time->wMilliseconds};
    const auto count = static_cast<uint64_t>(ticks.count());
    fileTime->dwLowDateTime = static_cast<DWORD>(count);
    fileTime->dwHighDateTime = static_cast<DWORD>(count >> 32);
    return TRUE;
}

BOOL WINAPI FileTimeToSystemTime(const FILETIME* fileTime, SYSTEMTIME* time) {
    if (fileTime->dwHighDateTime > 0x7FFFFFFFu) {
        return Refuse();
    }
    const Ticks ticks{static_cast<int64_t>(fileTime->dwHighDateTime) << 32 |
                      fileTime->dwLowDateTime};
    const days wholeDays = std::chrono::floor<days>(ticks);
    const sys_days midnight = fileTimeEpoch + wholeDays;
    const year_month_day date{midnight};
    const std::chrono::hh_mm_ss clockTime{
        std::chrono::floor<std::chrono::milliseconds>(ticks - wholeDays)};
    if (static_cast<int>(date.year()) > lastFileTimeYear) {
        return Refuse();
    }
    time->wYear = static_cast<WORD>(static_cast<int>(date.year()));
    time->wMonth = static_cast<WORD>(static_cast<unsigned>(date.month()));
    time->wDayOfWeek = static_cast<WORD>(std::chrono::weekday{midnight}.c_encoding());
    time->wDay = static_cast<WORD>(static_cast<unsigned>(date.day()));
    time->wHour = static_cast<WORD>(clockTime.hours().count());
    time->wMinute = static_cast<WORD>(clockTime.minutes().count());
    time->wSecond = static_cast<WORD>(clockTime.seconds().count());
    time->wMilliseconds = static_cast<WORD>(clockTime.subseconds().count());
    return TRUE;
}

BOOL WINAPI FileTimeToDosDateTime(const FILETIME* fileTime, WORD* date, WORD* time) {
    SYSTEMTIME parts{};
    if (!FileTimeToSystemTime(fileTime, &parts)) {
        return FALSE;
    }
    if (parts.wYear < firstDosYear || parts.wYear > lastDosYear) {
        return Refuse();
    }
    *date = static_cast<WORD>((parts.wYear - firstDosYear) << 9 | parts.wMonth << 5 | parts.wDay);
    *time = static_cast<WORD>(parts.wHour << 11 | parts.wMinute << 5 | parts.wSecond / 2);
    return TRUE;
}

DWORD WINAPI GetTickCount() {
    const timespec now = Now(CLOCK_MONOTONIC);
    return static_cast<DWORD>(static_cast<uint64_t>(now.tv_sec) * 1000 +
                              static_cast<uint64_t>(now.tv_nsec) / 1'000'000);
}

clock_t quennet_clock() {
    const auto elapsed = std::chrono::steady_clock::now() - processStart;
    return static_cast<clock_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(elapsed).count());
}
