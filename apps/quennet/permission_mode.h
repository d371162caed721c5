#pragma once
// Permissions as a person writes them.

#include <optional>
#include <string_view>

#include "hostkit/trees.h"

namespace cli {

/// An octal number up to 777, or changes by letters with commas between them, as chmod takes them
/// (POSIX, without X, s and t): «644», «u+x,go-w», «a=r». Nothing for any other text.
std::optional<hostkit::PermissionChange> ParsePermissionMode(std::string_view text);

}  // namespace cli
