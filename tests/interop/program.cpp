#include "interop/program.h"

#include <cctype>
#include <cstdio>
#include <string_view>

namespace quennet::interop {

namespace {

std::string Encoded(const std::string& text) {
    std::string encoded;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) != 0 ||
            std::string_view("/.-_").find(character) != std::string::npos) {
            encoded += character;
            continue;
        }
        char digits[4];
        std::snprintf(digits, sizeof(digits), "%%%02X", byte);
        encoded += digits;
    }
    return encoded;
}

}  // namespace

std::string UrlOf(const Server& server, const std::string& path) {
    const Account& account = server.GetAccount();
    const std::string login =
        account.user.empty() ? "" : Encoded(account.user) + ":" + Encoded(account.password) + "@";
    return "ftp://" + login + "127.0.0.1:" + std::to_string(server.Port()) + "/" + Encoded(path);
}

}  // namespace quennet::interop
