#include "listing/line_parser.h"

#include <cstring>

#include "host/records.h"
#include "listing/list_text.h"

namespace quennet {
namespace {

// A Unix line has nine columns; the ninth is the name, with all its blanks.
constexpr u32 maxTokens = 9;
constexpr u32 shortestEntry = 4;
constexpr u32 shortestUnixLine = 7;

constexpr char directoryMark[] = "drw";
constexpr char fileMark[] = "-rw";

// The first three bytes of a word, in any case, as one number.
constexpr u32 MonthKey(const char* word) {
    u32 key = 0;
    for (u32 i = 0; i < 3 && word[i] != '\0'; ++i) {
        key = key << 8 | static_cast<u8>(FoldCase(word[i]));
    }
    return key;
}

struct MonthNames {
    u32 english;
    u32 german;
};

constexpr MonthNames monthNames[] = {
    {MonthKey("Jan"), MonthKey("Jan")},    {MonthKey("Feb"), MonthKey("Feb")},
    {MonthKey("Mar"), MonthKey("M\xE4r")}, {MonthKey("Apr"), MonthKey("Apr")},
    {MonthKey("May"), MonthKey("Mai")},    {MonthKey("Jun"), MonthKey("Jun")},
    {MonthKey("Jul"), MonthKey("Jul")},    {MonthKey("Aug"), MonthKey("Aug")},
    {MonthKey("Sep"), MonthKey("Sep")},    {MonthKey("Oct"), MonthKey("Okt")},
    {MonthKey("Nov"), MonthKey("Nov")},    {MonthKey("Dec"), MonthKey("Dez")},
};

struct PermissionPlace {
    char letter;
    u16 bit;
};

// The bytes behind the type character of a permission string.
constexpr PermissionPlace permissionPlaces[] = {
    {'r', 0x0001}, {'w', 0x0002}, {'x', 0x0004},  // owner
    {'r', 0x0020}, {'w', 0x0040}, {'x', 0x0080},  // group
    {'r', 0x0100}, {'w', 0x0200}, {'x', 0x0400},  // others
};

constexpr PermissionPlace os2Letters[] = {{'A', 0x20}, {'R', 0x01}, {'S', 0x04}};

// A line taken apart.
struct Columns {
    char* line;
    char* token[maxTokens];
    u32 count;

