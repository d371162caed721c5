#include "url.h"

#include <algorithm>
#include <charconv>

#include "failure.h"

namespace cli {

namespace {

constexpr std::string_view scheme = "ftp://";
constexpr std::string_view siteScheme = "site:";
constexpr std::size_t longestField = 79;
constexpr std::string_view typeMark = ";type=";

[[noreturn]] void Refuse(const std::string& reason) {
    throw Failure(ExitStatus::usage, "the URL is refused: " + reason);
}

char LowerCase(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
}

bool StartsWithInAnyCase(std::string_view text, std::string_view lowerCase) {
    return text.size() >= lowerCase.size() &&
           std::equal(lowerCase.begin(), lowerCase.end(), text.begin(),
                      [](char wanted, char given) { return wanted == LowerCase(given); });
}

/// Byte behind a '%'.
char DecodeByte(std::string_view digits) {
    unsigned value = 0;
    const char* end = digits.data() + digits.size();
    if (digits.size() != 2 || std::from_chars(digits.data(), end, value, 16).ptr != end) {
        Refuse("a '%' wants two hexadecimal digits behind it");
    }
    return static_cast<char>(value);
}

std::string Decode(std::string_view text, const char* what) {
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char byte = text[i];
        if (byte == '%') {
            byte = DecodeByte(text.substr(i + 1, 2));
            i += 2;
        }
        if (byte == '\0' || byte == '\r' || byte == '\n') {
            Refuse(std::string("its ") + what + " holds a line end or a NUL");
        }
        decoded += byte;
    }
    return decoded;
}

std::string DecodeField(std::string_view text, const char* what) {
    std::string decoded = Decode(text, what);
    if (decoded.size() > longestField) {
        Refuse(std::string("its ") + what + " has more than 79 characters");
    }
    return decoded;
}

bool IsHostCharacter(char character) {
    const char lower = LowerCase(character);
    return (lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9') || lower == '.' ||
           lower == '-' || lower == '_' || static_cast<unsigned char>(lower) >= 0x80;
}

std::uint16_t ParsePort(std::string_view text) {
    std::uint16_t port = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, port);
    if (error != std::errc() || rest != end || port == 0) {
        Refuse("its port is no number from 1 to 65535");
    }
    return port;
}

void ParseUser(std::string_view text, Url& url) {
    const std::size_t colon = text.find(':');
    url.user = DecodeField(text.substr(0, colon), "user");
    if (url.user.empty()) {
        Refuse("its user is empty");
    }
    if (colon != text.npos) {
        url.password = DecodeField(text.substr(colon + 1), "password");
    }
}

void ParseHost(std::string_view text, Url& url) {
    if (text.starts_with('[') || std::count(text.begin(), text.end(), ':') > 1) {
        Refuse("IPv6 addresses are not supported");
    }
    const std::size_t colon = text.find(':');
    url.host = DecodeField(text.substr(0, colon), "host");
    if (url.host.empty()) {
        Refuse("it names no host");
    }
    if (!std::all_of(url.host.begin(), url.host.end(), IsHostCharacter)) {
        Refuse("its host holds a character that no host name has");
    }
    if (colon != text.npos) {
        url.port = ParsePort(text.substr(colon + 1));
    }
    if (url.HostText().size() > longestField) {
        Refuse("its host and port have more than 79 characters");
    }
}

std::string_view WithoutType(std::string_view path) {
    const std::size_t mark = path.size() < typeMark.size() + 1 ? path.npos : path.rfind(';');
    if (mark == path.npos || mark + typeMark.size() + 1 != path.size() ||
        !StartsWithInAnyCase(path.substr(mark), typeMark)) {
        return path;
    }
    if (LowerCase(path.back()) != 'i') {
        Refuse("files are transferred as they are, \";type=i\" alone is possible");
    }
    return path.substr(0, mark);
}

}  // namespace

std::string Url::HostText() const {
    if (!site.empty()) {
        return site;
    }
    return port == 0 ? host : host + ":" + std::to_string(port);
}

std::string Url::FileName() const {
    return path.substr(path.rfind('/') + 1);
}

std::string Url::Directory() const {
    const std::size_t slash = path.rfind('/');
    if (slash == path.npos) {
        return {};
    }
    const std::size_t end = path.find_last_not_of('/', slash);
    return end == path.npos ? "/" : path.substr(0, end + 1);
}

Url ParseUrl(std::string_view text) {
    const bool isSite = StartsWithInAnyCase(text, siteScheme);
    if (!isSite && !StartsWithInAnyCase(text, scheme)) {
        Refuse("it begins neither with ftp:// nor with site:");
    }
    text.remove_prefix(isSite ? siteScheme.size() : scheme.size());
    const std::size_t slash = text.find('/');
    std::string_view authority = text.substr(0, slash);
    Url url;
    if (slash != text.npos) {
        url.path = Decode(WithoutType(text.substr(slash + 1)), "path");
    }
    if (isSite) {
        url.site = DecodeField(authority, "site");
        if (url.site.empty()) {
            Refuse("it names no site");
        }
        return url;
    }
    // A mail address may stand as user or password, so the last '@' counts.
    const std::size_t at = authority.rfind('@');
    if (at != authority.npos) {
        ParseUser(authority.substr(0, at), url);
        authority.remove_prefix(at + 1);
    }
    ParseHost(authority, url);
    return url;
}

}  // namespace cli
