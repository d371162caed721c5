#include "local_target.h"
#include "hostkit/existing_files.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "failure.h"
#include "support/temp_folder.h"

namespace cli {
namespace {

Url At(const std::string& path) {
    Url url;
    url.host = "host";
    url.path = path;
    return url;
}

TEST(LocalTargetTest, ANameOfTheUrlStaysInTheFolder) {
    for (const char* name : {"file", "-rf", " blank", "...", "..a", "a\\b", "~"}) {
        EXPECT_TRUE(hostkit::IsSafeName(name)) << name;
    }
    for (const char* name : {"", ".", "..", "/", "a/b", "../x"}) {
        EXPECT_FALSE(hostkit::IsSafeName(name)) << name;
    }
    EXPECT_FALSE(hostkit::IsSafeName(std::string("a\0b", 3)));
    for (const char* path : {"", "a/", "a/..", "..", ".", "/.."}) {
        EXPECT_THROW(ChooseTarget(std::nullopt, At(path)), Failure) << path;
        EXPECT_THROW(ChooseTarget("./", At(path)), Failure) << path;
    }
    EXPECT_EQ(ChooseTarget(std::nullopt, At("a/../b/-")).path, "-");
    EXPECT_EQ(ChooseTarget(std::nullopt, At("/../../etc/x")).path, "x");
}

TEST(LocalTargetTest, TheUserChoosesFileFolderOrStandardOutput) {
    const TempFolder folder;
    const std::string base = folder / "";
    std::filesystem::create_directory(folder / "sub");
    folder.Write("old", "12345");
    const Url url = At("pub/file");

    EXPECT_EQ(ChooseTarget(base, url).path, base + "file");
    EXPECT_EQ(ChooseTarget(base + "sub", url).path, base + "sub/file");
    EXPECT_EQ(ChooseTarget(base + "new", url).path, base + "new");
    EXPECT_EQ(ChooseTarget(base + "new", url).ExistingSize(), std::nullopt);
    EXPECT_EQ(ChooseTarget(base + "old", url).ExistingSize(), 5u);
    EXPECT_FALSE(ChooseTarget(base + "old", url).IsStream());
    EXPECT_TRUE(ChooseTarget("/dev/null", url).IsStream());
    EXPECT_TRUE(ChooseTarget("-", url).isStandardOutput);
    EXPECT_FALSE(ChooseTarget("./-", url).isStandardOutput);

    EXPECT_THROW(ChooseTarget(base + "missing/", url), Failure);
    EXPECT_THROW(ChooseTarget(base + "missing/new", url), Failure);
    EXPECT_THROW(ChooseTarget(base + "old/new", url), Failure);
    EXPECT_THROW(ChooseTarget("", url), Failure);
    EXPECT_THROW(ChooseTarget(base + std::string(260, 'x'), url), Failure);
}

}  // namespace
}  // namespace cli
