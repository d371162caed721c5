#include "sites/password_scrambling.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "host/services.h"

namespace quennet {

namespace {

// Stored passwords depend on these two: they never change.
constexpr u32 fallbackSerial = 0x3A7C51E9;
constexpr u32 keyAddend = 0x19D4F0B3;

constexpr u32 groupBytes = 4;
constexpr u32 groupDigits = 8;
static_assert((longestPassword + groupBytes - 1) / groupBytes * groupDigits < settingSize);

/// The root of the system's drive: a letter and the two characters behind it.
void FindSystemRoot(char (&root)[settingSize]) {
    constexpr std::size_t rootLength = 3;
    ShellGetSystemDir(root, settingSize);
    const auto letter = static_cast<unsigned char>(root[0]);
    const char upper = static_cast<char>(reinterpret_cast<ULONG_PTR>(
        CharUpperA(reinterpret_cast<LPSTR>(static_cast<ULONG_PTR>(letter)))));
    root[0] = upper >= 'A' && upper <= 'Z' ? upper : 'C';
    root[rootLength] = 0;
}

/// Value of a hexadecimal digit, -1 for any other character.
int DigitValue(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Reads the digits of one group. False when one of them is none.
bool ReadGroup(const char* digits, u32* group) {
    *group = 0;
    for (u32 index = 0; index < groupDigits; ++index) {
        const int value = DigitValue(digits[index]);
        if (value < 0) {
            return false;
        }
        *group = *group << 4 | static_cast<u32>(value);
    }
    return true;
}

u32 GroupFromBytes(const char* bytes) {
    u32 group = 0;
    for (u32 index = groupBytes; index > 0; --index) {
        group = group << 8 | static_cast<unsigned char>(bytes[index - 1]);
    }
    return group;
}

void StoreGroup(u32 group, char* bytes) {
    for (u32 index = 0; index < groupBytes; ++index) {
        bytes[index] = static_cast<char>(group >> (8 * index));
    }
}

}  // namespace

void EnsurePasswordKey() {
    u32& key = *hostTables.passwordKey;
    if (key != 0) {
        return;
    }
    char root[settingSize] = "";
    FindSystemRoot(root);
    DWORD serial = 0;
    if (!GetVolumeInformationA(root, nullptr, 0, &serial, nullptr, nullptr, nullptr, 0)) {
        serial = fallbackSerial;
    }
    key = static_cast<u32>(serial) + keyAddend;
}

void ScramblePassword(char (&text)[settingSize]) {
    char password[settingSize] = "";
    const std::size_t length = std::min<std::size_t>(std::strlen(text), longestPassword);
    std::memcpy(password, text, length);
    text[0] = 0;
    for (std::size_t offset = 0; offset < length; offset += groupBytes) {
        const u32 group = GroupFromBytes(password + offset) + *hostTables.passwordKey;
        std::snprintf(text + 2 * offset, groupDigits + 1, "%08lX",
                      static_cast<unsigned long>(group));
    }
}

void UnscramblePassword(char (&text)[settingSize]) {
    const std::size_t length = std::strlen(text);
    bool isStoredForm = length % groupDigits == 0;
    std::size_t offset = 0;
    for (; isStoredForm && 2 * offset < length; offset += groupBytes) {
        u32 group = 0;
        isStoredForm = ReadGroup(text + 2 * offset, &group);
        // The bytes stay behind the digits that are still to be read.
        StoreGroup(group - *hostTables.passwordKey, text + offset);
    }
    text[isStoredForm ? offset : 0] = 0;
}

}  // namespace quennet
