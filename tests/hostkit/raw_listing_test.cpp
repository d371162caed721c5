// Entries of the module's own walk, mended from the text that it walked.

#include "hostkit/raw_listing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "control/session.h"
#include "fuzz/families.h"
#include "listing/walker.h"
#include "support/temp_folder.h"

namespace {

using namespace hostkit;
using quennet::ServerFamily;
using testing::ElementsAre;
using Entry = std::pair<std::string, u64>;

extern "C" void KeepEntry(const char* name, u32, u32, u32 attributes, u32 size, HostWord context) {
    quennet::PointerFromWord<Listing>(context)->Append(
        {name, 0, 0, static_cast<u16>(attributes), size});
}

Listing Walk(const std::string& text, ServerFamily family) {
    alignas(8) static char memory[quennet::sessionOffset + sizeof(quennet::Session)];
    auto* session = reinterpret_cast<quennet::Session*>(memory + quennet::sessionOffset);
    session->serverType.Store(static_cast<u32>(family));
    Listing entries;
    quennet::ParseListing("/pub", session, text.c_str(), KeepEntry,
                          quennet::WordFromPointer(&entries));
    return entries;
}

/// Names and sizes, without the parent's.
std::vector<Entry> EntriesOf(const Listing& listing) {
    std::vector<Entry> entries;
    for (const ListingEntry& entry : listing) {
        entries.emplace_back(entry.name, entry.size);
    }
    entries.erase(entries.begin());
    return entries;
}

std::vector<Entry> Mended(const std::string& text, ServerFamily family = ServerFamily::unixLike) {
    Listing entries = Walk(text, family);
    EXPECT_TRUE(MendEntries(text, entries)) << text;
    return EntriesOf(entries);
}

std::string Line(const std::string& name, const std::string& size = "5") {
    return "-rw-r--r--   1 u g " + size + " Mar  5 12:34 " + name + "\r\n";
}

TEST(RawListingTest, LongNamesComeWholeAndTheirRestsAreNoEntries) {
    std::string name(600, 'n');
    name.replace(180, 50, 50, '\xC3');
    name.replace(256 - 33, 25, "-rw------- 1 u g 9 Jan  1");
    const std::string crafted = name + " 2001 evil";
    const std::string link = "l" + Line(name + " -> " + std::string(300, 'd')).substr(1);
    EXPECT_THAT(Mended("total 9\n" + Line("a") + Line(crafted) + Line("b") + link),
                ElementsAre(Entry("a", 5), Entry(crafted, 5), Entry("b", 5), Entry(name, 5)));
    const std::string dos = "01-15-02  03:45PM       <DIR>          ";
    EXPECT_THAT(Mended(dos + "my " + name, ServerFamily::windowsNt),
                ElementsAre(Entry("my " + name, 0)));
}

TEST(RawListingTest, SizesAreTrueAndNamesHaveTheirBlanks) {
    EXPECT_THAT(
        Mended(Line("a", "5368709120") + Line("  b", "4294967296") + Line("c  ", "-7")),
        ElementsAre(Entry("a", 5368709120), Entry("  b", 4294967296), Entry("c  ", 4294967289)));
    EXPECT_THAT(Mended(Line("a  -> b") + "l" + Line("l -> b").substr(1)),
                ElementsAre(Entry("a  -> b", 5), Entry("l", 5)));
    EXPECT_THAT(Mended("01-15-02  03:45PM  5368709120 a"), ElementsAre(Entry("a", 5368709120)));
    // Blanks that all lines have are no part of a name.
    EXPECT_THAT(Mended(Line("  a ") + Line("  b ") + Line("  c ")),
                ElementsAre(Entry("a", 5), Entry("b", 5), Entry("c", 5)));
}

/// Names, and sizes as the module has them.
bool AreEqual(const Listing& one, const Listing& other) {
    return std::ranges::equal(EntriesOf(one), EntriesOf(other), [](auto& left, auto& right) {
        return left.first == right.first &&
               static_cast<u32>(left.second) == static_cast<u32>(right.second);
    });
}

TEST(RawListingTest, OnShortLinesTheEntriesAreThoseOfTheModule) {
    namespace fs = std::filesystem;
    std::size_t listings = 0;
    for (const char* seeds : {"walker", "line"}) {
        for (const auto& seed : fs::directory_iterator(fs::path(CORPUS) / seeds)) {
            const std::string text = ReadWhole(seed.path()).substr(2);
            for (const ServerFamily family : fuzzedFamilies) {
                Listing entries = Walk(text, family);
                const bool isMended = MendEntries(text, entries);
                const bool isMvs =
                    family == ServerFamily::mvsDatasets || family == ServerFamily::mvsMembers;
                EXPECT_TRUE(isMended || isMvs) << seed.path();
                const std::string name = seed.path().filename();
                EXPECT_TRUE(AreEqual(entries, Walk(text, family)) || name == "long_line") << name;
                ++listings;
            }
        }
    }
    EXPECT_GT(listings, 300U);
}

}  // namespace
