// Runs that are ended from outside: by the person, with the window, with the connection.

#include <dlgs.h>

#include "find/window_test.h"
#include "support/dialog_user.h"

using namespace quennet;
using namespace std::chrono_literals;
using loopback::Fault;
using loopback::FaultAction;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

namespace {

class FindClosingTest : public FindWindowTest {
  protected:
    FindClosingTest() {
        for (int i = 0; i < 40; ++i) {
            Make("d" + std::to_string(100 + i) + "/file");
        }
    }

    /// Starts a run that does not get past the listing of the third directory.
    HWND StartAndStall() {
        server->Add({.command = "LIST", .occurrence = 3, .action = FaultAction::stallData});
        const HWND window = Open();
        CheckDlgButton(window, findRecurseBox, BST_CHECKED);
        Command(window, findStart);
        EXPECT_TRUE(WaitUntil([&] { return Lists() == 3; }));
        return window;
    }

    std::size_t Lists() const {
        const std::vector<std::string> commands = server->Commands();
        return static_cast<std::size_t>(std::count(commands.begin(), commands.end(), "LIST"));
    }

    static std::chrono::milliseconds TimeOf(const std::function<void()>& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration_cast<std::chrono::milliseconds>(
            std::chrono::steady_clock::now() - start);
    }
};

TEST_F(FindClosingTest, StopEndsARunWithinOneDirectory) {
    server->Add({.command = "LIST",
                 .occurrence = 0,
                 .action = FaultAction::slowData,
                 .bytes = 4096,
                 .time = 20ms});
    const HWND window = Open();
    CheckDlgButton(window, findRecurseBox, BST_CHECKED);
    Command(window, findStart);
    ASSERT_TRUE(WaitUntil([&] { return Lists() == 3; }));
    EXPECT_EQ(Allowed(window).find('S'), std::string::npos);
    Command(window, findStart);  // disabled
    Command(window, findStop);
    const std::size_t lists = Lists();
    ASSERT_TRUE(WaitUntil([&] { return !Record()->worker.IsSet(); }));
    EXPECT_LE(Lists(), lists + 1);
    EXPECT_EQ(Pane(window, 1).find("Found: ", 0), 0u);
    EXPECT_NE(Pane(window, 1).find(" - stopped"), std::string::npos);
    EXPECT_EQ(Allowed(window), "SGTCH");
    EXPECT_EQ(connection.CheckDirectory(".").directory, "/");
    Run();
    EXPECT_EQ(Rows(window), 80);
    EXPECT_EQ(Pane(window, 1), "Found: 40 files, 40 folders");
}

TEST_F(FindClosingTest, AWindowClosedDuringARunTakesItAlongAndLeavesTheConnection) {
    const HWND window = StartAndStall();
    const auto time = TimeOf([&] {
        PostMessageA(window, WM_CLOSE, 0, 0);
        EXPECT_TRUE(WaitUntil([&] { return !IsWindow(window); }));
    });
    EXPECT_LT(time, 6s);
    EXPECT_EQ(Record(), nullptr);
    EXPECT_EQ(Lists(), 3u);
    server->ClearFaults();
    EXPECT_TRUE(connection.List().done);
    EXPECT_EQ(server->ConnectionCount(), 1) << "it was not made anew";
    EXPECT_NE(Open(), nullptr);
}

TEST_F(FindClosingTest, TheEndOfTheConnectionEndsRunAndWindowInOrder) {
    const HWND window = StartAndStall();
    server->ClearLog();
    const auto time = TimeOf([&] { connection.Disconnect(); });
    EXPECT_LT(time, 8s);
    EXPECT_FALSE(IsWindow(window));
    EXPECT_THAT(server->Commands(), Contains("QUIT"));
    EXPECT_THAT(server->Commands(), Not(Contains("CWD /")));
}

TEST_F(FindClosingTest, ARunIsEndedAtAnyMomentOfIts) {
    for (int round = 0; round < 12; ++round) {
        const HWND window = Open();
        ASSERT_NE(window, nullptr);
        CheckDlgButton(window, findRecurseBox, BST_CHECKED);
        Command(window, findStart);
        const std::size_t lists = Lists() + static_cast<std::size_t>(round) * 3;
        ASSERT_TRUE(WaitUntil([&] { return Lists() >= lists || !Record()->worker.IsSet(); }));
        if (round % 3 == 0) {
            connection.Disconnect();
        } else {
            SendMessageA(window, WM_CLOSE, 0, 0);
        }
        ASSERT_TRUE(WaitUntil([&] { return !IsWindow(window); }));
    }
}

TEST_F(FindClosingTest, AWindowThatGoesBehindItsSaveDialogExportsNothing) {
    for (const bool withConnection : {false, true}) {
        const HWND window = Open();
        Run();
        PostMessageA(window, WM_COMMAND, findExportText, 0);
        const OpenDialog dialog = WaitForDialog("Save As");
        dialog.SetField(edt1, (folder / "out.txt").string());
        if (withConnection) {
            connection.Disconnect();
        } else {
            SendMessageA(window, WM_CLOSE, 0, 0);
        }
        EXPECT_FALSE(IsWindow(window));
        if (dialog.IsOpen()) {
            dialog.Press(IDOK);
        }
        EXPECT_TRUE(dialog.WaitUntilClosed());
        EXPECT_EQ(folder.Read("out.txt"), "(none)");
    }
}

TEST_F(FindClosingTest, TwoCommandsToStartAreOneRun) {
    const HWND window = Open();
    CheckDlgButton(window, findRecurseBox, BST_CHECKED);
    Host().Loop().Invoke([&] {
        Command(window, findStart);
        Command(window, findStart);
    });
    ASSERT_TRUE(WaitUntil([&] { return !Record()->worker.IsSet(); }));
    EXPECT_EQ(Lists(), 41u);
}

}  // namespace
