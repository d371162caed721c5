#include <gtest/gtest.h>

#include <sstream>

#include "failure.h"
#include "find_omissions.h"
#include "listing_output.h"
#include "progress_bar.h"
#include "terminal_text.h"

namespace cli {
namespace {

TEST(TerminalTextTest, NothingThatATerminalActsOnIsLeft) {
    struct Row {
        std::string text;
        std::string harmless;
        std::string porcelain;
    };
    const Row table[] = {
        {"plain name", "plain name", "plain name"},
        {"\x1B[2J\x7F", "\\x1B[2J\\x7F", "\\x1B[2J\\x7F"},
        {"a\tb\nc\\d\r", "a\\x09b\\x0Ac\\d\\x0D", "a\\tb\\nc\\\\d\\x0D"},
        {"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
         "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
        // C1 as a byte, in UTF-8, and hidden behind a sequence that is cut or overlong.
        {"\x9B"
         "2J",
         "\\x9B2J", "\\x9B2J"},
        {"\xC2\x9B"
         "2J",
         "\\xC2\\x9B2J", "\\xC2\\x9B2J"},
        {"\xE2\x82\x1B[", "\xE2\\x82\\x1B[", "\xE2\\x82\\x1B["},
        {"\xE0\x82\x9B", "\xE0\\x82\\x9B", "\xE0\\x82\\x9B"},
        {"\xED\xA0\x80", "\xED\xA0\\x80", "\xED\xA0\\x80"},
        {"B\xE4r", "B\xE4r", "B\xE4r"},
        {std::string("a\0b", 3), "a\\x00b", "a\\x00b"},
    };
    for (const Row& row : table) {
        EXPECT_EQ(HarmlessText(row.text), row.harmless);
        EXPECT_EQ(PorcelainText(row.text), row.porcelain);
    }
}

TEST(ListingFormatTest, EachFormSaysWhatIsKnown) {
    const hostkit::ListingEntry folder = {"pub", 0x2AF3, 0x72C0, 0x85B7, 512};
    const hostkit::ListingEntry link = {"bin", 0, 0, 0xA7F7, 7};
    const hostkit::ListingEntry member = {"MEMBER1 ", 0x2AE0, 0, 0, 4294967295};  // no such day

    Options options;
    EXPECT_EQ(ListingFormat(options, true).Line(folder), "\x1B[1;34mpub\x1B[0m\n");
    options.longForm = true;
    ListingFormat longForm(options, false);
    for (const auto& entry : {folder, link, member}) {
        longForm.Measure(entry);
    }
    EXPECT_EQ(longForm.Line(folder), "drwxr-xr-x         512  2001-07-19 14:22  pub\n");
    EXPECT_EQ(longForm.Line(link), "lrwxrwxrwx           7  -                 bin\n");
    options.porcelain = true;
    EXPECT_EQ(ListingFormat(options, true).Line(member), "0000\t4294967295\t-\tMEMBER1\n");
}

TEST(ProgressTextTest, FitsTheTerminalAndKeepsTheNumbersRight) {
    ProgressState state = {"file.bin", 512 * 1024, 256 * 1024, 1024 * 1024, 2};
    EXPECT_EQ(ProgressText(state, 79),
              "file.bin   50% [=============>             ]  512.0 KiB  128.0 KiB/s  0:04 left");
    EXPECT_EQ(ProgressText(state, 50), "file.bin   50%  512.0 KiB  128.0 KiB/s  0:04 left");
    state.total = 0;
    EXPECT_EQ(ProgressText(state, 79), "file.bin  512.0 KiB  128.0 KiB/s");

    // More than was listed, before the first byte, a name without end, sizes without end.
    EXPECT_EQ(ProgressText({"f", 2000, 2000, 1000, 1}, 79), "f  2.0 KiB  2.0 KiB/s");
    EXPECT_EQ(ProgressText({"f", 0, 0, 1000, 0}, 40), "f    0% [>                 ]  0 B  0 B/s");
    const hostkit::u64 largest = ~hostkit::u64{0};
    for (unsigned width = 0; width < 200; ++width) {
        const std::string name = std::string(50, 'n') + "\xE2\x82\xAC";
        EXPECT_LE(ProgressText({name, largest / 2, 1, largest, 1e9}, width).size(), width);
        EXPECT_LE(ProgressText({name, largest, largest, largest, 1e-9}, width).size(), width);
    }
}

TEST(OmissionsTest, ListingsThatFailedAreCountedOnceTheDirectoryIsLeft) {
    const std::string enter = "CWD a\n250 ok\nPWD\n257 \"/a\"\nPASV\n227 ok\n";
    const std::string list = "LIST\n150 here\n";
    const std::string size = "597 bytes received in 0.00 seconds, (582.13 KB/s)\n";
    const std::string lost = "Connection reset\nConnecting to x\n220 hi\n230 in\nCWD /\n250 ok\n";
    struct Row {
        std::string lines;
        const char* words;
        bool unanswered;
    };
    const Row table[] = {
        {enter + list + size + "226-done\n226 done\n" + enter + list + "250 ok\n", "", false},
        {enter + "LIST\n550 no\n" + enter + "LIST\n450 nor this\n",
         "2 directories could not be listed: 550 no", false},
        {enter + list + size + "426 cut\nPASV\n227 ok\n" + list + "226 done\n", "", false},
        {enter + "LIST\n" + lost + "425 no\nPASV\n227 ok\n" + list + "226 done\n", "", false},
        {enter + list + lost + "425 no\n",
         "1 directory could not be listed: the connection was lost", false},
        {enter + list + size + "CWD b\n250 ok\n", "1 directory could not be listed: no reply",
         false},
        {enter + list, "1 directory could not be listed: no reply", false},
        {"CWD a\nCWD b\n", "", true},
        {"CWD a\n" + lost + "250 ok\n", "", false},
    };
    for (const Row& row : table) {
        Omissions omissions;
        std::istringstream stream(row.lines);
        for (std::string line; std::getline(stream, line);) {
            omissions.TakeLine(line);
        }
        std::string words;
        try {
            omissions.Check();
        } catch (const Failure& failure) {
            words = failure.what();
        }
        EXPECT_EQ(words, row.words) << row.lines;
        EXPECT_EQ(omissions.AnyUnanswered(), row.unanswered) << row.lines;
    }
}

}  // namespace
}  // namespace cli
