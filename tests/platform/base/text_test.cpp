#include <windows.h>

#include <gtest/gtest.h>

namespace {

TEST(TextTest, UpperCaseFollowsLatin1AndLeavesWhatHasNone) {
    char text[] = "aZ1 \xE4\xFE\xF7\xDF\xFF";
    EXPECT_STREQ(CharUpperA(text), "AZ1 \xC4\xDE\xF7\xDF\xFF");
    const auto character = reinterpret_cast<LPSTR>(uintptr_t{0xE9});
    EXPECT_EQ(reinterpret_cast<uintptr_t>(CharUpperA(character)), uintptr_t{0xC9});
}

TEST(TextTest, TextsCompareWithoutCase) {
    EXPECT_EQ(lstrcmpiA("M\xFCller", "m\xDCLLER"), 0);
    EXPECT_LT(lstrcmpiA("abc", "ABCD"), 0);
    EXPECT_GT(lstrcmpiA("\xE9", "z"), 0);
}

}  // namespace
