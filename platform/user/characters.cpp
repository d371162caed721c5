#include "user/characters.h"

#include "windows.h"

#include <algorithm>
#include <cstdint>

namespace quennet::user {

namespace {

struct Lead {
    unsigned char mask;
    unsigned char bits;
    std::size_t length;
    char32_t lowest;  // a lower one has a shorter form
};
constexpr Lead leads[] = {
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
};
constexpr std::size_t longestCharacter = 4;

unsigned char ByteAt(std::string_view text, std::size_t position) {
    return static_cast<unsigned char>(text[position]);
}

bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0) == 0x80;
}

const Lead* LeadOf(unsigned char byte) {
    const auto* lead =
        std::ranges::find_if(leads, [&](const Lead& one) { return (byte & one.mask) == one.bits; });
    return lead == std::end(leads) ? nullptr : lead;
}

bool IsScalar(char32_t code) {
    return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

}  // namespace

Character CharacterAt(std::string_view text, std::size_t position) {
    const unsigned char first = ByteAt(text, position);
    const Character alone = {first, 1};
    const Lead* lead = LeadOf(first);
    if (!lead || text.size() - position < lead->length) {
        return alone;
    }
    auto code = static_cast<char32_t>(first & static_cast<unsigned char>(~lead->mask));
    for (std::size_t offset = 1; offset < lead->length; ++offset) {
        const unsigned char byte = ByteAt(text, position + offset);
        if (!IsContinuation(byte)) {
            return alone;
        }
        code = code << 6 | (byte & 0x3F);
    }
    return code >= lead->lowest && IsScalar(code) ? Character{code, lead->length} : alone;
}

std::size_t BeforeCharacter(std::string_view text, std::size_t position) {
    for (std::size_t length = std::min(longestCharacter, position); length > 1; --length) {
        if (CharacterAt(text, position - length).length == length) {
            return position - length;
        }
    }
    return position > 0 ? position - 1 : 0;
}

std::size_t BehindCharacter(std::string_view text, std::size_t position) {
    return position < text.size() ? position + CharacterAt(text, position).length : text.size();
}

std::size_t UnfinishedBytes(std::string_view text) {
    for (std::size_t count = 1; count < longestCharacter && count <= text.size(); ++count) {
        const unsigned char byte = ByteAt(text, text.size() - count);
        if (!IsContinuation(byte)) {
            const Lead* lead = LeadOf(byte);
            return lead && lead->length > count ? count : 0;
        }
    }
    return 0;
}

unsigned char MnemonicOf(std::string_view text) {
    for (std::size_t place = 0; place + 1 < text.size(); ++place) {
        if (text[place] != '&') {
            continue;
        }
        if (text[++place] != '&') {
            const auto letter = static_cast<std::uintptr_t>(ByteAt(text, place));
            return static_cast<unsigned char>(
                reinterpret_cast<std::uintptr_t>(CharUpperA(reinterpret_cast<LPSTR>(letter))));
        }
    }
    return 0;
}

}  // namespace quennet::user
