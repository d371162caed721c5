// Dates and times as the user's locale writes them.

#include <langinfo.h>
#include <locale.h>
#include <time.h>

#include <cstring>
#include <string>

#include "winbase.h"

namespace {

/// The locale of the user's environment, the plain one if that is not installed.
locale_t UserLocale() {
    static const locale_t locale = [] {
        const locale_t users = newlocale(LC_TIME_MASK, "", nullptr);
        return users != nullptr ? users : newlocale(LC_TIME_MASK, "C", nullptr);
    }();
    return locale;
}

/// The parts of `time`, or of now; false for a date that the calendar does not have.
bool BrokenDown(const SYSTEMTIME* time, tm* parts) {
    SYSTEMTIME record{};
    if (time != nullptr) {
        record = *time;
    } else {
        GetLocalTime(&record);
    }
    FILETIME fileTime{};
    if (!SystemTimeToFileTime(&record, &fileTime) || !FileTimeToSystemTime(&fileTime, &record)) {
        return false;
    }
    parts->tm_year = record.wYear - 1900;
    parts->tm_mon = record.wMonth - 1;
    parts->tm_mday = record.wDay;
    parts->tm_wday = record.wDayOfWeek;
    parts->tm_hour = record.wHour;
    parts->tm_min = record.wMinute;
    parts->tm_sec = record.wSecond;
    return true;
}

void ReplaceAll(std::string* text, const char* from, const std::string& to) {
    for (auto at = text->find(from); at != std::string::npos;
         at = text->find(from, at + to.size())) {
        text->replace(at, std::strlen(from), to);
    }
}

/// The locale's format of a time with its seconds taken out, and with them the separator in front
/// («:%S»), or the word behind where a locale names its units.
std::string TimeFormatWithoutSeconds() {
    std::string format = nl_langinfo_l(T_FMT, UserLocale());
    std::string twelveHours = nl_langinfo_l(T_FMT_AMPM, UserLocale());
    ReplaceAll(&format, "%r", twelveHours.empty() ? "%I:%M:%S %p" : twelveHours);
    ReplaceAll(&format, "%T", "%H:%M:%S");
    ReplaceAll(&format, "%OS", "%S");
    const auto seconds = format.find("%S");
    if (seconds == std::string::npos) {
        return format;
    }
    if (seconds > 0 && std::strchr(":., ", format[seconds - 1]) != nullptr) {
        return format.erase(seconds - 1, 3);
    }
    const auto next = format.find('%', seconds + 1);
    return format.erase(seconds, next == std::string::npos ? next : next - seconds);
}

int Deliver(const std::string& format, const tm& parts, char* buffer, int size) {
    char text[256];
    const size_t length = strftime_l(text, sizeof text, format.c_str(), &parts, UserLocale());
    const int needed = static_cast<int>(length) + 1;
    if (size == 0) {
        return needed;
    }
    if (size < needed) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(buffer, text, length);
    buffer[length] = '\0';
    return needed;
}

int Format(LCID locale, const SYSTEMTIME* time, const char* ownFormat, const std::string& format,
           char* buffer, int size) {
    tm parts{};
    if (locale != LOCALE_USER_DEFAULT || ownFormat != nullptr || size < 0 ||
        !BrokenDown(time, &parts)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return Deliver(format, parts, buffer, size);
}

int RefuseFlags() {
    SetLastError(ERROR_INVALID_FLAGS);
    return 0;
}

}  // namespace

int WINAPI GetDateFormatA(LCID locale, DWORD flags, const SYSTEMTIME* date, LPCSTR format,
                          LPSTR buffer, int size) {
    if ((flags & ~DATE_SHORTDATE) != 0) {
        return RefuseFlags();
    }
    return Format(locale, date, format, "%x", buffer, size);
}

int WINAPI GetTimeFormatA(LCID locale, DWORD flags, const SYSTEMTIME* time, LPCSTR format,
                          LPSTR buffer, int size) {
    if ((flags & ~TIME_NOSECONDS) != 0) {
        return RefuseFlags();
    }
    const bool seconds = (flags & TIME_NOSECONDS) == 0;
    return Format(locale, time, format, seconds ? "%X" : TimeFormatWithoutSeconds(), buffer, size);
}
