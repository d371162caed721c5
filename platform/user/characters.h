#pragma once
// Characters in texts of the program. A text is bytes: what is well-formed UTF-8 is taken as that,
// and any other byte is a character of its own.

#include <cstddef>
#include <string_view>

namespace quennet::user {

/// A character of a text, and how many bytes it takes: 1 to 4.
struct Character {
    char32_t code;
    std::size_t length;
};

/// The character at a place before the text's end. A byte that is no UTF-8 is one of Latin-1.
Character CharacterAt(std::string_view text, std::size_t position);

/// Where the character in front of the place begins; 0 at the start.
std::size_t BeforeCharacter(std::string_view text, std::size_t position);
/// Where the character at the place ends; the text's length at its end.
std::size_t BehindCharacter(std::string_view text, std::size_t position);

/// Bytes at the end of a text that begin a character and do not end it.
std::size_t UnfinishedBytes(std::string_view text);

/// The letter behind the first '&' in upper case, 0 without one. "&&" stands for the sign itself.
unsigned char MnemonicOf(std::string_view text);

}  // namespace quennet::user
