// Bounded text, growing buffers, entry lists, masks, names and lines for a terminal.

#include "hostkit/memory.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <string>

#include "hostkit/console.h"
#include "hostkit/display_text.h"
#include "hostkit/host.h"
#include "hostkit/listing.h"
#include "hostkit/masks.h"
#include "hostkit/services.h"

using hostkit::MatchesMasks;
using quennet::GrowBuffer;

extern "C" quennet::i32 CheckWithoutMemory(const char*) {
    throw std::bad_alloc();
}

TEST(MemoryTest, AServiceThatThrowsGivesItsFailure) {
    using quennet::ShellFileCheckFunction;
    quennet::ShellServices shell = {};
    constexpr auto word = quennet::ShellService::fileCheck;
    hostkit::Put<ShellFileCheckFunction, CheckWithoutMemory, ENOMEM>(shell, word);
    const auto check =
        reinterpret_cast<ShellFileCheckFunction>(shell.words[static_cast<quennet::u32>(word)]);
    EXPECT_EQ(check("file"), ENOMEM);
}

TEST(MemoryTest, AppendedTextStaysInsideItsBounds) {
    struct {
        const char* target;
        const char* text;
        std::size_t size;
        const char* result;
    } const cases[] = {{"", "text", 8, "text"}, {"ab", "cd", 5, "abcd"}, {"ab", "cd", 4, "abc"},
                       {"ab", "cd", 3, "ab"},   {"ab", "cd", 2, "ab"},   {"", "text", 1, ""}};
    for (const auto& one : cases) {
        char buffer[] = "###############";
        std::strcpy(buffer, one.target);
        hostkit::AppendBounded(buffer, one.text, one.size);
        EXPECT_STREQ(buffer, one.result) << one.target << "+" << one.text << " in " << one.size;
        EXPECT_EQ(buffer[14], '#');
    }
}

TEST(MemoryTest, AFailedAppendLeavesTheRecordAsItWas) {
    GrowBuffer record = {};
    ASSERT_TRUE(hostkit::AppendToBuffer(record, "text", 4));
    const GrowBuffer before = record;
    record.used = static_cast<hostkit::HostWord>(std::numeric_limits<std::ptrdiff_t>::max()) - 1;
    EXPECT_FALSE(hostkit::AppendToBuffer(record, "text", 4));
    EXPECT_EQ(record.base, before.base);
    EXPECT_EQ(record.count, 1u);
    EXPECT_EQ(record.host, before.host);
    std::free(quennet::PointerFromWord<void>(record.base));
}

TEST(MemoryTest, AListingHoldsLargeSizesAndRefusesNamesThatFitNoRecord) {
    hostkit::Listing listing;
    const std::string names[] = {"a", std::string(300, 'b'), "c"};
    for (const std::string& name : names) {
        ASSERT_TRUE(listing.Append({name, 0, 0, 0, hostkit::u64{name.size()} << 33}));
    }
    EXPECT_FALSE(listing.Append({std::string(65001, 'x'), 0, 0, 0, 0}));
    std::size_t count = 0;
    for (const hostkit::ListingEntry& entry : listing) {
        ASSERT_LT(count, std::size(names));
        EXPECT_EQ(entry.name, names[count++]);
        EXPECT_EQ(entry.size, hostkit::u64{entry.name.size()} << 33);
    }
    EXPECT_EQ(count, std::size(names));
}

TEST(TextTest, MasksMatchWithoutCaseAndInReasonableTime) {
    struct {
        const char* name;
        const char* masks;
        bool matches;
    } const cases[] = {{"README.TXT", "*.txt", true},
                       {"readme.doc", "*.txt; *.doc", true},
                       {"readme.htm", "*.txt;*.doc", false},
                       {"readme", "*.*", true},
                       {"anything", ".", true},
                       {"anything", ";;", true},
                       {"ab", "?b", true},
                       {"b", "?b", false},
                       {"ab", "?", false},
                       {"", "*", true},
                       {"", "?", false},
                       {"abcabcabd", "a*c*d", true},
                       {"abcabcabd", "a*c*e", false},
                       {"names", "name", false},
                       {"[x]", "[x]", true}};
    for (const auto& one : cases) {
        EXPECT_EQ(MatchesMasks(one.name, one.masks), one.matches) << one.name << " " << one.masks;
    }
    // A mask of many stars takes no more than name times mask steps.
    std::string mask;
    for (int i = 0; i < 2000; ++i) {
        mask += "*a";
    }
    EXPECT_FALSE(MatchesMasks(std::string(20000, 'a') + "b", mask + "c"));
}

TEST(TextTest, ANameBeginsBehindTheLastSeparatorThatIsOne) {
    EXPECT_EQ(hostkit::NameOffset("/pub/file"), 5u);
    EXPECT_EQ(hostkit::NameOffset("C:\\dir\\file"), 7u);
    EXPECT_EQ(hostkit::NameOffset("C:file"), 2u);
    EXPECT_EQ(hostkit::NameOffset("file:with"), 0u);
}

TEST(TextTest, APathIsTidiedAndARootStaysOne) {
    const hostkit::Services services{hostkit::HostOptions{}};
    const auto prepare = reinterpret_cast<quennet::ShellPreparePathFunction>(
        services.Shell()->words[static_cast<unsigned>(quennet::ShellService::preparePath)]);
    for (const auto& [given, tidied] : {std::pair("/a//b/", "/a/b"), {"//", "/"}, {"", ""}}) {
        char path[16];
        std::strcpy(path, given);
        prepare(path);
        EXPECT_STREQ(path, tidied);
    }
}

TEST(TextTest, ALineForATerminalHoldsNoControls) {
    EXPECT_EQ(hostkit::HarmlessLine("a\x1B[31m\r\tb\x7F"), "a?[31m? b?");
    EXPECT_EQ(hostkit::HarmlessLine("gr\xC3\xBC\xC3\x9F\x65 \xC2\x9B"), "gr\xC3\xBC\xC3\x9F\x65 ?");
    EXPECT_EQ(hostkit::HarmlessLine("\xC2"), "\xC2");
}
