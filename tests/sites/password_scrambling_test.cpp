#include "sites/password_scrambling.h"

#include <cstring>

#include "host/services.h"
#include "sites/book_test.h"

using namespace quennet;

namespace {

class ScramblingTest : public BookTest {
  protected:
    ScramblingTest() { Start(); }

    static std::string Scrambled(const std::string& password) {
        char text[settingSize];
        std::strcpy(text, password.c_str());
        ScramblePassword(text);
        return text;
    }
    static std::string Unscrambled(const std::string& stored) {
        char text[settingSize];
        std::strcpy(text, stored.c_str());
        UnscramblePassword(text);
        return text;
    }
};

TEST_F(ScramblingTest, EachStartedGroupOfFourBytesIsEightDigits) {
    struct {
        const char* password;
        const char* stored;
    } cases[] = {
        {"", ""},
        {"a", "123456D9"},
        {"abcd", "7697B8D9"},
        {"abcde", "7697B8D9123456DD"},
        {"secret", "8497BBEB1234CADD"},
        {"\xFF\xFF\xFF\xFF", "12345677"},
        {"\xE4;=\"", "3471925C"},
    };
    for (const auto& row : cases) {
        EXPECT_EQ(Scrambled(row.password), row.stored);
        EXPECT_EQ(Unscrambled(row.stored), row.password);
    }
    for (std::size_t length = 0; length <= longestPassword; ++length) {
        const std::string password(length, '\xFE');
        EXPECT_EQ(Unscrambled(Scrambled(password)), password);
    }
    EXPECT_EQ(Unscrambled("7697b8d9"), "abcd");
    EXPECT_EQ(Unscrambled(Scrambled(std::string(259, 'p'))), std::string(80, 'p'));
}

TEST_F(ScramblingTest, WhatNobodyScrambledReadsAsEmpty) {
    for (const char* stored :
         {"1", "1234567", "123456D9 ", "123456DG", "0x3456D9", "-23456D9", "secret",
          "123456D9secretxx", "        ", "\xE4\xE4\xE4\xE4 \xE4 x"}) {
        EXPECT_EQ(Unscrambled(stored), "") << stored;
    }
    EXPECT_EQ(Unscrambled(std::string(259, 'A')), "");
    EXPECT_EQ(Unscrambled(std::string(256, 'A')).size(), 128u);
}

TEST_F(ScramblingTest, AKeyIsBuiltOnceFromTheSystemsVolume) {
    u32& key = *hostTables.passwordKey;
    EnsurePasswordKey();
    EXPECT_EQ(key, 0x12345678u);
    DWORD serial = 0;
    const bool known =
        GetVolumeInformationA("/", nullptr, 0, &serial, nullptr, nullptr, nullptr, 0) != FALSE;
    key = 0;
    EnsurePasswordKey();
    EXPECT_EQ(key, (known ? serial : 0x3A7C51E9u) + 0x19D4F0B3u);
}

}  // namespace
