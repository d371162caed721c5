// quennet chmod without permissions.

#include <signal.h>

#include "app/screen_program_test.h"

namespace {

using PermissionScreenTest = ScreenProgramTest;

TEST_F(PermissionScreenTest, TheDialogAsksForPermissions) {
    Serve();
    Make("t/f");
    Make("t/sub/g.txt");
    const auto open = [&](const std::string& path) {
        return std::make_unique<TmuxTerminal>(80, 24, Program("chmod " + Url(path)));
    };
    const auto keys = [](const TmuxTerminal& terminal, const std::vector<std::string>& pressed) {
        terminal.Press(pressed);
        EXPECT_SHOWS(terminal, "status 0");
    };
    SetMode("t/f", "644");
    auto terminal = open("t/f");
    terminal->ExpectScreen("permissions");
    keys(*terminal, {"Delete", "7", "Enter"});
    EXPECT_EQ(ModeOf("t/f"), "744");

    SetMode("t/f", "666");
    terminal = open("t");
    EXPECT_SHOWS(*terminal, "Include subfolders");
    terminal->Press({"M-b"});
    terminal->ExpectScreen("permissions-of-many");
    keys(*terminal, {"Enter"});
    EXPECT_EQ(ModeOf("t/f"), "644") << "the boxes of 022 are empty, the others grey";

    SetMode("t/f", "666");
    SetMode("t/sub/g.txt", "666");
    terminal = open("t");
    EXPECT_SHOWS(*terminal, "Use the filter");
    terminal->Press({"M-u", "M-b", "M-i"});
    EXPECT_SHOWS(*terminal, "Changed from:");
    terminal->Press({"*.txt", "Tab", "2M", "Tab", "1K", "M-f", "Enter"});
    EXPECT_SHOWS(*terminal, "The upper size is below the lower one.");
    terminal->ExpectScreen("filter");
    keys(*terminal, {"Delete", "M-s", "Delete", "Enter", "M-u", "M-u", "Enter"});
    EXPECT_EQ(ModeOf("t/f"), "666") << "left out by the filter";
    EXPECT_EQ(ModeOf("t/sub/g.txt"), "644");

    terminal = open("t/f");
    EXPECT_SHOWS(*terminal, "666");
    terminal->Press({"Escape"});
    EXPECT_SHOWS(*terminal, "status 1");
}

TEST_F(PermissionScreenTest, ASignalClosesTheDialogAndGivesTheTerminalBack) {
    Serve();
    Make("f");
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        TerminalRun run(home, {"chmod", Url("f")});
        ASSERT_TRUE(run.Await("ermissions"));
        const auto start = std::chrono::steady_clock::now();
        run.Signal(signal);
        EXPECT_EQ(run.Finish(), exitFailed);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_NE(run.Shown().rfind("\x1B[?1049l"), std::string::npos);
        EXPECT_THAT(run.Shown(), testing::HasSubstr("quennet: interrupted"));
    }
}

}  // namespace
