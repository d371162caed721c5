#include "terminal_text.h"

#include <cstdio>

namespace cli {

namespace {

/// Length of the UTF-8 sequence at the front of a text; 0 when there is none. Overlong forms,
/// surrogates and numbers past the last character are none.
std::size_t Utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t i) {
        return i < text.size() ? static_cast<unsigned char>(text[i]) : 0u;
    };
    const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    if (first >= 0xC2 && first <= 0xDF) {
        return continues(1) ? 2 : 0;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        const bool overlong = first == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = first == 0xED && byte(1) > 0x9F;
        return continues(1) && continues(2) && !overlong && !surrogate ? 3 : 0;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        const bool overlong = first == 0xF0 && byte(1) < 0x90;
        const bool tooLarge = first == 0xF4 && byte(1) > 0x8F;
        return continues(1) && continues(2) && continues(3) && !overlong && !tooLarge ? 4 : 0;
    }
    return 0;
}

/// Whether a terminal would act on that character.
bool IsControl(std::string_view character) {
    const auto byte = static_cast<unsigned char>(character.front());
    if (character.size() == 2) {
        return byte == 0xC2 && static_cast<unsigned char>(character[1]) < 0xA0;
    }
    return character.size() == 1 && (byte < 0x20 || (byte >= 0x7F && byte < 0xA0));
}

void AppendHexadecimal(std::string_view bytes, std::string& target) {
    for (const char byte : bytes) {
        char text[8];
        std::snprintf(text, sizeof(text), "\\x%02X", static_cast<unsigned char>(byte));
        target += text;
    }
}

/// Calls `take(character)` for each character, and for each byte that belongs to none.
template <typename Take>
void ForEachCharacter(std::string_view text, Take take) {
    while (!text.empty()) {
        const std::size_t length = Utf8Length(text);
        take(text.substr(0, length == 0 ? 1 : length));
        text.remove_prefix(length == 0 ? 1 : length);
    }
}

}  // namespace

std::string HarmlessText(std::string_view text) {
    std::string harmless;
    harmless.reserve(text.size());
    ForEachCharacter(text, [&](std::string_view character) {
        if (IsControl(character)) {
            AppendHexadecimal(character, harmless);
        } else {
            harmless += character;
        }
    });
    return harmless;
}

std::string PorcelainText(std::string_view text) {
    std::string escaped;
    escaped.reserve(text.size());
    ForEachCharacter(text, [&](std::string_view character) {
        if (character == "\t") {
            escaped += "\\t";
        } else if (character == "\n") {
            escaped += "\\n";
        } else if (character == "\\") {
            escaped += "\\\\";
        } else if (IsControl(character)) {
            AppendHexadecimal(character, escaped);
        } else {
            escaped += character;
        }
    });
    return escaped;
}

}  // namespace cli
