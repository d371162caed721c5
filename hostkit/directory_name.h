#pragma once
// The name of a directory in a server's reply.

#include <optional>
#include <string>
#include <string_view>

namespace hostkit {

/// The directory in a reply to PWD, without a slash at its end. Two quotes stand for one (RFC 959,
/// appendix II); of a server that does not double them, `step`, where the change must have led if
/// it met no link, tells where the name ends. Nothing for a reply that can't be understood.
std::optional<std::string> DirectoryIn(std::string_view reply, const std::string& step);

}  // namespace hostkit
