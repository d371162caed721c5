#include "hostkit/filter_text.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string_view>

#include "hostkit/texts.h"

namespace hostkit {

namespace {

constexpr std::size_t dateLength = 10;  // «2024-05-31»
constexpr unsigned firstYear = 1980;
constexpr unsigned lastYear = 2107;

struct Unit {
    char letter;
    unsigned shift;
};
constexpr Unit units[] = {{'K', 10}, {'M', 20}, {'G', 30}, {'T', 40}};

template <typename Number>
bool ReadNumber(std::string_view digits, Number& number) {
    const char* end = digits.data() + digits.size();
    const auto [rest, error] = std::from_chars(digits.data(), end, number);
    return error == std::errc() && rest == end;
}

/// 0 for an empty text; nothing for what is no size.
std::optional<u64> ReadSize(std::string_view text) {
    text = Trimmed(text);
    if (text.empty()) {
        return 0;
    }
    unsigned shift = 0;
    for (const Unit& unit : units) {
        if ((text.back() & ~0x20) == unit.letter) {
            shift = unit.shift;
        }
    }
    if (shift != 0) {
        text = Trimmed(text.substr(0, text.size() - 1));
    }
    u64 number = 0;
    if (!ReadNumber(text, number) || number > std::numeric_limits<u64>::max() >> shift) {
        return std::nullopt;
    }
    return number << shift;
}

/// A DOS date, 0 for an empty text; nothing for what is no day.
std::optional<u16> ReadDate(std::string_view text) {
    text = Trimmed(text);
    if (text.empty()) {
        return 0;
    }
    unsigned year = 0;
    unsigned month = 0;
    unsigned day = 0;
    if (text.size() != dateLength || text[4] != '-' || text[7] != '-' ||
        !ReadNumber(text.substr(0, 4), year) || !ReadNumber(text.substr(5, 2), month) ||
        !ReadNumber(text.substr(8), day) || year < firstYear || year > lastYear) {
        return std::nullopt;
    }
    const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(month), std::chrono::day(day)};
    if (!date.ok()) {
        return std::nullopt;
    }
    return static_cast<u16>((year - firstYear) << 9 | month << 5 | day);
}

std::string SizeText(u64 size) {
    return size != 0 ? std::to_string(size) : std::string();
}

std::string DayText(u16 date) {
    if (date == 0) {
        return {};
    }
    char text[24];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02u", (date >> 9) + firstYear, (date >> 5) & 15U,
                  date & 31U);
    return text;
}

}  // namespace

FilterText TextOfFilter(const FilterRecord& filter) {
    FilterText text;
    text.masks.assign(filter.masks, strnlen(filter.masks, sizeof(filter.masks)));
    text.smallest = SizeText(filter.smallest);
    text.largest = SizeText(filter.largest);
    text.firstDate = DayText(filter.firstDate);
    text.lastDate = DayText(filter.lastDate);
    text.takesFolders = (filter.flags & filterTakesFolders) != 0;
    return text;
}

std::optional<FilterProblem> ReadFilter(const FilterText& text, FilterRecord& filter) {
    if (text.masks.size() >= sizeof(filter.masks)) {
        return FilterProblem{FilterField::masks, filterMasksTooLongText};
    }
    const auto smallest = ReadSize(text.smallest);
    if (!smallest) {
        return FilterProblem{FilterField::smallest, filterNoSizeText};
    }
    const auto largest = ReadSize(text.largest);
    if (!largest) {
        return FilterProblem{FilterField::largest, filterNoSizeText};
    }
    if (*largest == 0 && !Trimmed(text.largest).empty()) {
        return FilterProblem{FilterField::largest, filterLargestIsNoneText};
    }
    if (*largest != 0 && *largest < *smallest) {
        return FilterProblem{FilterField::largest, filterSizesCrossText};
    }
    const auto firstDate = ReadDate(text.firstDate);
    if (!firstDate) {
        return FilterProblem{FilterField::firstDate, filterNoDateText};
    }
    const auto lastDate = ReadDate(text.lastDate);
    if (!lastDate) {
        return FilterProblem{FilterField::lastDate, filterNoDateText};
    }
    if (*lastDate != 0 && *lastDate < *firstDate) {
        return FilterProblem{FilterField::lastDate, filterDatesCrossText};
    }
    filter.smallest = *smallest;
    filter.largest = *largest;
    filter.firstDate = *firstDate;
    filter.lastDate = *lastDate;
    filter.flags = static_cast<u16>(text.takesFolders ? filter.flags | filterTakesFolders
                                                      : filter.flags & ~filterTakesFolders);
    std::memset(filter.masks, 0, sizeof(filter.masks));
    text.masks.copy(filter.masks, sizeof(filter.masks) - 1);
    return std::nullopt;
}

}  // namespace hostkit
