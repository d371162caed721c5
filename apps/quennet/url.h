#pragma once
// Where a URL points.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace cli {

/// ftp://[user[:password]@]host[:port]/path (RFC 1738, section 3.2), percent-decoded.
/// Or site:NAME[/path], decoded as well: then there is no host, and the path starts in the
/// directory of that stored site.
struct Url {
    std::string site;                     // empty: none
    std::string user;                     // empty: anonymous
    std::optional<std::string> password;  // may be empty
    std::string host;
    std::uint16_t port = 0;  // 0: none is given
    std::string path;        // relative to the login directory, absolute with a '/' in front

    /// «host» or «host:port», as the connection takes it; of a site its name.
    std::string HostText() const;

    /// What follows the last '/' of the path; empty when the URL names a directory.
    std::string FileName() const;
    /// What stands before it, without that '/' unless it is the root; empty: the login directory.
    std::string Directory() const;
};

/// Throws a usage Failure for anything else, for an IPv6 address, for a user, password or host of
/// more than 79 characters, and for a part that decodes to CR, LF or NUL. '?' and '#' are ordinary
/// characters of a path. A type at the end («;type=i») is taken if it is I: files are never
/// converted.
Url ParseUrl(std::string_view text);

}  // namespace cli
