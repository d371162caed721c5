// quennet chmod without permissions, as a person at a terminal sees it.

#include <sys/stat.h>

#include "app/program_test.h"
#include "display/tmux.h"

namespace {

namespace fs = std::filesystem;

class PermissionScreenTest : public ProgramTest {
  protected:
    void SetUp() override {
        if (!TmuxTerminal::IsThere()) {
            GTEST_SKIP() << "tmux is missing";
        }
    }

    std::string Mode() const {
        struct stat status = {};
        stat((served / "t/f").c_str(), &status);
        char text[8];
        std::snprintf(text, sizeof text, "%03o", status.st_mode & 0777U);
        return text;
    }
};

TEST_F(PermissionScreenTest, TheDialogAsksForPermissions) {
    Serve();
    fs::create_directories(served / "t/sub");
    served.Write("t/f", "");
    const auto program = [&](const std::string& path) {
        return "cd " + (home / "").string() +
               "; HOME=. NO_COLOR=1 LC_ALL=C.UTF-8 " QUENNET_PROGRAM " chmod " + Url(path);
    };
    fs::permissions(served / "t/f", static_cast<fs::perms>(0644));
    {
        const TmuxTerminal terminal(80, 24, program("t/f"));
        terminal.ExpectScreen("permissions");
        terminal.Press({"Delete", "7", "Enter"});
        EXPECT_SHOWS(terminal, "status 0");
    }
    EXPECT_EQ(Mode(), "744");
    fs::permissions(served / "t/f", static_cast<fs::perms>(0666));
    {
        const TmuxTerminal terminal(80, 24, program("t"));
        EXPECT_SHOWS(terminal, "Include subfolders");
        terminal.Press({"M-b"});
        terminal.ExpectScreen("permissions-of-many");
        terminal.Press({"Enter"});
        EXPECT_SHOWS(terminal, "status 0");
    }
    EXPECT_EQ(Mode(), "644") << "the boxes of 022 are empty, the others grey";
    {
        served.Write("t/sub/g.txt", "");
        for (const char* file : {"t/f", "t/sub/g.txt"}) {
            fs::permissions(served / file, static_cast<fs::perms>(0666));
        }
        const TmuxTerminal terminal(80, 24, program("t"));
        EXPECT_SHOWS(terminal, "Use the filter");
        terminal.Press({"M-u", "M-b", "M-i"});
        EXPECT_SHOWS(terminal, "Changed from:");
        terminal.Press({"*.txt", "Tab", "2M", "Tab", "1K", "M-f", "Enter"});
        EXPECT_SHOWS(terminal, "The upper size is below the lower one.");
        terminal.ExpectScreen("filter");
        terminal.Press({"Delete", "M-s", "Delete", "Enter", "M-u", "M-u", "Enter"});
        EXPECT_SHOWS(terminal, "status 0");
        EXPECT_EQ(Mode(), "666") << "left out by the filter";
        EXPECT_EQ(fs::status(served / "t/sub/g.txt").permissions(), static_cast<fs::perms>(0644));
    }
    {
        const TmuxTerminal terminal(80, 24, program("t/f"));
        EXPECT_SHOWS(terminal, "666");
        terminal.Press({"Escape"});
        EXPECT_SHOWS(terminal, "status 1");
    }
}

}  // namespace
