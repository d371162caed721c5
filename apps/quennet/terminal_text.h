#pragma once
// Text of a server, made fit for a terminal or for a script.

#include <string>
#include <string_view>

namespace cli {

/// The text with every control character (C0, DEL, and C1 as a byte of its own or in UTF-8) written
/// as «\xNN», byte by byte; a person reads it on a terminal. Bytes above 0x9F that are no UTF-8
/// stay as they are.
std::string HarmlessText(std::string_view text);

/// The same in a form that can be undone: besides, a tab is «\t», a line feed «\n» and a backslash
/// «\\».
std::string PorcelainText(std::string_view text);

}  // namespace cli
