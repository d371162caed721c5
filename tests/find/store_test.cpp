// The store, and what is asked of it: lookups, selection, summaries, places of controls.

#include "find/find_store.h"

#include "find/find_commands.h"
#include "find/find_controls.h"
#include "find/find_layout.h"
#include "find/find_lookup.h"
#include "find/find_summary.h"
#include "find/find_test.h"
#include "hostkit/memory.h"

using namespace quennet;
using testing::ElementsAre;

namespace {

class StoreTest : public FindTest {};

bool notified = false;

extern "C" i32 Notify() {
    notified = true;
    return 7;
}

TEST_F(StoreTest, AHitTakesItsNameAnd72Bytes) {
    Store("/d", {{"name.txt"}, {"x"}});
    EXPECT_EQ(find.records.used, 72u + 8 + 72 + 1);
    EXPECT_EQ(find.index.used, 8u);
    EXPECT_EQ(find.directories.used, 5u);
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

TEST_F(StoreTest, ARunUsesTheMemoryOfTheLastOne) {
    Store("/d", {{"a"}, {"b"}});
    UpdateRecordTable(&find);
    ASSERT_NE(find.recordTable, nullptr);
    EXPECT_EQ(find.hits.Load(), 2u);
    const HostWord base = find.records.base;
    ResetStore(&find);
    EXPECT_EQ(find.recordTable, nullptr);
    EXPECT_FALSE(find.hits.IsSet());
    EXPECT_EQ(find.records.base, base);
    EXPECT_EQ(RowCount(&find), 0u);
    Store("/e", {{"c"}});
    EXPECT_EQ(find.records.base, base);
    EXPECT_THAT(Hits(), ElementsAre("/e: c"));
}

TEST_F(StoreTest, TheRecordTableHoldsEachRecordInOrder) {
    Store("/d", {{"first"}, {"second"}, {"third"}});
    ASSERT_TRUE(BuildRecordTable(&find));
    for (u32 row = 0; row < 3; ++row) {
        EXPECT_EQ(find.recordTable[row], HitAtRow(&find, row));
    }
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

TEST_F(StoreTest, TheSelectionIsCountedAndKeptInTheRecords) {
    Store("/d", {{"a", 0, 5}, Folder("b"), {"c", 0, 7}, {"d", 0, 9}});
    selectedRows = {0, 1, 2};
    focusedRow = 2;
    ReadSelection(&find);
    EXPECT_EQ(find.selected.files, 2u);
    EXPECT_EQ(find.selected.folders, 1u);
    EXPECT_EQ(find.selected.bytes, 12u);
    const auto states = [this] {
        std::string text;
        for (u32 row = 0; row < RowCount(&find); ++row) {
            text += static_cast<char>('0' + HitAtRow(&find, row)->listState);
        }
        return text;
    };
    EXPECT_EQ(states(), "2230");
    selectedRows = {3};
    focusedRow = 0;
    ReadSelection(&find);
    EXPECT_EQ(states(), "1002") << "and what was selected before is not any more";
    EXPECT_EQ(find.selected.bytes, 9u);
    selectedRows = {0, 1, 2, 3};
    UpdateRecordTable(&find);
    EXPECT_EQ(states(), "3222");
    EXPECT_EQ(find.selected.bytes, 9u) << "counted by the window alone";
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
    struct Case {
        Entry entry;
        const char* type;
    };
    for (const Case& example :
         {Case{{"gone", link}, "<LINK>"}, Case{{"x.qqzz"}, "Qqzz-File"}, Case{{"qqzz."}, "File"}}) {
        ResetStore(&find);
        Store("/", {example.entry});
        FindRecord* record = HitAtRow(&find, 0);
        FillTypeName(record);
        EXPECT_STREQ(record->type, example.type) << example.entry.name;
    }
    ResetStore(&find);
    Store("/", {{"x." + std::string(60, 'q')}, Folder("d"), {"page.html"}});
    FillTypeName(HitAtRow(&find, 0));
    EXPECT_STREQ(HitAtRow(&find, 0)->type, ("Q" + std::string(38, 'q')).c_str());
    FillTypeName(HitAtRow(&find, 1));
    EXPECT_STRNE(HitAtRow(&find, 1)->type, "File");
    FillTypeName(HitAtRow(&find, 2));
    EXPECT_STRNE(HitAtRow(&find, 2)->type, "Html-File");
}

TEST_F(StoreTest, ASeparatorIsAddedWhereThereIsNone) {
    for (const auto& [text, joined] :
         {std::pair{"", ""}, {"/", "/"}, {"a\\", "a\\"}, {"/a", "/a/"}}) {
        char buffer[8] = "";
        StoreText(buffer, sizeof buffer, text);
        AppendSeparator(buffer, '/');
        EXPECT_STREQ(buffer, joined);
    }
}

TEST(FindLayoutTest, ControlsStandInRowsOfTheMaskBoxsHeight) {
    const FindLayout layout = PlaceFindControls(30, 401, 300, 0);
    const ControlPlace places[] = {
        {findMaskLabel, 7, 40, 96, 16},      {findMaskBox, 103, 37, 293, 128},
        {findRecurseBox, 10, 65, 188, 16},   {findUseFilterBox, 200, 79, 172, 16},
        {findFilterButton, 376, 75, 20, 22}, {findLongListBox, 10, 93, 188, 16},
        {findList, 0, 121, 401, 209},
    };
    for (int i = 0; i < findPlaces; ++i) {
        const ControlPlace& is = layout.places[i];
        const ControlPlace& be = places[i];
        EXPECT_THAT((std::array{is.control, is.x, is.y, is.width, is.height}),
                    ElementsAre(be.control, be.x, be.y, be.width, be.height));
    }
    EXPECT_EQ(layout.minimumWidth, 224);
    EXPECT_EQ(layout.minimumHeight, 249);
    EXPECT_EQ(PlaceFindControls(0, 401, 300, 20).minimumHeight, 309);
}

}  // namespace
