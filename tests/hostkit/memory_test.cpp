// Bounded text, growing buffers and entry lists.

#include "hostkit/memory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "hostkit/listing.h"

using quennet::GrowBuffer;

TEST(MemoryTest, AppendedTextStaysInsideItsBounds) {
    struct Case {
        const char* target;
        const char* text;
        std::size_t size;
        const char* result;
    };
    constexpr Case cases[] = {
        {"", "text", 8, "text"}, {"ab", "cd", 5, "abcd"}, {"ab", "cd", 4, "abc"},
        {"ab", "cd", 3, "ab"},   {"ab", "cd", 2, "ab"},   {"ab", "cd", 0, "ab"},
        {"abc", "", 8, "abc"},   {"", "text", 1, ""},
    };
    for (const Case& one : cases) {
        char buffer[16];
        std::memset(buffer, '#', sizeof(buffer));
        std::strcpy(buffer, one.target);
        hostkit::AppendBounded(buffer, one.text, one.size);
        EXPECT_STREQ(buffer, one.result) << one.target << "+" << one.text << " in " << one.size;
        EXPECT_EQ(buffer[15], '#');
    }
    // Without a terminator inside the bounds nothing is touched.
    char full[] = {'a', 'b', 'c', 'd', '\0'};
    hostkit::AppendBounded(full, "x", 4);
    EXPECT_STREQ(full, "abcd");
}

TEST(MemoryTest, ABufferKeepsWhatWasAppended) {
    GrowBuffer record = {};
    std::string expected;
    for (unsigned i = 0; i < 3000; ++i) {
        const std::string piece(i % 97, static_cast<char>('a' + i % 26));
        ASSERT_TRUE(
            hostkit::AppendToBuffer(record, piece.data(), static_cast<hostkit::u32>(piece.size())));
        expected += piece;
        ASSERT_EQ(record.count, i + 1);
        ASSERT_EQ(record.used, expected.size());
    }
    char* base = quennet::PointerFromWord<char>(record.base);
    EXPECT_EQ(std::string(base, record.used), expected);
    EXPECT_LE(record.host, expected.size() * 3 / 2 + 256);
    std::free(base);
}

TEST(MemoryTest, AFailedAppendLeavesTheRecordAsItWas) {
    GrowBuffer record = {};
    ASSERT_TRUE(hostkit::AppendToBuffer(record, "text", 4));
    const hostkit::HostWord base = record.base;
    const hostkit::HostWord capacity = record.host;
    record.used = static_cast<hostkit::HostWord>(std::numeric_limits<std::ptrdiff_t>::max()) - 1;
    const hostkit::HostWord used = record.used;
    EXPECT_FALSE(hostkit::AppendToBuffer(record, "text", 4));
    EXPECT_EQ(record.base, base);
    EXPECT_EQ(record.count, 1u);
    EXPECT_EQ(record.host, capacity);
    EXPECT_EQ(record.used, used);
    std::free(quennet::PointerFromWord<void>(base));
}

TEST(MemoryTest, AListingHoldsLargeSizesAndRefusesNamesThatFitNoRecord) {
    hostkit::Listing listing;
    const std::string names[] = {"a", std::string(300, 'b'), "c"};
    for (const std::string& name : names) {
        hostkit::ListingEntry entry;
        entry.name = name;
        entry.size = hostkit::u64{name.size()} << 33;
        ASSERT_TRUE(listing.Append(entry));
    }
    hostkit::ListingEntry tooLong;
    const std::string name(65001, 'x');
    tooLong.name = name;
    EXPECT_FALSE(listing.Append(tooLong));
    std::size_t count = 0;
    for (const hostkit::ListingEntry& entry : listing) {
        ASSERT_LT(count, std::size(names));
        EXPECT_EQ(entry.name, names[count++]);
        EXPECT_EQ(entry.size, hostkit::u64{entry.name.size()} << 33);
    }
    EXPECT_EQ(count, std::size(names));
}
