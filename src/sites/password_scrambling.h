#pragma once
// How passwords stand in the site book: not in the clear, and of use on this machine alone. This
// keeps them from a glance, not from an attacker.
//
// Each group of four bytes, the last one filled up with zeros, is read as a little-endian number;
// the key is added modulo 2 to the power 32, and the sum stands there as eight upper-case
// hexadecimal digits.

#include "host/types.h"

namespace quennet {

constexpr u32 settingSize = 260;  // of a buffer for a value in the settings file
constexpr u32 longestPassword = 80;

/// Builds the host's key word from the serial number of the system's volume, unless it has a key.
void EnsurePasswordKey();

/// Replaces a password by its stored form. Of more than `longestPassword` bytes the rest is cut.
void ScramblePassword(char (&text)[settingSize]);

/// Replaces a stored form by its password; what is no stored form becomes the empty text.
void UnscramblePassword(char (&text)[settingSize]);

}  // namespace quennet
