// Listings of real servers, and walks through their directories.

#include "interop/interop_test.h"

namespace quennet::interop {
namespace {

namespace fs = std::filesystem;
using hostkit::Connection;

class InteropListing : public InteropTest {};
INSTANTIATE_TEST_SUITE_P(Servers, InteropListing, testing::ValuesIn(AllCases()), CaseName);

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

TEST_P(InteropListing, AHundredThousandEntriesAllArrive) {
    constexpr int count = 100000;
    fs::create_directory(served / "many");
    for (int number = 0; number < count; ++number) {
        WriteBytes(served / "many" / std::to_string(number), "");
    }
    Converse([&](Connection& connection) {
        const hostkit::DirectoryResult changed = connection.ChangeDirectory("many");
        ASSERT_TRUE(changed.Done()) << changed.text;
        const hostkit::ListResult result = connection.List();
        ASSERT_TRUE(result.done) << result.text;
        const auto listed = ByName(result);
        EXPECT_EQ(listed.size(), static_cast<std::size_t>(count));
        for (int number = 0; number < count; ++number) {
            ASSERT_TRUE(listed.contains(std::to_string(number))) << number;
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

TEST_P(InteropDirectories, OthersThanTheAccountAreServedAsTheServerServesThem) {
    for (const std::string user : {"", "nobody-of-that-name"}) {
        hostkit::ConnectRequest request = Request();
        request.user = request.password = user;
        hostkit::RunJob(loop, [&] {
            Connection connection(host, transcript.Options());
            const hostkit::ConnectResult connected = connection.Connect(request);
            EXPECT_EQ(connected.Connected(), user.empty() && server->Anonymous());
            EXPECT_EQ(ByName(connection.List()).contains("step.txt"), connected.Connected());
        });
    }
}

}  // namespace
}  // namespace quennet::interop
