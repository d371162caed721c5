#include "netrc.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace cli
