// Masks, filters, paths, and how the host writes dates and attributes.

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "hostkit/console.h"
#include "hostkit/display_text.h"
#include "hostkit/masks.h"

using hostkit::MatchesMasks;

TEST(TextTest, Masks) {
    struct Case {
        const char* name;
        const char* masks;
        bool matches;
    };
    constexpr Case cases[] = {
        {"readme.txt", "*.txt", true},
        {"README.TXT", "*.txt", true},
        {"readme.txt", "*.TXT;*.doc", true},
        {"readme.doc", "*.txt; *.doc", true},
        {"readme.htm", "*.txt;*.doc", false},
        {"readme", "*.*", true},
        {"anything", ".", true},
        {"anything", "", true},
        {"anything", ";;", true},
        {"ab", "?b", true},
        {"b", "?b", false},
        {"ab", "?", false},
        {"", "*", true},
        {"", "?", false},
        {"abcabcabd", "*abd", true},
        {"abcabcabd", "a*c*d", true},
        {"abcabcabd", "a*c*e", false},
        {"a.b.c", "*.c", true},
        {"name", "name*", true},
        {"names", "name", false},
        {"[x]", "[x]", true},
    };
    for (const Case& one : cases) {
        EXPECT_EQ(MatchesMasks(one.name, one.masks), one.matches) << one.name << " " << one.masks;
    }
    // A mask of many stars takes no more than name times mask steps.
    std::string mask;
    for (int i = 0; i < 2000; ++i) {
        mask += "*a";
    }
    EXPECT_FALSE(MatchesMasks(std::string(20000, 'a') + "b", mask + "c"));
}

TEST(TextTest, AFilterLooksAtNameDateSizeAndKind) {
    hostkit::FilterRecord filter = {};
    std::strcpy(filter.masks, "*.txt");
    EXPECT_TRUE(PassesFilter(filter, "a.txt", 0, 100, 5));
    EXPECT_FALSE(PassesFilter(filter, "a.doc", 0, 100, 5));
    EXPECT_FALSE(PassesFilter(filter, "a.txt", 0x10, 100, 5));
    filter.flags = 0x8000 | hostkit::filterTakesFolders;
    filter.firstDate = 100;
    filter.lastDate = 200;
    filter.smallest = 10;
    filter.largest = 20;
    EXPECT_TRUE(PassesFilter(filter, "a.txt", 0x10, 150, 5));
    EXPECT_FALSE(PassesFilter(filter, "a.txt", 0, 150, 5));
    EXPECT_TRUE(PassesFilter(filter, "a.txt", 0, 100, 20));
    EXPECT_FALSE(PassesFilter(filter, "a.txt", 0, 99, 15));
    EXPECT_FALSE(PassesFilter(filter, "a.txt", 0, 201, 15));
    EXPECT_FALSE(PassesFilter(filter, "a.txt", 0, 150, 21));
}

TEST(TextTest, PathsAndNames) {
    EXPECT_EQ(hostkit::NameOffset("/pub/file"), 5u);
    EXPECT_EQ(hostkit::NameOffset("C:\\dir\\file"), 7u);
    EXPECT_EQ(hostkit::NameOffset("C:file"), 2u);
    EXPECT_EQ(hostkit::NameOffset("file:with"), 0u);
    EXPECT_EQ(hostkit::NameOffset(""), 0u);
    EXPECT_EQ(hostkit::ExtensionOffset("a.b.c"), 3u);
    EXPECT_EQ(hostkit::ExtensionOffset(".profile"), 8u);
    EXPECT_EQ(hostkit::ExtensionOffset("none"), 4u);
}

TEST(TextTest, DatesAndAttributes) {
    EXPECT_EQ(hostkit::DateText((2024 - 1980) << 9 | 5 << 5 | 17, 9 << 11 | 30 << 5),
              "2024-05-17 09:30");
    EXPECT_EQ(hostkit::DateText(0, 9 << 11), "");
    EXPECT_EQ(hostkit::AttributeText(0x8000 | 0x10 | 0x7 | 0xA0), "drwxr-x---");
    EXPECT_EQ(hostkit::AttributeText(0x8000 | 0x2000 | 0x10), "l---------");
    EXPECT_EQ(hostkit::AttributeText(0x18), "D");
}

TEST(TextTest, ALineForATerminalHoldsNoControls) {
    EXPECT_EQ(hostkit::HarmlessLine("a\x1B[31m\r\tb\x7F"), "a?[31m? b?");
    EXPECT_EQ(hostkit::HarmlessLine("gr\xC3\xBC\xC3\x9F\x65 \xC2\x9B"), "gr\xC3\xBC\xC3\x9F\x65 ?");
    EXPECT_EQ(hostkit::HarmlessLine("\xC2"), "\xC2");
}
