#pragma once
// Reading of numbers and words in the text of a listing. Bytes have no encoding here: case is
// folded for the ASCII letters alone.

#include "host/types.h"

namespace quennet {

/// Reads a number as the C library's atol does on a 32-bit system: leading white space, one sign,
/// then decimal digits up to the first other byte; 0 without digits; larger numbers wrap.
inline i32 ReadNumber(const char* text) {
    while (*text == ' ' || (*text >= '\t' && *text <= '\r')) {
        ++text;
    }
    const bool negative = *text == '-';
    if (negative || *text == '+') {
        ++text;
    }
    u32 value = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        value = value * 10 + static_cast<u32>(*text - '0');
    }
    return static_cast<i32>(negative ? 0 - value : value);
}

constexpr char FoldCase(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

/// Whether the first `length` bytes of `text` are those of `word`, which has no fewer, in any case.
inline bool BeginsWithInAnyCase(const char* text, const char* word, std::size_t length) {
    for (std::size_t i = 0; i < length; ++i) {
        if (FoldCase(text[i]) != FoldCase(word[i])) {
            return false;
        }
    }
    return true;
}

/// Whether two texts are equal in any case.
inline bool EqualsInAnyCase(const char* left, const char* right) {
    while (*left != '\0' && FoldCase(*left) == FoldCase(*right)) {
        ++left;
        ++right;
    }
    return *left == *right;
}

}  // namespace quennet
