// Listings of real servers, and walks through their directories.

#include <sys/stat.h>

#include <ctime>

#include "interop/interop_test.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;
using hostkit::Connection;

class InteropListing : public InteropTest {};
INSTANTIATE_TEST_SUITE_P(Servers, InteropListing, testing::ValuesIn(AllCases()), CaseName);

// A date as the listing's records hold it, of the minute that the server shows in UTC.
unsigned DosDate(const std::tm& time) {
    return static_cast<unsigned>((time.tm_year - 80) << 9 | (time.tm_mon + 1) << 5 | time.tm_mday);
}

unsigned DosTime(const std::tm& time) {
    return static_cast<unsigned>(time.tm_hour << 11 | time.tm_min << 5);
}

TEST_P(InteropListing, NamesSizesAndKindsAreThoseOfTheFolder) {
    const std::map<std::string, std::size_t> files = {
        {"plain.txt", 17},
        {"with blank.txt", 1},
        {"two  blanks in a row", 2},
        {"gr\u00fc\u00dfe \u65e5\u672c.txt", 3},
        {".hidden", 4},
        {"a..b", 5},
        {"...", 6},
        {"100% -%s%n.txt", 7},
        {"empty", 0},
        {"big", 1234567},
    };
    for (const auto& [name, size] : files) {
        WriteBytes(served / name, std::string(size, 'x'));
    }
    fs::create_directory(served / "a folder");
    Converse([&](Connection& connection) {
        const hostkit::ListResult result = connection.List();
        ASSERT_TRUE(result.done) << result.text;
        const auto listed = ByName(result);
        for (const auto& [name, size] : files) {
            ASSERT_TRUE(listed.contains(name)) << name;
            EXPECT_EQ(listed.at(name).size, size) << name;
            EXPECT_FALSE(listed.at(name).directory) << name;
        }
        ASSERT_TRUE(listed.contains("a folder"));
        EXPECT_TRUE(listed.at("a folder").directory);
        EXPECT_EQ(listed.size(), files.size() + 3);  // and "a folder", "sub", "step.txt"
    });
}

TEST_P(InteropListing, DatesAreThoseOfTheFiles) {
    constexpr std::int64_t noonOf19July2001 = 995544000;
    const std::time_t recent = std::time(nullptr) - std::time_t{3} * 24 * 3600;
    WriteBytes(served / "old", "");
    SetFileTime(served / "old", noonOf19July2001);
    WriteBytes(served / "recent", "");
    SetFileTime(served / "recent", recent);
    std::tm shown = {};
    gmtime_r(&recent, &shown);
    Converse([&](Connection& connection) {
        const hostkit::ListResult result = connection.List();
        ASSERT_TRUE(result.done) << result.text;
        const auto listed = ByName(result);
        ASSERT_TRUE(listed.contains("old") && listed.contains("recent"));
        EXPECT_EQ(listed.at("old").date, 21u << 9 | 7u << 5 | 19u);
        EXPECT_EQ(listed.at("old").time, 0u);  // servers show no time of an old file
        EXPECT_EQ(listed.at("recent").date, DosDate(shown));
        EXPECT_EQ(listed.at("recent").time, DosTime(shown));
    });
}

TEST_P(InteropListing, AHundredThousandEntriesAllArrive) {
    constexpr int count = 100000;
    MakeManyFiles(served / "many", count);
    Converse([&](Connection& connection) {
        const hostkit::DirectoryResult changed = connection.ChangeDirectory("many");
        ASSERT_TRUE(changed.Done()) << changed.text;
        const hostkit::ListResult result = connection.List();
        ASSERT_TRUE(result.done) << result.text;
        const auto listed = ByName(result);
        EXPECT_EQ(listed.size(), static_cast<std::size_t>(count));
        for (int number = 1; number <= count; ++number) {
            ASSERT_TRUE(listed.contains(ManyFilesName(number))) << number;
        }
    });
}

class InteropDirectories : public InteropTest {};
INSTANTIATE_TEST_SUITE_P(Servers, InteropDirectories, testing::ValuesIn(PassiveCases()), CaseName);

TEST_P(InteropDirectories, TheSessionGoesWhereItIsToldAndBackUp) {
    const std::string odd = "fold er \u00e4 %d";
    fs::create_directory(served / odd);
    fs::create_directory(served / odd / "deep");
    WriteBytes(served / odd / "deep" / "there", "x");
    Converse([&](Connection& connection) {
        const std::string home = connection.Directory();
        hostkit::DirectoryResult result = connection.ChangeDirectory(odd);
        ASSERT_TRUE(result.Done()) << result.text;
        EXPECT_TRUE(connection.Directory().ends_with("/" + odd)) << connection.Directory();

        result = connection.ChangeDirectory("deep");
        ASSERT_TRUE(result.Done()) << result.text;
        EXPECT_TRUE(ByName(connection.List()).contains("there"));

        ASSERT_TRUE(connection.ChangeDirectory("..").Done());
        ASSERT_TRUE(connection.ChangeDirectory("..").Done());
        EXPECT_EQ(connection.Directory(), home);

        // An absolute path, as the server has named it.
        ASSERT_TRUE(connection.ChangeDirectory(result.directory).Done());
        EXPECT_EQ(connection.Directory(), result.directory);
    });
}

TEST_P(InteropDirectories, ADirectoryThatIsNotThereLeavesTheSessionWhereItIs) {
    Converse([&](Connection& connection) {
        ASSERT_TRUE(connection.ChangeDirectory("sub").Done());
        const std::string before = connection.Directory();
        const hostkit::DirectoryResult result = connection.ChangeDirectory("missing");
        EXPECT_FALSE(result.Done());
        EXPECT_EQ(result.text.substr(0, 3), "550") << result.text;
        EXPECT_EQ(connection.Directory(), before);
        EXPECT_TRUE(ByName(connection.List()).empty());
    });
}

TEST_P(InteropDirectories, AnonymousClientsAreServedWhereTheServerServesThem) {
    if (!server->Anonymous()) {
        return;
    }
    hostkit::ConnectRequest request = Request();
    request.user.clear();
    request.password.clear();
    hostkit::RunJob(loop, [&] {
        Connection connection(host, transcript.Options());
        const hostkit::ConnectResult connected = connection.Connect(request);
        ASSERT_TRUE(connected.Connected()) << connected.text;
        EXPECT_TRUE(ByName(connection.List()).contains("step.txt"));
    });
}

}  // namespace
}  // namespace quennet::interop
