// Kinds of files by the MIME database, one of the test's own.

#include <gtest/gtest.h>
#include <shellapi.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "support/temp_folder.h"

namespace {

class FileTypeTest : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder.emplace();
        setenv("XDG_DATA_HOME", (*folder / "own").c_str(), 1);
        setenv("XDG_DATA_DIRS",
               ((*folder / "none").string() + ":" + (*folder / "all").string()).c_str(), 1);
        const auto write = [](const std::string& name, const std::string& text) {
            std::filesystem::create_directories((*folder / name).parent_path());
            WriteWhole(*folder / name, text);
        };
        write("all/mime/globs2",
              "# made\n50:text/x-c++src:*.C:cs\n50:text/x-csrc:*.c\n50:application/gzip:*.gz\n"
              "50:application/x-tar-gz:*.tar.gz\n50:text/x-readme:readme*\n"
              "40:image/x-low:*.png\n50:image/png:*.png\n50:../../../secret:*.evil\n"
              "50:text/long:*.long\n50:text/huge:*.huge\nword:text/x-csrc:*.word\n"
              "50:text/x-csrc:*." +
                  std::string(600, 'l') + "\n50:text/x-csrc");
        write("all/mime/generic-icons", "application/gzip:package-x-generic\n");
        write("all/mime/text/x-c++src.xml",
              "<comment xml:lang=\"de\">Quelltext</comment>"
              "<comment>C++ &lt;source&gt;</comment>");
        write("all/mime/text/x-csrc.xml", "<comment>shared</comment>");
        write("own/mime/text/x-csrc.xml", "<comment>C source</comment>");
        write("all/mime/text/x-readme.xml", "<comment>read me");
        write("all/mime/application/gzip.xml", "<comment>archive</comment>");
        write("all/mime/text/long.xml",
              "<comment>" + std::string(78, 'x') + "\xC3\xA4 and more</comment>");
        write("all/mime/text/huge.xml", "<comment>huge</comment>" + std::string(300 * 1024, ' '));
        write("secret.xml", "<comment>secret</comment>");
        write("file.c", "");
    }
    static void TearDownTestSuite() { folder.reset(); }

    static SHFILEINFOA Info(const std::string& path, UINT flags, DWORD attributes = 0) {
        SHFILEINFOA info = {};
        info.iIcon = -1;
        EXPECT_NE(SHGetFileInfoA(path.c_str(), attributes, &info, sizeof(info), flags), 0U);
        return info;
    }

    static std::optional<TempFolder> folder;
};
std::optional<TempFolder> FileTypeTest::folder;

}  // namespace

TEST_F(FileTypeTest, NamesATypeByTheNameOfAFileAlone) {
    const struct {
        const char* path;
        std::string type;
        int icon;
    } cases[] = {
        {"a.c", "C source", QUENNET_ICON_TEXT},
        {"/no/such/place/a.C", "C++ <source>", QUENNET_ICON_TEXT},
        {"a.b.gz", "archive", QUENNET_ICON_ARCHIVE},
        {"a.tar.gz", "", QUENNET_ICON_FILE},
        {"README.txt", "", QUENNET_ICON_TEXT},
        {"A.PNG", "", QUENNET_ICON_IMAGE},
        {"a.evil", "", QUENNET_ICON_FILE},
        {"a.long", std::string(78, 'x'), QUENNET_ICON_TEXT},
        {"a.huge", "", QUENNET_ICON_TEXT},
        {"a.word", "", QUENNET_ICON_FILE},
        {"plain", "", QUENNET_ICON_FILE},
        {"", "", QUENNET_ICON_FILE},
    };
    for (const auto& expected : cases) {
        const SHFILEINFOA info =
            Info(expected.path, SHGFI_TYPENAME | SHGFI_SYSICONINDEX | SHGFI_USEFILEATTRIBUTES);
        EXPECT_EQ(info.szTypeName, expected.type) << expected.path;
        EXPECT_EQ(info.iIcon, expected.icon) << expected.path;
    }
}

TEST_F(FileTypeTest, LooksAtTheFileWhereItIsAskedTo) {
    EXPECT_STREQ(Info(*folder / "file.c", SHGFI_TYPENAME).szTypeName, "C source");
    const SHFILEINFOA own = Info(*folder / "own", SHGFI_TYPENAME | SHGFI_SYSICONINDEX);
    EXPECT_STREQ(own.szTypeName, "Folder") << "the database has no word for it";
    EXPECT_EQ(own.iIcon, QUENNET_ICON_FOLDER);
    EXPECT_STREQ(
        Info("x.c", SHGFI_TYPENAME | SHGFI_USEFILEATTRIBUTES, FILE_ATTRIBUTE_DIRECTORY).szTypeName,
        "Folder");
    SHFILEINFOA info = {};
    const std::string missing = *folder / "missing.c";
    EXPECT_EQ(SHGetFileInfoA(missing.c_str(), 0, &info, sizeof(info), SHGFI_TYPENAME), 0U);
}
