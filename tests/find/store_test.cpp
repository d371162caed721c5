// The store, and what is asked of it: lookups, selection, summaries.

#include "find/find_store.h"

#include "find/find_commands.h"
#include "find/find_controls.h"
#include "find/find_lookup.h"
#include "find/find_summary.h"
#include "find/find_test.h"
#include "hostkit/memory.h"

using namespace quennet;
using testing::ElementsAre;
using testing::Not;

namespace {

class StoreTest : public FindTest {};

bool notified = false;

extern "C" i32 Notify() {
    notified = true;
    return 7;
}

TEST_F(StoreTest, EveryDirectoryIsFoundByItsNumber) {
    constexpr u32 count = 1000;
    for (u32 number = 1; number <= count; ++number) {
        ASSERT_EQ(AppendDirectory(&find, ("/" + std::to_string(number)).c_str()), number);
    }
    for (u32 number = 1; number <= count; ++number) {
        ASSERT_STREQ(DirectoryByNumber(&find, number)->path,
                     ("/" + std::to_string(number)).c_str());
    }
    // Without its marks, which a lack of memory may have cost it, a lookup still arrives.
    find.directoryMarks.count = 3;
    EXPECT_STREQ(DirectoryByNumber(&find, count)->path, "/1000");
    find.directoryMarks.count = 0;
    EXPECT_STREQ(DirectoryByNumber(&find, count)->path, "/1000");
}

TEST_F(StoreTest, ARowIsResolvedToNameAndDirectory) {
    Store("/d", {{"file"}});
    Store("", {{"lost"}});
    find.notify = Notify;
    struct Case {
        i32 row;
        const char* name;
        bool found;
    };
    for (const Case& example :
         {Case{-1, "", false}, Case{0, "file", true}, Case{1, "", true}, Case{2, "", false}}) {
        char name[findNameSize] = "before";
        char directory[findPathSize] = "";
        notified = false;
        EXPECT_EQ(ResolveItem(&find, name, directory, example.row) != nullptr, example.found);
        EXPECT_STREQ(name, example.name) << example.row;
        EXPECT_EQ(notified, example.found);
        EXPECT_STREQ(directory, example.name[0] != 0 ? "/d" : "");
    }
}

TEST_F(StoreTest, ASummaryNamesWhatThereIs) {
    struct Case {
        FindCounters counters;
        u16 head;
        bool stopped;
        const char* text;
    };
    const Case cases[] = {
        {{0, 0, 0}, runSummary, false, ""},
        {{0, 0, 0}, runSummary, true, " - stopped"},
        {{0, 0, 0}, selectionSummary, true, ""},
        {{0, 1, 1}, runSummary, false, "Found: 1 file, 1 byte"},
        {{1, 0, 0}, runSummary, true, "Found: 1 folder - stopped"},
        {{3, 0, 0}, runSummary, false, "Found: 3 folders"},
        {{1, 2, 3}, selectionSummary, true, "Selected: 2 files, 1 folder, 3 bytes"},
        {{0, 2, 0}, runSummary, false, "Found: 2 files"},
    };
    for (const Case& example : cases) {
        char text[findSummarySize];
        BuildFindSummary(text, example.counters, example.head, example.stopped);
        EXPECT_STREQ(text, example.text);
    }
}

TEST_F(StoreTest, TheTypeIsTheSystemsWordOrMadeOfTheExtension) {
    const u16 link = folderBit | attributePermissions | attributeLink;
    Store("/", {{"gone", link},
                {"x.qqzz"},
                {"qqzz."},
                {"x." + std::string(60, 'q')},
                Folder("d"),
                {"page.html"}});
    std::vector<std::string> types;
    for (u32 row = 0; row < RowCount(&find); ++row) {
        FillTypeName(HitAtRow(&find, row));
        types.emplace_back(HitAtRow(&find, row)->type);
    }
    EXPECT_THAT(types, ElementsAre("<LINK>", "Qqzz-File", "File", "Q" + std::string(38, 'q'),
                                   Not("File"), Not("Html-File")));
}

}  // namespace