    /// The column that is `place` columns from the end; the last one is 1.
    char* FromEnd(u32 place) const { return token[count - place]; }
};

bool IsBlank(char letter) {
    return letter == ' ' || letter == '\t';
}

bool IsPlainLetter(char letter) {
    const u8 byte = static_cast<u8>(letter);
    return byte > 0x20 && byte < 0x80;
}

bool Holds(const char* text, char letter) {
    return std::strchr(text, letter) != nullptr;
}

// «name -> target» becomes «name->target», one token: blanks go from the word before the first
// arrow to the end of the line.
void JoinLinkArrow(char* line) {
    constexpr u32 longestLink = 511;
    char* start = std::strstr(line, " ->");
    if (start == nullptr) {
        return;
    }
    while (start > line && IsPlainLetter(start[-1])) {
        --start;
    }
    char* end = start;
    for (u32 i = 0; i < longestLink && start[i] != '\0'; ++i) {
        if (start[i] != ' ') {
            *end++ = start[i];
        }
    }
    *end = '\0';
}

void CutTrailingBlanks(char* line) {
    constexpr std::size_t leftAlone = 3;
    std::size_t length = std::strlen(line);
    while (length > leftAlone &&
           (IsBlank(line[length - 1]) || line[length - 1] == '\n' || line[length - 1] == '\r')) {
        line[--length] = '\0';
    }
}

// Whether the token begun last is the name and runs to the end of the line, blanks and all. An OS/2
// line has date and time in its third and fourth column; a Windows NT line has them in front, and
// its names all begin at one offset.
bool NameReached(const Columns& columns, ServerFamily serverType) {
    constexpr std::ptrdiff_t firstNtNameOffset = 39;
    if (serverType == ServerFamily::os2) {
        return columns.count == 5 && Holds(columns.token[3], ':') && Holds(columns.token[2], '-');
    }
    if (serverType == ServerFamily::windowsNt) {
        return columns.count == 4 && columns.token[3] - columns.line >= firstNtNameOffset &&
               Holds(columns.token[1], ':') && Holds(columns.token[0], '-');
    }
    return false;
}

// Most bytes of a token lie above the blank: these take one comparison each.
char* EndOfToken(char* at) {
    for (;; ++at) {
        while (static_cast<u8>(*at) > ' ') {
            ++at;
        }
        if (*at == '\0' || IsBlank(*at)) {
            return at;
        }
    }
}

Columns SplitColumns(char* line, ServerFamily serverType) {
    Columns columns = {line, {}, 0};
    char* at = line;
    if (!IsBlank(*at)) {
        columns.token[columns.count++] = at;
    }
    for (;;) {
        at = EndOfToken(at);
        if (*at == '\0' || columns.count == maxTokens) {
            return columns;
        }
        *at++ = '\0';
        while (IsBlank(*at)) {
            ++at;
        }
        columns.token[columns.count++] = at;
        if (NameReached(columns, serverType)) {
            return columns;
        }
    }
}

void ReadMonthName(const char* token, SYSTEMTIME* calendar) {
    const u32 key = MonthKey(token);
    WORD month = 0;
    for (const MonthNames& names : monthNames) {
        ++month;
        if (key == names.english || key == names.german) {
            calendar->wMonth = month;
            return;
        }
    }
}

// The column that holds the time of a young file and the year of an old one. Returns whether it is
// a time.
bool ReadTimeOrYear(const char* token, SYSTEMTIME* calendar) {
    const char* colon = std::strchr(token, ':');
    if (colon != nullptr) {
        calendar->wHour = static_cast<WORD>(ReadNumber(token));
        calendar->wMinute = static_cast<WORD>(ReadNumber(colon + 1));
        return true;
    }
    const i32 year = ReadNumber(token);
    if (year <= 0) {
        return false;
    }
    const i32 century = year < 100 ? calendar->wYear - calendar->wYear % 100 : 0;
    calendar->wYear = static_cast<WORD>(century + year);
    return false;
}

// Stores the attribute word of a permission string; any byte that has no business there rejects
// the whole string.
void ReadPermissions(const char* text, u16* attributes) {
    u16 word = attributePermissions;
    if (*text == 'l') {
        word |= attributeLink;
    }
    for (const PermissionPlace& place : permissionPlaces) {
        const char letter = *++text;
        const bool executes =
            place.letter == 'x' && (letter == 's' || letter == 'S' || letter == 't');
        if (letter == place.letter || executes) {
            word |= place.bit;
        } else if (letter != '-') {
            return;
        }
    }
    *attributes = word;
}

// «-rw-r--r--   1 ftp      ftp         1024 Mar  5 12:34 readme.txt», counted from the end because
// some servers leave out the group or the number of links. Returns whether a clock time was read.
bool ReadUnixLine(const Columns& columns, SYSTEMTIME* calendar, u32* size, u16* attributes) {
    *size = static_cast<u32>(ReadNumber(columns.FromEnd(5)));
    ReadMonthName(columns.FromEnd(4), calendar);
    calendar->wDay = static_cast<WORD>(ReadNumber(columns.FromEnd(3)));
    const bool clockSeen = ReadTimeOrYear(columns.FromEnd(2), calendar);
    if (columns.token[0] == columns.line) {
        ReadPermissions(columns.line, attributes);
    }
    return clockSeen;
}

// The marks below lie over the first columns of a short line: what is read before a mark is
// written, and what after it, makes a difference there.
void Mark(const Columns& columns, const char (&mark)[4]) {
    std::memcpy(columns.line, mark, sizeof(mark));
}

// «01-15-02  03:45PM       <DIR>          Program Files». Returns whether a clock time was read.
bool ReadDosLine(const Columns& columns, SYSTEMTIME* calendar, u32* size) {
    ParseDashDate(columns.token[0], calendar);
    if (EqualsInAnyCase(columns.FromEnd(2), "<DIR>")) {
        Mark(columns, directoryMark);
    } else {
        Mark(columns, fileMark);
        *size = static_cast<u32>(ReadNumber(columns.FromEnd(2)));
    }
    return ParseClockTime(columns.FromEnd(3), calendar);
}

// «             1234      A          01-15-02   12:34  my file.txt»
void ReadOs2Line(const Columns& columns, SYSTEMTIME* calendar, u32* size, u16* attributes) {
    *size = static_cast<u32>(ReadNumber(columns.token[0]));
    const char* name = columns.FromEnd(1);
    if ((name[0] == '.' && name[1] == '.') || BeginsWithInAnyCase(columns.token[1], "DIR", 3)) {
        Mark(columns, directoryMark);
    } else {
        Mark(columns, fileMark);
        for (const PermissionPlace& place : os2Letters) {
            if (columns.count >= 5 && Holds(columns.FromEnd(4), place.letter)) {
                *attributes |= place.bit;
            }
        }
    }
    ParseDashDate(columns.FromEnd(3), calendar);
    ParseClockTime(columns.FromEnd(2), calendar);
}

// What has a clock time is not of days to come: a later year becomes the present one, and a later
// day of it the same day of the year before.
void MoveBackFromTheFuture(SYSTEMTIME* calendar, const SYSTEMTIME& today) {
    if (calendar->wYear < today.wYear) {
        return;
    }
    calendar->wYear = today.wYear;
    const bool laterDay = calendar->wMonth == today.wMonth && calendar->wDay > today.wDay;
    if (calendar->wMonth > today.wMonth || laterDay) {
        --calendar->wYear;
    }
}

void ConvertToDos(const SYSTEMTIME& calendar, u16* date, u16* time) {
    FILETIME fileTime = {};
    WORD dosDate = 0;
    WORD dosTime = 0;
    if (SystemTimeToFileTime(&calendar, &fileTime) != FALSE &&
        FileTimeToDosDateTime(&fileTime, &dosDate, &dosTime) != FALSE) {
        *date = dosDate;
        *time = dosTime;
    }
}

}  // namespace

void NextListLine(const char** cursor, char* buffer, u32 limit) {
    const char* at = *cursor;
    for (; limit > 0 && *at != '\0' && *at != '\n' && *at != '\r'; --limit) {
        *buffer++ = *at++;
    }
    *buffer = '\0';
    while (*at == '\n' || *at == '\r') {
        ++at;
    }
    *cursor = at;
}

void ParseDashDate(const char* token, SYSTEMTIME* calendar) {
    constexpr i32 lastYear = 2107;
    const char* dash = std::strchr(token, '-');
    if (dash == nullptr) {
        return;
    }
    const i32 month = ReadNumber(token);
    if (month >= 1 && month <= 12) {
        calendar->wMonth = static_cast<WORD>(month);
    }
    const i32 day = ReadNumber(dash + 1);
    if (day >= 1 && day <= 31) {
        calendar->wDay = static_cast<WORD>(day);
    }
    dash = std::strchr(dash + 1, '-');
    if (dash == nullptr) {
        return;
    }
    const i32 year = ReadNumber(dash + 1);
    if (year < 1) {
        return;
    }
    if (year < 100) {
        calendar->wYear = static_cast<WORD>(calendar->wYear - calendar->wYear % 100 + year);
    } else {
        calendar->wYear = static_cast<WORD>(year > lastYear - 1900 ? year : year + 1900);
    }
}

bool ParseClockTime(const char* token, SYSTEMTIME* calendar) {
    const char* colon = std::strchr(token, ':');
    if (colon == nullptr) {
        return false;
    }
    calendar->wHour = static_cast<WORD>(ReadNumber(token));
    calendar->wMinute = static_cast<WORD>(ReadNumber(colon + 1));
    const bool twoDigits = colon[1] != '\0' && colon[2] != '\0';
    if (twoDigits && EqualsInAnyCase(colon + 3, "PM")) {
        calendar->wHour = static_cast<WORD>(calendar->wHour + 12);
    }
    if (calendar->wHour >= 24) {
        calendar->wHour = static_cast<WORD>(calendar->wHour - 12);
    }
    return true;
}

char* ParseListLineOn(const SYSTEMTIME& today, char* line, u32* size, u16* date, u16* time,
                      u16* attributes, ServerFamily serverType) {
    *size = 0;
    *date = 0;
    *time = 0;
    JoinLinkArrow(line);
    CutTrailingBlanks(line);
    const Columns columns = SplitColumns(line, serverType);
    if (columns.count < shortestEntry) {
        return line;
    }

    SYSTEMTIME calendar = {};
    calendar.wYear = today.wYear;
    calendar.wMonth = 1;
    bool clockSeen = false;
    if (columns.count >= shortestUnixLine) {
        clockSeen = ReadUnixLine(columns, &calendar, size, attributes);
    } else if (Holds(columns.token[0], '-')) {
        clockSeen = ReadDosLine(columns, &calendar, size);
    } else {
        ReadOs2Line(columns, &calendar, size, attributes);
    }
    if (clockSeen) {
        MoveBackFromTheFuture(&calendar, today);
    }
    ConvertToDos(calendar, date, time);
    return columns.FromEnd(1);
}

char* ParseListLine(char* line, u32* size, u16* date, u16* time, u16* attributes,
                    ServerFamily serverType) {
    SYSTEMTIME today = {};
    GetLocalTime(&today);
    return ParseListLineOn(today, line, size, date, time, attributes, serverType);
}

}  // namespace quennet
