// Menus as data, and worked with keys and clicks that a program sends itself.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/user/window_support.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

enum : UINT { idSave = 10, idExport, idText, idPage, idQuit, idWide, idNarrow, idHelp };

constexpr UINT drawNow = WM_APP + 1;

UINT_PTR Popup(HMENU menu) {
    return reinterpret_cast<UINT_PTR>(menu);
}

/// A window with "&File" (Save, Export > (Text, Page), separator, Quit), "&View" (two views) and
/// a command of the bar itself.
class MenuTest : public testing::Test {
  protected:
    MenuTest() {
        AppendMenuA(export_, MF_STRING, idText, "&Text");
        AppendMenuA(export_, MF_STRING | MF_GRAYED, idPage, "&Page");
        AppendMenuA(file_, MF_STRING, idSave, "&Save\tCtrl+S");
        AppendMenuA(file_, MF_POPUP, Popup(export_), "&Export");
        AppendMenuA(file_, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(file_, MF_STRING, idQuit, "&Quit");
        AppendMenuA(view_, MF_STRING, idWide, "&Wide");
        AppendMenuA(view_, MF_STRING, idNarrow, "&Narrow");
        AppendMenuA(bar_, MF_POPUP, Popup(file_), "&File");
        AppendMenuA(bar_, MF_POPUP, Popup(view_), "&View");
        AppendMenuA(bar_, MF_STRING, idHelp, "&Help");
        window_ = MakeWindow(&handler_, nullptr, WS_POPUP | WS_VISIBLE);
        MoveWindow(window_, 0, 0, 320, 160, FALSE);
        EXPECT_TRUE(SetMenu(window_, bar_));
    }
    ~MenuTest() override {
        if (IsWindow(window_)) {
            DestroyWindow(window_);
        }
        EXPECT_FALSE(IsMenu(export_)) << "a window's menu ends with it";
    }

    /// Enters the menu with a letter (0: F10) and types keys; small letters are characters. What
    /// is open then stands in `picture_`; it is closed.
    void Work(unsigned char letter, const std::vector<WPARAM>& keys) {
        PostMessageA(window_, letter != 0 ? WM_SYSCHAR : WM_SYSKEYDOWN,
                     letter != 0 ? letter : VK_F10, 1);
        for (const WPARAM key : keys) {
            PostMessageA(window_, key >= 'a' ? WM_CHAR : WM_KEYDOWN, key, 1);
        }
        Finish();
    }

    void Finish() {
        PostMessageA(window_, drawNow, 0, 0);
        PostMessageA(window_, WM_APP, 0, 0);
        told_.clear();
        MSG message = {};
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageA(&message);
        }
    }

    void PostClick(UINT message, WPARAM wParam, int column, int row) {
        PostMessageA(window_, message, wParam,
                     MAKELPARAM(column * quennet::cellWidth, row * quennet::cellHeight));
    }

    std::vector<std::string> Picture() {
        quennet::Surface surface(40, 7, quennet::Ink::window);
        const quennet::Area whole = {0, 0, surface.width, surface.height};
        quennet::Canvas canvas(surface, whole, whole, false);
        DrawMenuRow(window_, canvas);
        DrawOpenMenus(window_, canvas);
        return TextRows(surface);
    }

    HMENU bar_ = CreateMenu();
    HMENU file_ = CreatePopupMenu();
    HMENU export_ = CreatePopupMenu();
    HMENU view_ = CreatePopupMenu();
    HWND window_ = nullptr;
    std::vector<std::string> told_;
    bool closesItself_ = false;
    std::vector<std::string> picture_;

  private:
    Handler handler_ = [this](HWND, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COMMAND) {
            told_.push_back("command " + std::to_string(wParam));
        } else if (message == WM_INITMENUPOPUP) {
            told_.push_back("popup " + std::to_string(lParam));
            if (closesItself_) {
                PostMessageA(window_, WM_CLOSE, 0, 0);
            }
        } else if (message == drawNow) {
            picture_ = Picture();
        } else if (message == WM_APP && GetCapture() == window_) {
            PostMessageA(window_, WM_SYSKEYDOWN, VK_F10, 1);
        }
        return unhandled;
    };
};

}  // namespace

TEST_F(MenuTest, RefusesStaleNumbersAndCircles) {
    EXPECT_FALSE(AppendMenuA(export_, MF_POPUP, Popup(file_), "round"));
    EXPECT_FALSE(AppendMenuA(export_, MF_POPUP, Popup(export_), "itself"));
    const HMENU stale = CreateMenu();
    EXPECT_TRUE(DestroyMenu(stale));
    EXPECT_FALSE(DestroyMenu(stale));
    EXPECT_FALSE(AppendMenuA(stale, MF_STRING, 1, "x"));
    EXPECT_FALSE(SetMenu(window_, stale));
    EXPECT_NE(CreateMenu(), stale);
    EXPECT_EQ(EnableMenuItem(bar_, 999, MF_GRAYED), -1);
    EXPECT_FALSE(CheckMenuRadioItem(bar_, idWide, idNarrow, idSave, MF_BYCOMMAND));
}

