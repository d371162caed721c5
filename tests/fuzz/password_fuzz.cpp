// Passwords of the site book: any stored text is read, any password comes back from its stored
// form.
//
// The first four bytes of the input are the key, the lowest first; the rest is the stored text, and
// the password.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/expect.h"
#include "host/services.h"
#include "sites/password_scrambling.h"

using namespace quennet;

namespace {

constexpr std::size_t groupDigits = 8;
constexpr std::size_t groupBytes = 4;

/// A text in a block of just the size that it may take. What stands behind it could be digits.
struct Value {
    char text[settingSize];

    explicit Value(const std::string& content) {
        std::memset(text, 'A', sizeof text);
        std::memcpy(text, content.c_str(), content.size() + 1);
    }
};

std::string Unscrambled(const std::string& stored) {
    const auto value = std::make_unique<Value>(stored);
    UnscramblePassword(value->text);
    Expect(std::memchr(value->text, 0, settingSize) != nullptr);
    return value->text;
}

std::string Scrambled(const std::string& password) {
    const auto value = std::make_unique<Value>(password);
    ScramblePassword(value->text);
    Expect(std::memchr(value->text, 0, settingSize) != nullptr);
    return value->text;
}

bool IsStoredForm(const std::string& text) {
    return text.size() % groupDigits == 0 &&
           text.find_first_not_of("0123456789abcdefABCDEF") == std::string::npos;
}

std::string PlainPassword(const std::string& stored, u32 key) {
    std::string password;
    for (std::size_t at = 0; IsStoredForm(stored) && at < stored.size(); at += groupDigits) {
        const std::string digits = stored.substr(at, groupDigits);
        const u32 group = static_cast<u32>(std::strtoul(digits.c_str(), nullptr, 16)) - key;
        for (std::size_t byte = 0; byte < groupBytes; ++byte) {
            password += static_cast<char>(group >> 8 * byte);
        }
    }
    return password.c_str();
}

void HoldRoundTrip(const std::string& text) {
    const std::string password = text.substr(0, longestPassword);
    const std::string stored = Scrambled(text);
    Expect(stored.size() == (password.size() + groupBytes - 1) / groupBytes * groupDigits);
    Expect(stored.find_first_not_of("0123456789ABCDEF") == std::string::npos);
    Expect(Unscrambled(stored) == password);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    u32 key = 0;
    if (size < sizeof key) {
        return -1;
    }
    for (std::size_t byte = sizeof key; byte > 0; --byte) {
        key = key << 8 | data[byte - 1];
    }
    hostTables.passwordKey = &key;
    std::string text(reinterpret_cast<const char*>(data) + sizeof key, size - sizeof key);
    text = text.substr(0, std::min<std::size_t>(text.find('\0'), settingSize - 1));
    Expect(Unscrambled(text) == PlainPassword(text, key));
    HoldRoundTrip(text);
    return 0;
}
