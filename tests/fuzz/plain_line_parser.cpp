#include "fuzz/plain_line_parser.h"

#include <algorithm>
#include <vector>

using namespace quennet;

namespace {

constexpr char blanks[] = " \t";

// English and German, in Latin-1.
constexpr const char* months[][2] = {
    {"Jan", "Jan"}, {"Feb", "Feb"}, {"Mar", "M\xE4r"}, {"Apr", "Apr"},
    {"May", "Mai"}, {"Jun", "Jun"}, {"Jul", "Jul"},    {"Aug", "Aug"},
    {"Sep", "Sep"}, {"Oct", "Okt"}, {"Nov", "Nov"},    {"Dec", "Dez"},
};

struct Permission {
    std::size_t place;
    const char* letters;
    u16 bit;
};
constexpr Permission permissions[] = {
    {1, "r", 0x0001}, {2, "w", 0x0002}, {3, "xsSt", 0x0004},  // owner
    {4, "r", 0x0020}, {5, "w", 0x0040}, {6, "xsSt", 0x0080},  // group
    {7, "r", 0x0100}, {8, "w", 0x0200}, {9, "xsSt", 0x0400},  // others
};
constexpr Permission attributeLetters[] = {{0, "A", 0x20}, {0, "R", 0x01}, {0, "S", 0x04}};

char Folded(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool IsSame(const std::string& left, const std::string& right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char one, char other) { return Folded(one) == Folded(other); });
}

bool BeginsWith(const std::string& text, const std::string& beginning) {
    return IsSame(text.substr(0, beginning.size()), beginning);
}

bool Holds(const std::string& text, char letter) {
    return text.find(letter) != std::string::npos;
}

/// The text behind its first `letter`, which it has.
std::string Behind(const std::string& text, char letter) {
    return text.substr(text.find(letter) + 1);
}

/// White space, a sign, digits up to the first other byte; modulo 2^32.
i32 NumberIn(const std::string& text) {
    const char* at = text.c_str() + std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
    const bool negative = *at == '-';
    at += *at == '-' || *at == '+' ? 1 : 0;
    u32 number = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        number = number * 10 + static_cast<u32>(*at - '0');
    }
    return static_cast<i32>(negative ? 0 - number : number);
}

/// «month-day-year».
void ReadDashDate(const std::string& token, SYSTEMTIME& calendar) {
    if (!Holds(token, '-')) {
        return;
    }
    const i32 month = NumberIn(token.substr(0, token.find('-')));
    if (month >= 1 && month <= 12) {
        calendar.wMonth = static_cast<u16>(month);
    }
    const std::string behindMonth = Behind(token, '-');
    const i32 day = NumberIn(behindMonth);
    if (day >= 1 && day <= 31) {
        calendar.wDay = static_cast<u16>(day);
    }
    if (!Holds(behindMonth, '-')) {
        return;
    }
    const i32 year = NumberIn(Behind(behindMonth, '-'));
    if (year >= 1) {
        const i32 added = year < 100 ? calendar.wYear / 100 * 100 : 1900;
        calendar.wYear = static_cast<u16>(year <= 2107 - 1900 ? year + added : year);
    }
}

/// «hour:minute», perhaps with PM. False when there is no colon.
bool ReadClockTime(const std::string& token, SYSTEMTIME& calendar) {
    if (!Holds(token, ':')) {
        return false;
    }
    const std::string behindHour = Behind(token, ':');
    calendar.wHour = static_cast<u16>(NumberIn(token.substr(0, token.find(':'))));
    calendar.wMinute = static_cast<u16>(NumberIn(behindHour));
    if (behindHour.size() > 2 && IsSame(behindHour.substr(2), "PM")) {
        calendar.wHour = static_cast<u16>(calendar.wHour + 12);
    }
    if (calendar.wHour >= 24) {
        calendar.wHour = static_cast<u16>(calendar.wHour - 12);
    }
    return true;
}

/// A date with a clock time lies in the past.
void PutIntoPast(const SYSTEMTIME& today, SYSTEMTIME& calendar) {
    if (calendar.wYear < today.wYear) {
        return;
    }
    calendar.wYear = today.wYear;
    if (calendar.wMonth > today.wMonth) {
        --calendar.wYear;
    }
    if (calendar.wYear == today.wYear && calendar.wMonth == today.wMonth &&
        calendar.wDay > today.wDay) {
        --calendar.wYear;
    }
}

/// Whether DOS words can hold it.
bool IsDate(const SYSTEMTIME& date) {
    constexpr int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (date.wYear < 1980 || date.wYear > 2107 || date.wMonth < 1 || date.wMonth > 12) {
        return false;
    }
    const bool isLeapYear = date.wYear % 4 == 0 && date.wYear != 2100;
    const int lastDay = date.wMonth == 2 && isLeapYear ? 29 : days[date.wMonth - 1];
    return date.wDay >= 1 && date.wDay <= lastDay && date.wHour < 24 && date.wMinute < 60;
}

/// «name -> target» becomes «name->target».
void SqueezeArrow(std::string& line) {
    constexpr std::size_t mostBytes = 511;
    const std::size_t blank = line.find(" ->");
    if (blank == std::string::npos) {
        return;
    }
    std::size_t begin = blank;
    while (begin > 0 && line[begin - 1] > 0x20 && (line[begin - 1] & 0x80) == 0) {
        --begin;
    }
    std::string name = line.substr(begin, mostBytes);
    std::erase(name, ' ');
    line.replace(begin, std::string::npos, name);
}

void CutTail(std::string& line) {
    while (line.size() > 3 && std::string("\n\r \t").find(line.back()) != std::string::npos) {
        line.pop_back();
    }
}

