// A search that takes a while, and a person at its window meanwhile.

#include <filesystem>

#include "find/window_test.h"

using namespace quennet;
using namespace std::chrono_literals;

namespace {

constexpr int folders = 10'000;
constexpr int filesInEach = 20;

TEST_F(FindWindowTest, TheWindowAnswersWhileTenThousandFoldersAreSearched) {
    for (int file = 0; file < filesInEach; ++file) {
        Make("s/" + std::to_string(file));
    }
    for (int i = 0; i < folders; ++i) {
        const std::string parent = std::to_string(i / 100) + "/";
        Make(parent);
        std::filesystem::create_directory_symlink(
            "../s", folder / ("root/" + parent + std::to_string(i % 100)));
    }
    const HWND window = Open();
    CheckDlgButton(window, findRecurseBox, BST_CHECKED);
    Command(window, findStart);
    std::chrono::steady_clock::duration slowest = 0ms;
    int keys = 0;
    int slow = 0;
    while (Record()->worker.IsSet()) {
        const auto pressed = std::chrono::steady_clock::now();
        SendDlgItemMessageA(window, findList, WM_KEYDOWN, ++keys % 50 == 0 ? VK_END : VK_UP, 0);
        const auto time = std::chrono::steady_clock::now() - pressed;
        slowest = std::max(slowest, time);
        slow += time > 100ms ? 1 : 0;
        Sleep(1);
    }
    // A machine that does other things too now and then takes its time.
    EXPECT_LE(slow, keys / 100) << "of " << keys << " keys";
    EXPECT_LT(slowest, 5s);
    EXPECT_EQ(Rows(window), (folders + 1) * (filesInEach + 1) + folders / 100);
    EXPECT_EQ(Pane(window, 1), "Found: 200,020 files, 10,101 folders");
    Command(window, findStart);
    ASSERT_TRUE(WaitUntil([&] { return Rows(window) > 5000; }));
    PostMessageA(window, WM_CLOSE, 0, 0);
    EXPECT_TRUE(WaitUntil([&] { return !IsWindow(window); }));
}

}  // namespace
