// Tool bars, in a window that hears what they tell.

#include <commctrl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "platform/user/window_support.h"

using testing::ElementsAre;

namespace {

class ToolBarTest : public testing::Test {
  protected:
    ToolBarTest() {
        parent_ = MakeWindow(&handler_, nullptr, WS_POPUP);
        MoveWindow(parent_, 0, 0, 320, 160, FALSE);
        bar_ = CreateWindowExA(0, TOOLBARCLASSNAMEA, "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent_,
                               nullptr, nullptr, nullptr);
        constexpr BYTE separator = TBSTYLE_SEP;
        const TBBUTTON buttons[] = {{0, 301, TBSTATE_ENABLED, TBSTYLE_BUTTON, {}, 0, 0},
                                    {0, 302, 0, TBSTYLE_BUTTON, {}, 0, 0},
                                    {0, 0, TBSTATE_ENABLED, separator, {}, 0, 0},
                                    {7, 303, TBSTATE_ENABLED, TBSTYLE_BUTTON, {}, 77, 0}};
        Send(TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON));
        EXPECT_EQ(Send(TB_ADDBUTTONSA, 4, reinterpret_cast<LPARAM>(buttons)), TRUE);
    }
    ~ToolBarTest() override { DestroyWindow(parent_); }

    LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
        return SendMessageA(bar_, message, wParam, lParam);
    }
    void Click(int column, int releasedAt = 4) {
        Send(WM_LBUTTONDOWN, 0, MAKELPARAM(column * quennet::cellWidth, 4));
        Send(WM_LBUTTONUP, 0, MAKELPARAM(column * quennet::cellWidth, releasedAt));
    }

    std::string Picture(int columns) const { return DrawnBy(bar_, columns, 1).front(); }

    HWND parent_ = nullptr;
    HWND bar_ = nullptr;
    std::vector<WPARAM> commands_;

  private:
    Handler handler_ = [this](HWND, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COMMAND) {
            EXPECT_EQ(reinterpret_cast<HWND>(lParam), bar_);
            commands_.push_back(wParam);
        }
        auto* tip = reinterpret_cast<NMTTDISPINFOA*>(lParam);
        if (message == WM_NOTIFY && tip->hdr.code == TTN_GETDISPINFOA) {
            static char own[] = "Mark all of them";
            if (tip->hdr.idFrom == 303) {
                tip->lpszText = own;
            } else {
                std::strcpy(tip->szText, tip->hdr.idFrom == 301 ? "&Start" : "Stop");
            }
        }
        return unhandled;
    };
};

}  // namespace

TEST_F(ToolBarTest, ShowsItsTipsAndTellsClicks) {
    EXPECT_EQ(Picture(40), "[Start] ------ | [Mark all of them]");
    Click(1);
    Click(9);
    Click(15);
    Click(1, 40);
    EXPECT_THAT(commands_, ElementsAre(301U)) << "a disabled button, a line, let go elsewhere";
    Click(20);
    EXPECT_THAT(commands_, ElementsAre(301U, 303U));
    EXPECT_EQ(GetCapture(), nullptr);
    EXPECT_EQ(Send(TB_ENABLEBUTTON, 999, TRUE), FALSE);
    EXPECT_EQ(Send(TB_ISBUTTONENABLED, 999), -1);

    MoveWindow(parent_, 0, 0, 160, 160, FALSE);
    Send(TB_AUTOSIZE);
    EXPECT_EQ(Picture(20), "[Sta] ----- | [Mar]");
}
