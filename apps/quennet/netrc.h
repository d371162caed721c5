#pragma once
// Passwords from ~/.netrc.

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

/// Password of a user on a host, from the text of a netrc file: of the first entry that fits. An
/// entry fits with its `machine`, in any case, or as `default`, and with its `login`, or without
/// one. Format: the words machine, default, login, password, account and macdef of ftp(1); a value
/// may stand in double quotes, with a backslash before a quote or a backslash; a word that begins
/// with '#' makes the rest of its line a comment; a macro ends with an empty line.
std::optional<std::string> FindNetrcPassword(std::string_view text, std::string_view host,
                                             std::string_view user);

/// The same from a regular file of at most 1 MiB; nothing when it can't be read. `warn` hears of
/// anything else that stands there, and of a file that others can read although it holds the
/// password.
std::optional<std::string> ReadNetrcPassword(
    const std::filesystem::path& file, std::string_view host, std::string_view user,
    const std::function<void(const std::string& warning)>& warn);

}  // namespace cli
