#include "listing/line_parser.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace quennet {
namespace {

constexpr SYSTEMTIME today = {2002, 7, 1, 15, 0, 0, 0, 0};

constexpr u16 Date(u32 year, u32 month, u32 day) {
    return static_cast<u16>((year - 1980) << 9 | month << 5 | day);
}

constexpr u16 Time(u32 hour, u32 minute) {
    return static_cast<u16>(hour << 11 | minute << 5);
}

struct Entry {
    std::string name;
    u32 size = 0;
    u16 date = 0;
    u16 time = 0;
    u16 attributes = 0;
    std::string mark = {};  // the line's first bytes after the call; empty where they don't matter

    bool operator==(const Entry&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Entry& entry) {
    return out << "«" << entry.name << "» size " << entry.size << std::hex << " date 0x"
               << entry.date << " time 0x" << entry.time << " attributes 0x" << entry.attributes
               << std::dec << " mark «" << entry.mark << "»";
}

// The line stands in a block of its very length, so that a step beside it is seen.
Entry Read(const std::string& line, ServerFamily family, bool withMark = false,
           u16 attributesBefore = 0) {
    std::vector<char> buffer(line.c_str(), line.c_str() + line.size() + 1);
    Entry entry = {{}, 1, 1, 1, attributesBefore, {}};
    const char* name = ParseListLineOn(today, buffer.data(), &entry.size, &entry.date, &entry.time,
                                       &entry.attributes, family);
    EXPECT_GE(name, buffer.data());
    EXPECT_LT(name, buffer.data() + buffer.size());
    entry.name = name;
    if (withMark) {
        entry.mark = buffer.data();
    }
    return entry;
}

struct Case {
    std::string line;
    Entry expected;
    ServerFamily family = ServerFamily::unixLike;
};

void Check(const std::vector<Case>& cases) {
    for (const Case& one : cases) {
        EXPECT_EQ(Read(one.line, one.family, !one.expected.mark.empty()), one.expected)
            << "in «" << one.line << "»";
    }
}

TEST(LineParserTest, ReadsUnixLines) {
    Check({
        {"-rw-r--r--   1 ftp      ftp         1024 Mar  5 12:34 readme.txt",
         {"readme.txt", 1024, 0x2C65, 0x6440, 0x8123}},
        {"drwxr-xr-x   2 ftp      ftp          512 Dec 10 2001 pub",
         {"pub", 512, Date(2001, 12, 10), 0, 0x85A7}},
        {"-rw-r--r--   1 ftp      ftp          512 Dec 10 12:00 new file.txt",
         {"new file.txt", 512, Date(2001, 12, 10), Time(12, 0), 0x8123}},
        // Two columns fewer still fit; a ninth column that is no name shifts the others.
        {"-rw-r--r-- ftp 7 Jan 2 2001 a", {"a", 7, Date(2001, 1, 2), 0, 0x8123}},
        {"-rwxr-xr-x 1 owner 1024 Mar 5 12:34 a b", {"b", 0, Date(2002, 1, 12), 0, 0x85A7}},
        {"-rw-r--r-- 1 u g 100 Jan 1 2001 a:b", {"a:b", 100, Date(2001, 1, 1), 0, 0x8123}},
        {"-rw-r--r--\t1\tu\tg\t100\tJan\t1\t2001\ta  b\t c \t\r\n",
         {"a  b\t c", 100, Date(2001, 1, 1), 0, 0x8123}},
        {"-rw-r--r-- 1 u g 100 Jan 1 2001 ../../x", {"../../x", 100, Date(2001, 1, 1), 0, 0x8123}},
    });
}

TEST(LineParserTest, CompletesTheYearsOfUnixLines) {
    const auto dateOf = [](const std::string& columns) {
        return Read("-rw-r--r-- 1 u g 100 " + columns + " a", ServerFamily::unknown).date;
    };
    // With a clock time: the last such day up to today.
    EXPECT_EQ(dateOf("Jul 15 23:59"), Date(2002, 7, 15));
    EXPECT_EQ(dateOf("Jul 16 00:00"), Date(2001, 7, 16));
    EXPECT_EQ(dateOf("Jun 30 12:00"), Date(2002, 6, 30));
    EXPECT_EQ(dateOf("Aug 1 12:00"), Date(2001, 8, 1));
    // With a year: as it stands, and in this century below 100.
    EXPECT_EQ(dateOf("Dec 31 2107"), Date(2107, 12, 31));
    EXPECT_EQ(dateOf("Dez 1 99"), Date(2099, 12, 1));
    EXPECT_EQ(dateOf("Dec 1 0"), Date(2002, 12, 1));
    EXPECT_EQ(dateOf("Dec 1 -5"), Date(2002, 12, 1));
    EXPECT_EQ(dateOf("Dec 1 4294969297"), Date(2001, 12, 1)) << "numbers wrap at 32 bits";
}

TEST(LineParserTest, KnowsEnglishAndGermanMonthsInAnyCase) {
    const char* const months[] = {"Jan January xyz Mrz M\xC4r Ma",
                                  "feb",
                                  "MAR M\xE4r m\xE4Rz",
                                  "Apr",
                                  "May Mai",
                                  "Jun",
                                  "Jul",
                                  "aUG",
                                  "Sept",
                                  "Oct Okt",
                                  "Nov",
                                  "Dec Dez"};
    for (u32 month = 1; month <= std::size(months); ++month) {
        std::istringstream names(months[month - 1]);
        for (std::string name; names >> name;) {
            const std::string line = "-rw-r--r-- 1 u g 100 " + name + " 2 2001 a";
            EXPECT_EQ(Read(line, ServerFamily::unixLike).date, Date(2001, month, 2)) << name;
        }
    }
}

TEST(LineParserTest, DatesThatTheCalendarDoesNotHaveAreZero) {
    for (const char* columns :
         {"Feb 29 2001", "Jun 31 2001", "Jan 0 2001", "Jan -1 2001", "Jan 32 2001", "Jan 257 2001",
          "Jan 1 1979", "Jan 1 2108", "Jan 1 24:00", "Jan 1 12:60", "Jan 1 -1:00", "Jan x 2001"}) {
        EXPECT_EQ(Read(std::string("-rw-r--r-- 1 u g 5 ") + columns + " a", ServerFamily::unixLike),
                  (Entry{"a", 5, 0, 0, 0x8123}))
            << columns;
    }
    EXPECT_EQ(Read("-rw-r--r-- 1 u g 5 Feb 29 2000 a", ServerFamily::unixLike).date,
              Date(2000, 2, 29));
}

TEST(LineParserTest, PermissionStringsBecomeAttributes) {
    const auto attributesOf = [](const std::string& permissions) {
        return Read(permissions + " 1 u g 100 Jan 1 2001 a", ServerFamily::unixLike, false, 0x40)
            .attributes;
    };
    EXPECT_EQ(attributesOf("----------"), 0x8000);
    EXPECT_EQ(attributesOf("lrwxrwxrwx"), 0xA7E7);
    EXPECT_EQ(attributesOf("?r--------"), 0x8001);
    EXPECT_EQ(attributesOf("--w-------"), 0x8002);
    EXPECT_EQ(attributesOf("----r-----"), 0x8020);
    EXPECT_EQ(attributesOf("-----w----"), 0x8040);
    EXPECT_EQ(attributesOf("-------r--"), 0x8100);
    EXPECT_EQ(attributesOf("--------w-"), 0x8200);
    EXPECT_EQ(attributesOf("---s--S--t"), 0x8484);
    EXPECT_EQ(attributesOf("-rw-r--r--+extra"), 0x8123);
    EXPECT_EQ(attributesOf("-rwt------x"), 0x8007);
    // Whatever is no permission string leaves the word alone.
    for (const char* other :
         {"drwxrwxrwT", "-wr-------", "-rw-r--r-", "-rw-r--r-\x80", " -rw-r--r--"}) {
        EXPECT_EQ(attributesOf(other), 0x40) << other;
    }
}

TEST(LineParserTest, SizesWrapAtFourGigabytes) {
    const auto sizeOf = [](const std::string& size) {
        return Read("-rw-r--r-- 1 u g " + size + " Jan 1 2001 a", ServerFamily::unixLike).size;
    };
    EXPECT_EQ(sizeOf("4294967295"), 4294967295u);
    EXPECT_EQ(sizeOf("4294967301"), 5u);
    EXPECT_EQ(sizeOf("-1"), 4294967295u);
    EXPECT_EQ(sizeOf("+12,345"), 12u);
    EXPECT_EQ(sizeOf("\v\f3"), 3u);
    EXPECT_EQ(sizeOf("--3"), 0u);
    EXPECT_EQ(sizeOf("99999999999999999999999999999999999999x"), 0xFFFFFFFFu);
}

TEST(LineParserTest, JoinsALinkToItsTarget) {
    const auto nameOf = [](const std::string& name) {
        return Read("lrwxrwxrwx 1 root root 7 Jan  1 2001 " + name, ServerFamily::unixLike).name;
    };
    EXPECT_EQ(nameOf("bin -> usr/bin"), "bin->usr/bin");
    EXPECT_EQ(nameOf("bin -> usr/my bin"), "bin->usr/mybin");
    EXPECT_EQ(nameOf("my bin  -> usr"), "my bin ->usr") << "only the last blank goes";
    EXPECT_EQ(nameOf("b\xE4r -> x"), "b\xE4r->x");
    EXPECT_EQ(nameOf("a ->\tx y"), "a->\txy") << "a tab stays";
    // Bytes of 0x80 and more end the way back, but nothing before the arrow had a blank to lose.
    EXPECT_EQ(Read(" ->x", ServerFamily::unixLike).name, "->x");
    // What lies more than 511 bytes behind the start of the name is lost.
    const std::string longTarget(1000, 't');
    EXPECT_EQ(nameOf("bin -> " + longTarget), "bin->" + longTarget.substr(0, 511 - 7));
}

TEST(LineParserTest, ReadsDosLines) {
    const ServerFamily nt = ServerFamily::windowsNt;
    Check({
        {"01-15-02  03:45PM       <DIR>          Program Files",
         {"Program Files", 0, Date(2002, 1, 15), Time(15, 45), 0, "drw"},
         nt},
        {"01-15-02  03:45PM       <dir>          a",
         {"a", 0, Date(2002, 1, 15), Time(15, 45), 0, "drw"}},
        {"01-15-02  12:05AM               123456 a.txt",
         {"a.txt", 123456, Date(2002, 1, 15), Time(12, 5), 0, "-rw"},
         nt},
        {"01-15-03  01:00PM               123456 a.txt",
         {"a.txt", 123456, Date(2002, 1, 15), Time(13, 0), 0, "-rw"},
         nt},
        {"12-15-03  01:00PM 5 a", {"a", 5, Date(2001, 12, 15), Time(13, 0), 0, "-rw"}},
        // Without a clock time the future is as good as any day.
        {"01-15-03  0100 5 a", {"a", 5, Date(2003, 1, 15), 0, 0, "-rw"}},
        // Other families, and names that begin too early, are split at every blank.
        {"01-15-02  03:45PM       <DIR>          Program Files",
         {"Files", 0, Date(2002, 1, 15), 0, 0, "-rw"}},
        {"01-15-02  03:45PM      <DIR>          Program Files",
         {"Files", 0, Date(2002, 1, 15), 0, 0, "-rw"},
         nt},
        {"01-15-02  03:45PM       <DIR>          a b c d", {"d", 0, 0, 0, 0, "01-15-02"}},
        // The mark lies over columns that are read after it.
        {"- 1:30PM 5 x", {"x", 5, 0, 0, 0, "-rw"}},
        {" -5 - 7 x", {"x", 7, Date(2002, 1, 5), 0, 0, "-rw"}},
    });
}

TEST(LineParserTest, ReadsOs2Lines) {
    const ServerFamily os2 = ServerFamily::os2;
    Check({
        {"                0           DIR   01-15-02   12:34  my dir",
         {"my dir", 0, Date(2002, 1, 15), Time(12, 34), 0, "drw"},
         os2},
        {"             1234      A          01-15-02   12:34  my file.txt",
         {"my file.txt", 1234, Date(2002, 1, 15), Time(12, 34), 0x20, "-rw"},
         os2},
        {" 1234 RAS 01-15-02 12:34 a", {"a", 1234, Date(2002, 1, 15), Time(12, 34), 0x25, "-rw"}},
        {" 1234 ras 01-15-02 12:34 a", {"a", 1234, Date(2002, 1, 15), Time(12, 34), 0, "-rw"}},
        {" 1234 x R 01-15-02 12:34 a", {"a", 1234, Date(2002, 1, 15), Time(12, 34), 1, "-rw"}},
        {" 1234 01-15-02 12:34 A", {"A", 1234, Date(2002, 1, 15), Time(12, 34), 0, "-rw"}},
        {" 0 Directory 01-15-02 12:34 a", {"a", 0, Date(2002, 1, 15), Time(12, 34), 0, "drw"}},
        {" 0 A 01-15-02 12:34 ..", {"..", 0, Date(2002, 1, 15), Time(12, 34), 0, "drw"}},
        // Later than today is no matter here.
        {" 17 A 12-31-02 12:34 a", {"a", 17, Date(2002, 12, 31), Time(12, 34), 0x20, "-rw"}},
        {" 17 A 12-31-02 1234 a", {"a", 17, Date(2002, 12, 31), 0, 0x20, "-rw"}},
        // The mark's NUL stands on the letter before that is read.
        {" 7 A 12-31-02 12:34 a", {"a", 7, Date(2002, 12, 31), Time(12, 34), 0, "-rw"}},
    });
}

TEST(LineParserTest, ShortLinesGiveTheirFirstWord) {
    Check({
        {"", {""}},
        {" ", {""}},
        {"   ", {""}},
        {"a", {"a"}},
        {"a  ", {"a"}},
        {"-abc 12", {"-abc"}},
        {" -abc 12", {""}},
        {"total 123 4", {"total"}},
        {std::string(100000, ' '), {""}},
        {"a" + std::string(100000, ' ') + "b", {"a"}},
        {std::string(10000, 'x'), {std::string(10000, 'x')}},
        {"\x01\x1B\x7F\xFF", {"\x01\x1B\x7F\xFF"}},
    });
}

TEST(LineParserTest, ReadsDashDates) {
    struct {
        const char* token;
        u32 month, day, year;
    } const cases[] = {
        {"01-15-02", 1, 15, 2002}, {"12-31-99", 12, 31, 2099}, {"1-1-102", 1, 1, 2002},
        {"1-1-207", 1, 1, 2107},   {"1-1-208", 1, 1, 208},     {"13-32-0", 4, 9, 2003},
        {"0-0--1", 4, 9, 2003},    {"7-8", 7, 8, 2003},
    };
    for (const auto& one : cases) {
        SYSTEMTIME calendar = {2003, 4, 0, 9, 0, 0, 0, 0};
        ParseDashDate(one.token, &calendar);
        EXPECT_EQ(calendar.wMonth, one.month) << one.token;
        EXPECT_EQ(calendar.wDay, one.day) << one.token;
        EXPECT_EQ(calendar.wYear, one.year) << one.token;
    }
}

std::vector<std::string> Lines(const char* text, u32 limit) {
    std::vector<std::string> lines;
    while (*text != '\0') {
        std::vector<char> buffer(limit + 1, 'x');
        NextListLine(&text, buffer.data(), limit);
        lines.emplace_back(buffer.data());
    }
    return lines;
}

TEST(LineParserTest, CutsAListingIntoLines) {
    using Texts = std::vector<std::string>;
    EXPECT_EQ(Lines("one\r\ntwo\n\n\r\rthree", 256), (Texts{"one", "two", "three"}));
    EXPECT_EQ(Lines("\r\none\n", 256), (Texts{"", "one"}));
    EXPECT_EQ(Lines("abcdef\ngh\n", 3), (Texts{"abc", "def", "gh"}));
    EXPECT_EQ(Lines("abc", 0x10).size(), 1u);
    const Texts pieces = Lines(std::string(10000, 'x').c_str(), 256);
    EXPECT_EQ(pieces.size(), 40u);
    EXPECT_EQ(pieces.back().size(), 10000u - 39 * 256);
    const char* end = "";
    char buffer[2] = "x";
    NextListLine(&end, buffer, 1);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(*end, '\0');
}

}  // namespace
}  // namespace quennet
