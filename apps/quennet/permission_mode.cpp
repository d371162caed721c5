#include "permission_mode.h"

#include <string>

namespace cli {

namespace {

using hostkit::u16;

/// Bits of an attribute word: read, write and execute of one class lie side by side, those of the
/// next one five places higher.
struct ClassRow {
    char letter;
    u16 bits;
};
constexpr ClassRow classRows[] = {{'u', 0x007}, {'g', 0x0E0}, {'o', 0x700}, {'a', 0x7E7}};
constexpr ClassRow permissionRows[] = {{'r', 0x121}, {'w', 0x242}, {'x', 0x484}};
constexpr u16 all = quennet::permissionBits;

template <std::size_t count>
std::optional<u16> BitsOf(char letter, const ClassRow (&rows)[count]) {
    for (const ClassRow& row : rows) {
        if (row.letter == letter) {
            return row.bits;
        }
    }
    return std::nullopt;
}

/// The bits of the letters at the text's beginning, which are taken off it.
template <std::size_t count>
u16 TakeLetters(std::string_view& text, const ClassRow (&rows)[count]) {
    u16 bits = 0;
    while (!text.empty() && BitsOf(text.front(), rows)) {
        bits = static_cast<u16>(bits | *BitsOf(text.front(), rows));
        text.remove_prefix(1);
    }
    return bits;
}

std::optional<hostkit::PermissionChange> ParseOctal(std::string_view text) {
    constexpr unsigned longest = 4;
    constexpr unsigned highest = 0777;
    unsigned number = 0;
    for (const char digit : text) {
        if (digit < '0' || digit > '7') {
            return std::nullopt;
        }
        number = number * 8 + static_cast<unsigned>(digit - '0');
    }
    if (text.empty() || text.size() > longest || number > highest) {
        return std::nullopt;
    }
    hostkit::PermissionChange change;
    for (unsigned place = 0; place < 9; ++place) {
        const ClassRow& classRow = classRows[place / 3];
        const u16 bit = classRow.bits & permissionRows[place % 3].bits;
        u16& target = (number >> (8 - place) & 1) != 0 ? change.set : change.clear;
        target = static_cast<u16>(target | bit);
    }
    return change;
}

/// One change, such as «go-w». False when it is none.
bool TakeChange(std::string_view text, hostkit::PermissionChange& change) {
    const u16 classes = TakeLetters(text, classRows);
    const char sign = text.empty() ? '\0' : text.front();
    if (sign != '+' && sign != '-' && sign != '=') {
        return false;
    }
    text.remove_prefix(1);
    const u16 affected = classes == 0 ? all : classes;
    const u16 named = affected & TakeLetters(text, permissionRows);
    const u16 given = sign == '-' ? u16{0} : named;
    const u16 taken =
        sign == '+' ? u16{0} : static_cast<u16>(sign == '=' ? affected & ~named : named);
    // The later of two changes of one permission counts.
    change.set = static_cast<u16>((change.set & ~taken) | given);
    change.clear = static_cast<u16>((change.clear & ~given) | taken);
    return text.empty();
}

}  // namespace

std::optional<hostkit::PermissionChange> ParsePermissionMode(std::string_view text) {
    if (const auto change = ParseOctal(text)) {
        return change;
    }
    hostkit::PermissionChange change;
    for (;;) {
        const std::size_t comma = text.find(',');
        if (!TakeChange(text.substr(0, comma), change)) {
            return std::nullopt;
        }
        if (comma == text.npos) {
            return change;
        }
        text.remove_prefix(comma + 1);
    }
}

}  // namespace cli