TEST_F(MenuTest, IsWorkedWithKeys) {
    struct {
        const char* what;
        unsigned char letter;
        std::vector<WPARAM> keys;
        std::vector<std::string> told;
    } const cases[] = {
        {"letters", 'f', {'q'}, {"popup 0", "command 14"}},
        {"a letter leads into a submenu", 'F', {'e', 't'}, {"popup 0", "popup 1", "command 12"}},
        {"a command of the bar", 'h', {}, {"command 17"}},
        {"F10 selects, down opens, up skips the line and goes round",
         0,
         {VK_DOWN, VK_UP, VK_RETURN},
         {"popup 0", "command 14"}},
        {"right from the bar's popup opens the next one",
         'f',
         {VK_RIGHT, VK_END, VK_RETURN},
         {"popup 0", "popup 1", "command 16"}},
        {"right into the submenu, left out of it",
         'f',
         {VK_DOWN, VK_RIGHT, VK_LEFT, VK_HOME, VK_RETURN},
         {"popup 0", "popup 1", "command 10"}},
        {"a grayed entry is not chosen", 'f', {'e', 'p', VK_RETURN}, {"popup 0", "popup 1"}},
        {"Esc goes back one level at a time",
         'v',
         {VK_ESCAPE, VK_LEFT, VK_RETURN, VK_RETURN},
         {"popup 1", "popup 0", "command 10"}},
        {"Esc on the bar ends it", 0, {VK_ESCAPE, 'q'}, {}},
        {"no such letter", 'x', {}, {}},
    };
    for (const auto& expected : cases) {
        SCOPED_TRACE(expected.what);
        Work(expected.letter, expected.keys);
        EXPECT_EQ(told_, expected.told);
        EXPECT_EQ(GetCapture(), nullptr);
    }
}

TEST_F(MenuTest, ShowsMarksGrayedEntriesAndSubmenus) {
    CheckMenuItem(bar_, idSave, MF_CHECKED);
    Work('f', {'e'});
    EXPECT_THAT(picture_, ElementsAre("  File  View  Help",              //
                                      " ||||||||||||||||||||",           //
                                      " || Save    Ctrl+S  ||||||||||",  //
                                      " |  Export         ||  Text  |",  //
                                      " ||||||||||||||||||||--------|",  //
                                      " |  Quit            ||||||||||",  //
                                      " ||||||||||||||||||||"));
}

TEST_F(MenuTest, IsWorkedWithTheMouse) {
    const auto onBar = [&](int column) { PostClick(WM_NCLBUTTONDOWN, HTMENU, column, -1); };
    // A popup takes clicks where it was drawn last; its row 2 is the window's row 1.
    onBar(8);
    PostMessageA(window_, drawNow, 0, 0);
    PostClick(WM_LBUTTONDOWN, 1, 10, 2);
    Finish();
    EXPECT_THAT(told_, ElementsAre("popup 1", "command 16"));

    onBar(8);
    PostClick(WM_LBUTTONDOWN, 1, 3, -1);
    PostClick(WM_LBUTTONDOWN, 1, 3, -1);
    Finish();
    EXPECT_THAT(told_, ElementsAre("popup 1", "popup 0")) << "the second click closes it";
    EXPECT_EQ(picture_[1], "");

    onBar(30);
    Finish();
    EXPECT_THAT(told_, IsEmpty());
}

TEST_F(MenuTest, EndsWithItsWindow) {
    closesItself_ = true;
    Work('f', {VK_DOWN});
    EXPECT_FALSE(IsWindow(window_));
    EXPECT_THAT(told_, ElementsAre("popup 0"));
}

TEST_F(MenuTest, IsChangedByAnotherThreadWhileItIsWorked) {
    std::jthread worker([&](const std::stop_token& stop) {
        for (UINT turn = 0; !stop.stop_requested(); ++turn) {
            EnableMenuItem(bar_, idPage, (turn & 1) != 0 ? MF_GRAYED : MF_ENABLED);
            CheckMenuRadioItem(bar_, idWide, idNarrow, idWide + (turn & 1), MF_BYCOMMAND);
        }
    });
    for (int turn = 0; turn < 50; ++turn) {
        Work('f', {'e', 't'});
        EXPECT_THAT(told_, ElementsAre("popup 0", "popup 1", "command 12"));
        Work('v', {VK_DOWN});
        EXPECT_NE(picture_[4], "");
    }
}
