// quennet find --window.

#include "app/screen_program_test.h"
#include "hostkit/settings.h"
#include "support/wait.h"

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::HasSubstr;
constexpr auto npos = std::string::npos;

class FindScreenTest : public ScreenProgramTest {
  protected:
    FindScreenTest() {
        for (const std::string folder : {"t/", "t/docs/", "t/docs/old/"}) {
            Make(folder + "small.txt", "1");
            Make(folder + "large.txt", std::string(12'345, '.'));
        }
        using namespace std::chrono;
        const auto longAgo =
            fs::file_time_type::clock::from_sys(sys_seconds{sys_days{2001y / 7 / 19}});
        for (const auto& entry : fs::recursive_directory_iterator(served / "t")) {
            fs::last_write_time(entry, longAgo);
        }
        Serve();
    }

    /// The end of a run moves the focus to the list, to its first row.
    static bool HasFocusInList(const TmuxTerminal& terminal) {
        return WaitUntil([&] { return terminal.Cursor() == "0,10"; });
    }

    /// Writes the hits over the file that has them already, in a larger window.
    void WorkWithTheMouse(const TmuxTerminal& terminal) {
        home.Write("hits.txt", "");
        terminal.Click(5, 11);
        EXPECT_SHOWS(terminal, "Selected: 1 file, 12,345");
        terminal.Click(9, 1);
        EXPECT_SHOWS(terminal, "Details");
        terminal.Click(9, 1);
        terminal.Resize(100, 30);
        EXPECT_SHOWS(terminal, "                            [..]\n");  // it fills the width
        terminal.Click(35, 2);
        EXPECT_SHOWS(terminal, "Text List");
        terminal.Press({"hits", "Enter"});
        EXPECT_SHOWS(terminal, "Write over it?");
        terminal.Press({"Tab", "Enter"});
        EXPECT_TRUE(WaitUntil([&] { return !home.Read("hits.txt").empty(); }));
        terminal.Resize(80, 24);
    }
};

TEST_F(FindScreenTest, APersonSearchesFiltersAndGoesToAHit) {
    {
        const TmuxTerminal terminal(80, 24, Program("find --window -v " + Url("t")));
        EXPECT_SHOWS(terminal, "Include subfolders");
        terminal.Press({"*.txt;docs", "Enter"});
        EXPECT_SHOWS(terminal, "Found: 6 files");
        terminal.ExpectScreen("find");
        EXPECT_TRUE(HasFocusInList(terminal));
        terminal.Press({"S-Down", "M-v", "l"});
        EXPECT_SHOWS(terminal, "Selected: 1 file, 1 folder, 12,3");
        terminal.ExpectScreen("find-list");
        terminal.Press({"M-v", "d", "C-a"});
        EXPECT_SHOWS(terminal, "Selected: 6 files");
        terminal.Press({"M-f", "e"});
        terminal.ExpectScreen("menu");
        terminal.Press({"t"});
        EXPECT_SHOWS(terminal, "Text List");
        terminal.Press({"hits", "Enter"});
        EXPECT_TRUE(WaitUntil([&] {
            return home.Read("hits.txt").find("/t/docs/old/small") != npos;
        })) << home.Read("hits.txt");
        WorkWithTheMouse(terminal);
        terminal.Press({"M-o", "f"});
        EXPECT_SHOWS(terminal, "Changed from:");
        terminal.Press({"M-s", "1k", "Enter", "M-u", "M-m", "Enter"});
        EXPECT_SHOWS(terminal, "Found: 3 files");
        EXPECT_TRUE(HasFocusInList(terminal));
        terminal.Press({"Down", "Down", "M-s", "g"});
        EXPECT_SHOWS(terminal, "\n/t/docs/large.txt\n");
        EXPECT_SHOWS(terminal, "226 Transfer complete\n");  // -v, once the terminal is free
        EXPECT_SHOWS(terminal, "status 0");
    }
    EXPECT_THAT(home.Read(".config/quennet/settings.ini"), HasSubstr("[FTPFind]\n"));
    {
        hostkit::FileSettings other(home / ".config/quennet/settings.ini");
        ASSERT_TRUE(other.Begin());
        const TmuxTerminal terminal(80, 24, Program("find --window -m none " + Url("t")));
        EXPECT_SHOWS(terminal, "none____");
        const auto before = std::chrono::steady_clock::now();
        terminal.Press({"F1"});
        EXPECT_SHOWS(terminal, "sort by that column");
        terminal.Press({"Enter", "Escape"});
        EXPECT_SHOWS(terminal, "quennet: The settings can't be changed now.");
        EXPECT_SHOWS(terminal, "status 0");
        EXPECT_LT(std::chrono::steady_clock::now() - before, 5s)
            << "one wait for all that it keeps";
    }
    TmuxTerminal terminal(80, 24, Program("find --window " + Url("t")));
    EXPECT_SHOWS(terminal, "Include subfolders");
    EXPECT_TRUE(terminal.HangUp());
}

}  // namespace
