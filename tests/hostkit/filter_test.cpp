// The filter dialog, worked from another thread.

#include <cstring>
#include <future>

#include "hostkit/filter_text.h"
#include "hostkit/services_test.h"
#include "hostkit/texts.h"
#include "support/dialog_user.h"

namespace {

using hostkit::FilterText;
using namespace quennet;

enum : int { ok = 99, cancel = 2, masks = 101, smallest, largest, firstDate, lastDate, problem };

i32 EditFilter(void* filter) {
    return Shell<ShellEditFilterFunction>(ShellService::editFilter)(nullptr, filter);
}

class FilterTest : public ServicesTest {
  protected:
    /// Opens the dialog on a thread of its own.
    OpenDialog Open(void* filter) {
        std::promise<DWORD> started;
        result = std::async(std::launch::async, [&] {
            started.set_value(GetCurrentThreadId());
            return EditFilter(filter);
        });
        return WaitForDialogOf(started.get_future().get());
    }

    static void Fill(const OpenDialog& dialog, const FilterText& text) {
        dialog.SetField(masks, text.masks);
        dialog.SetField(smallest, text.smallest);
        dialog.SetField(largest, text.largest);
        dialog.SetField(firstDate, text.firstDate);
        dialog.SetField(lastDate, text.lastDate);
        dialog.SetChecked(hostkit::filterFoldersText, text.takesFolders);
    }

    std::future<i32> result;
};

TEST_F(FilterTest, TheDialogShowsAndChangesARecord) {
    hostkit::FilterRecord filter = {7, 0x8010, 0, 0, 0, 0, "*.c"};
    OpenDialog dialog = Open(&filter);
    EXPECT_EQ(dialog.Field(masks), "*.c");
    EXPECT_EQ(dialog.Field(smallest) + dialog.Field(lastDate), "");
    EXPECT_TRUE(dialog.IsChecked(hostkit::filterFoldersText));
    Fill(dialog, {"*.txt;R&D*", " 2k ", "3 G", "1980-01-01", "2024-02-29", false});
    dialog.Press(ok);
    EXPECT_EQ(result.get(), 1);
    EXPECT_STREQ(filter.masks, "*.txt;R&D*");
    EXPECT_EQ(filter.smallest, 2048u);
    EXPECT_EQ(filter.largest, u64{3} << 30);
    EXPECT_EQ(filter.firstDate, 1 << 5 | 1);
    EXPECT_EQ(filter.lastDate, 44 << 9 | 2 << 5 | 29);
    EXPECT_EQ(filter.hostWord, 7);
    EXPECT_EQ(filter.flags, 0x8000);

    const hostkit::FilterRecord before = filter;
    dialog = Open(&filter);
    EXPECT_EQ(dialog.Field(smallest), "2048");
    EXPECT_EQ(dialog.Field(lastDate), "2024-02-29");
    Fill(dialog, {});
    dialog.Press(cancel);
    EXPECT_EQ(result.get(), 0);
    EXPECT_EQ(filter, before);
}

TEST_F(FilterTest, WhatCannotBeIsRefusedWithAWord) {
    const std::pair<FilterText, hostkit::u32> cases[] = {
        {{"", "x", "", "", ""}, hostkit::filterNoSizeText},
        {{"", "-1", "", "", ""}, hostkit::filterNoSizeText},
        {{"", "k", "", "", ""}, hostkit::filterNoSizeText},
        {{"", "1.5M", "", "", ""}, hostkit::filterNoSizeText},
        {{"", "18446744073709551616", "", "", ""}, hostkit::filterNoSizeText},
        {{"", "", "16777216T", "", ""}, hostkit::filterNoSizeText},
        {{"", "", "0", "", ""}, hostkit::filterLargestIsNoneText},
        {{"", "10", "9", "", ""}, hostkit::filterSizesCrossText},
        {{"", "", "", "2023-02-29", ""}, hostkit::filterNoDateText},
        {{"", "", "", "", "31.5.2024"}, hostkit::filterNoDateText},
        {{"", "", "", "", "1979-12-31"}, hostkit::filterNoDateText},
        {{"", "", "", "2024-+1-01", ""}, hostkit::filterNoDateText},
        {{"", "", "", "2024-05-02", "2024-05-01"}, hostkit::filterDatesCrossText},
    };
    hostkit::FilterRecord& filter = host.GetServices().DefaultFilter();
    const OpenDialog dialog = Open(nullptr);
    for (const auto& [text, word] : cases) {
        Fill(dialog, text);
        dialog.SetField(problem, "");
        SendMessageA(GetDlgItem(dialog.Window(), ok), BM_CLICK, 0, 0);
        EXPECT_EQ(dialog.Field(problem), hostkit::TextOfId(word))
            << text.smallest << text.largest << text.firstDate << text.lastDate;
        ASSERT_TRUE(dialog.IsOpen());
    }
    EXPECT_EQ(filter, hostkit::openFilter);
    Fill(dialog, {std::string(300, '*'), "1", "1", "2024-05-01", "2024-05-01"});
    dialog.Press(ok);
    EXPECT_EQ(result.get(), 1);
    EXPECT_EQ(std::strlen(filter.masks), 259u);
    EXPECT_EQ(filter.largest, 1u);
}

}  // namespace