class Reader {
  public:
    Reader(const SYSTEMTIME& today, const std::string& line, u16 attributes)
        : today_(today), entry_{line, 0, 0, 0, 0, attributes} {
        calendar_.wYear = today.wYear;
        calendar_.wMonth = 1;
    }

    PlainEntry Read(ServerFamily family) {
        SqueezeArrow(entry_.line);
        CutTail(entry_.line);
        FindTokens(family);
        if (tokens_.size() >= 4) {
            entry_.name = tokens_.back();
            ReadLayout();
        }
        if (IsDate(calendar_)) {
            entry_.date = static_cast<u16>((calendar_.wYear - 1980) << 9 | calendar_.wMonth << 5 |
                                           calendar_.wDay);
            entry_.time = static_cast<u16>(calendar_.wHour << 11 | calendar_.wMinute << 5);
        }
        return entry_;
    }

  private:
    /// A token up to its NUL, as it stands now: the mark may have gone over it. The first is 1.
    std::string Token(std::size_t number) const {
        return entry_.line.c_str() + tokens_[number - 1];
    }
    std::string FromEnd(std::size_t number) const { return Token(tokens_.size() + 1 - number); }

    bool RestIsName(ServerFamily family) const {
        if (family == ServerFamily::os2 && tokens_.size() == 5) {
            return Holds(Token(4), ':') && Holds(Token(3), '-');
        }
        if (family == ServerFamily::windowsNt && tokens_.size() == 4) {
            return tokens_[3] >= 39 && Holds(Token(2), ':') && Holds(Token(1), '-');
        }
        return tokens_.size() == 9;
    }

    void FindTokens(ServerFamily family) {
        std::string& line = entry_.line;
        std::size_t at = line.find_first_of(blanks);
        if (at != 0) {
            tokens_.push_back(0);
        }
        while (at != std::string::npos && !RestIsName(family)) {
            const std::size_t next = std::min(line.find_first_not_of(blanks, at), line.size());
            line[at] = 0;
            tokens_.push_back(next);
            at = line.find_first_of(blanks, next);
        }
    }

    void ReadLayout() {
        const bool isUnix = tokens_.size() >= 7;
        if (!isUnix && !Holds(Token(1), '-')) {
            ReadOs2();
        } else if (isUnix ? ReadUnix() : ReadDos()) {
            PutIntoPast(today_, calendar_);
        }
    }

    /// True when a clock time was read. So for ReadDos.
    bool ReadUnix() {
        entry_.size = static_cast<u32>(NumberIn(FromEnd(5)));
        calendar_.wDay = static_cast<u16>(NumberIn(FromEnd(3)));
        ReadMonth(FromEnd(4));
        if (tokens_[0] == 0 && Token(1).size() >= 10) {
            ReadPermissions(Token(1));
        }
        const std::string timeOrYear = FromEnd(2);
        if (Holds(timeOrYear, ':')) {
            calendar_.wHour = static_cast<u16>(NumberIn(timeOrYear));
            calendar_.wMinute = static_cast<u16>(NumberIn(Behind(timeOrYear, ':')));
            return true;
        }
        const i32 year = NumberIn(timeOrYear);
        if (year > 0) {
            calendar_.wYear = static_cast<u16>(year < 100 ? today_.wYear / 100 * 100 + year : year);
        }
        return false;
    }

    void ReadMonth(const std::string& token) {
        for (u16 month = 12; month >= 1; --month) {
            if (BeginsWith(token, months[month - 1][0]) ||
                BeginsWith(token, months[month - 1][1])) {
                calendar_.wMonth = month;
            }
        }
    }

    void ReadPermissions(const std::string& token) {
        u16 word = token[0] == 'l' ? 0xA000 : 0x8000;
        for (const Permission& permission : permissions) {
            const char letter = token[permission.place];
            if (Holds(permission.letters, letter)) {
                word = static_cast<u16>(word | permission.bit);
            } else if (letter != '-') {
                return;
            }
        }
        entry_.attributes = word;
    }

    bool ReadDos() {
        ReadDashDate(Token(1), calendar_);
        const bool isDirectory = IsSame(FromEnd(2), "<DIR>");
        Mark(isDirectory);
        if (!isDirectory) {
            entry_.size = static_cast<u32>(NumberIn(FromEnd(2)));
        }
        return ReadClockTime(FromEnd(3), calendar_);
    }

    void ReadOs2() {
        entry_.size = static_cast<u32>(NumberIn(Token(1)));
        const bool isDirectory = FromEnd(1).starts_with("..") || BeginsWith(Token(2), "DIR");
        Mark(isDirectory);
        if (!isDirectory && tokens_.size() >= 5) {
            for (const Permission& attribute : attributeLetters) {
                if (Holds(FromEnd(4), attribute.letters[0])) {
                    entry_.attributes = static_cast<u16>(entry_.attributes | attribute.bit);
                }
            }
        }
        ReadDashDate(FromEnd(3), calendar_);
        ReadClockTime(FromEnd(2), calendar_);
    }

    /// What a Unix line begins with anyway. It may go over a token that is read after it.
    void Mark(bool isDirectory) { entry_.line.replace(0, 4, isDirectory ? "drw" : "-rw", 4); }

    const SYSTEMTIME& today_;
    PlainEntry entry_;
    SYSTEMTIME calendar_ = {};
    std::vector<std::size_t> tokens_;
};

}  // namespace

PlainEntry ReadLinePlainly(const SYSTEMTIME& today, const std::string& line, u16 attributes,
                           ServerFamily family) {
    return Reader(today, line, attributes).Read(family);
}
