#include "hostkit/display_text.h"

#include <cstdio>

#include "host/records.h"

namespace hostkit {

namespace {

struct AttributeLetter {
    u16 bit;
    char letter;
};

// The bits of a permission word stand in three groups with gaps between them.
constexpr AttributeLetter permissionLetters[] = {
    {0x0001, 'r'}, {0x0002, 'w'}, {0x0004, 'x'}, {0x0020, 'r'}, {0x0040, 'w'},
    {0x0080, 'x'}, {0x0100, 'r'}, {0x0200, 'w'}, {0x0400, 'x'},
};

constexpr AttributeLetter dosLetters[] = {
    {0x01, 'R'}, {0x02, 'H'}, {0x04, 'S'}, {0x10, 'D'}, {0x20, 'A'},
};

}  // namespace

std::size_t NameOffset(std::string_view path) {
    if (path.starts_with("/./")) {
        return 0;
    }
    const std::size_t slash = path.rfind('/');
    if (slash != path.npos) {
        const std::string_view name = path.substr(slash + 1);
        const bool protectsName = name.starts_with(' ') || name.starts_with('~');
        const bool hasDot =
            slash >= 1 && path[slash - 1] == '.' && (slash == 1 || path[slash - 2] == '/');
        return protectsName && hasDot ? slash - 1 : slash + 1;
    }
    const std::size_t backslash = path.rfind('\\');
    if (backslash != path.npos) {
        return backslash + 1;
    }
    return path.size() >= 2 && path[1] == ':' ? 2 : 0;
}

std::size_t ExtensionOffset(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == name.npos || dot == 0 ? name.size() : dot;
}

std::string NumberText(u64 number) {
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, 1, ',');
    }
    return text;
}

std::string DateText(u16 date, u16 time) {
    if (date == 0) {
        return {};
    }
    char text[40];
    std::snprintf(text, sizeof(text), "%04d-%02d-%02d %02d:%02d", (date >> 9) + 1980,
                  (date >> 5) & 15, date & 31, time >> 11, (time >> 5) & 63);
    return text;
}

std::string AttributeText(u16 attributes) {
    std::string text;
    if ((attributes & quennet::attributePermissions) == 0) {
        for (const auto& [bit, letter] : dosLetters) {
            if ((attributes & bit) != 0) {
                text += letter;
            }
        }
        return text;
    }
    const bool isLink = (attributes & quennet::attributeLink) != 0;
    const bool isFolder = (attributes & quennet::attributeDirectory) != 0;
    text += isLink ? 'l' : isFolder ? 'd' : '-';
    for (const auto& [bit, letter] : permissionLetters) {
        text += (attributes & bit) != 0 ? letter : '-';
    }
    return text;
}

}  // namespace hostkit
