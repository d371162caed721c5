#include "netrc.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/temp_folder.h"

namespace cli {
namespace {

constexpr char file[] = R"(# machine host login anna password commented
machine other.host login anna password of-other
machine Host
    login bert
    password of-bert
    account accounting
machine host login anna password "of \"anna\" \\ all"
macdef init
machine host login carl password in-a-macro

machine host login dora   # no password here
machine host password for-anyone
default login anna password of-default
default password for-the-rest
)";

TEST(NetrcTest, TheFirstEntryOfHostAndUserCounts) {
    struct Row {
        const char* host;
        const char* user;
        std::optional<std::string> password;
    };
    const Row table[] = {
        {"other.host", "anna", "of-other"}, {"OTHER.HOST", "anna", "of-other"},
        {"host", "bert", "of-bert"},        {"host", "anna", "of \"anna\" \\ all"},
        {"host", "carl", "for-anyone"},     {"host", "dora", "for-anyone"},
        {"third", "anna", "of-default"},    {"third", "bert", "for-the-rest"},
    };
    for (const Row& row : table) {
        EXPECT_EQ(FindNetrcPassword(file, row.host, row.user), row.password)
            << row.host << " " << row.user;
    }
}

TEST(NetrcTest, BrokenTextGivesNothingAndEnds) {
    for (const char* text : {"", "machine", "machine host login anna password",
                             "machine host login anna macdef x\nmachine host password y",
                             "machine host login \"anna", "password x", "machine host account"}) {
        EXPECT_EQ(FindNetrcPassword(text, "host", "anna"), std::nullopt) << text;
    }
}

TEST(NetrcTest, APasswordThatOthersCanReadIsWarnedOf) {
    const TempFolder folder;
    int warnings = 0;
    const auto read = [&](const char* user, mode_t mode) {
        folder.Write("netrc", "machine host login anna password p");
        chmod((folder / "netrc").c_str(), mode);
        return ReadNetrcPassword(folder / "netrc", "host", user,
                                 [&](const std::string&) { ++warnings; });
    };
    EXPECT_EQ(read("anna", 0600), "p");
    EXPECT_EQ(read("bert", 0644), std::nullopt);
    EXPECT_EQ(warnings, 0);
    EXPECT_EQ(read("anna", 0640), "p");
    EXPECT_EQ(warnings, 1);
    EXPECT_EQ(ReadNetrcPassword(folder / "missing", "host", "anna", {}), std::nullopt);
}

}  // namespace
}  // namespace cli
