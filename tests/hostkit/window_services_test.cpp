// Columns, places, menus, tool bars and keys of the module's windows.

#include <windows.h>

#include <commctrl.h>

#include <gmock/gmock.h>

#include "hostkit/services_test.h"
#include "hostkit/window.h"

namespace {

using namespace quennet;
using testing::ElementsAre;

/// A window that writes down its commands.
class WindowServicesTest : public ServicesTest {
  protected:
    ~WindowServicesTest() override { DestroyWindow(window); }

    HWND Add(const char* className, DWORD style, UINT_PTR id) const {
        return CreateWindowExA(0, className, "", WS_CHILD | WS_VISIBLE | style, 0, 0, 300, 300,
                               window, reinterpret_cast<HMENU>(id), GetModuleHandleA(nullptr),
                               nullptr);
    }
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_COMMAND && lParam == 0) {
            commands.push_back(wParam);
        }
        return DefWindowProcA(window, message, wParam, lParam);
    }

    void LoadColumns() {
        Shell<ShellLoadColumnsFunction>(ShellService::loadColumns)(columns, "FTPFind",
                                                                   ProfilePath().c_str(), 0);
    }

    std::vector<u32> Orders() const {
        return {columns[0].order, columns[1].order, columns[2].order};
    }
    std::vector<u32> Widths() const {
        return {columns[0].width, columns[1].width, columns[2].width};
    }

    const HWND window = hostkit::MakeWindow("commands", Procedure, nullptr);
    static inline std::vector<WPARAM> commands;
    ColumnRow columns[4] = {
        {4002, 150, 0, 0, 0}, {4003, 60, 1, 1, 0x101}, {4029, 45, 2, 4, 0}, {0, 0, 0, 0, 0}};
};

TEST_F(WindowServicesTest, ColumnsOfTheListComeBackFromTheSettings) {
    const HWND list = Add(WC_LISTVIEWA, LVS_REPORT | LVS_OWNERDATA, 0x42);
    const auto setColumns = Shell<ShellSetColumnsFunction>(ShellService::setColumns);
    columns[0].order = 2;
    columns[2].order = 0;
    setColumns(list, columns);
    setColumns(list, columns);  // not added to those that are there
    char title[32] = "";
    LVCOLUMNA column = {};
    column.mask = LVCF_TEXT | LVCF_FMT;
    column.pszText = title;
    column.cchTextMax = sizeof(title);
    EXPECT_NE(SendMessageA(list, LVM_GETCOLUMNA, 1, reinterpret_cast<LPARAM>(&column)), 0);
    EXPECT_STREQ(title, "Size");
    EXPECT_EQ(column.fmt & LVCFMT_JUSTIFYMASK, LVCFMT_RIGHT);
    EXPECT_EQ(SendMessageA(list, LVM_GETCOLUMNA, 3, reinterpret_cast<LPARAM>(&column)), 0);

    const auto getOrder = Shell<ShellGetColumnOrderFunction>(ShellService::getColumnOrder);
    getOrder(list, columns);
    EXPECT_THAT(Orders(), ElementsAre(2u, 1u, 0u));
    INT moved[] = {1, 2, 0};
    SendMessageA(list, LVM_SETCOLUMNORDERARRAY, 3, reinterpret_cast<LPARAM>(moved));
    getOrder(list, columns);
    Shell<ShellSaveColumnsFunction>(ShellService::saveColumns)(columns, "FTPFind",
                                                               ProfilePath().c_str());
    for (ColumnRow& row : columns) {
        row.order = 0;
    }
    LoadColumns();
    EXPECT_THAT(Orders(), ElementsAre(2u, 0u, 1u));
}

TEST_F(WindowServicesTest, NonsenseInTheSettingsIsPassedOver) {
    settings->Write("FTPFind", "Column0", "4294967295,0");
    settings->Write("FTPFind", "Column1", "0,0");
    settings->Write("FTPFind", "Column4", "70,2");
    LoadColumns();
    EXPECT_THAT(Widths(), ElementsAre(4000u, 12u, 70u));
    EXPECT_THAT(Orders(), ElementsAre(0u, 1u, 2u)) << "two columns at one place";
    settings->Write("FTPFind", "Column1", "-5,7 x");
    settings->Write("FTPFind", "Column4", "9999999999,1");
    LoadColumns();
    EXPECT_THAT(Widths(), ElementsAre(4000u, 12u, 70u));

    settings->Write("FTPFind", "X", "-3");
    settings->Write("FTPFind", "Y", "99999999999");
    settings->Write("FTPFind", "Width", "1");
    settings->Write("FTPFind", "Height", "1x");
    i32 x = 1;
    i32 y = 1;
    i32 width = 1;
    i32 height = 1;
    u32 word = 1;
    Shell<ShellLoadPlacementFunction>(ShellService::loadPlacement)(ProfilePath().c_str(), "FTPFind",
                                                                   &x, &y, &width, &height, &word);
    EXPECT_EQ(x, 0);
    EXPECT_GT(y, 0);
    EXPECT_GE(width, 100);
    EXPECT_GE(height, 100);
}

TEST_F(WindowServicesTest, TheHistoryOfABoxIsShortAndHoldsNothingTwice) {
    const HWND box = Add("ComboBox", CBS_DROPDOWN, 0x3D);
    const auto add = Shell<ShellComboAddFunction>(ShellService::comboAdd);
    const auto expectFirst = [&](const char* entry, LRESULT count) {
        char text[32] = "";
        SendMessageA(box, CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(text));
        EXPECT_STREQ(text, entry);
        EXPECT_EQ(SendMessageA(box, CB_GETCOUNT, 0, 0), count);
        GetWindowTextA(box, text, sizeof(text));
        EXPECT_STREQ(text, "*.field");
    };
    SetWindowTextA(box, "*.field");
    for (const char* mask : {"*.a", "", "*.b", "*.A"}) {
        add(box, mask);
    }
    expectFirst("*.A", 2);
    for (int i = 0; i < 40; ++i) {
        add(box, std::to_string(i).c_str());
    }
    expectFirst("39", 30);
}

TEST_F(WindowServicesTest, KeysLeadThroughARegisteredWindow) {
    ShowWindow(window, SW_SHOW);
    const HWND box = Add("ComboBox", CBS_DROPDOWN | WS_TABSTOP, 0x3D);
    const HWND check = Add("Button", BS_AUTOCHECKBOX | WS_TABSTOP, 0x2777);
    SetFocus(box);
    const auto press = [&](WPARAM key) {
        PostMessageA(GetFocus(), WM_KEYDOWN, key, 0);
        bool done = false;
        loop.Post([&] { done = true; });
        loop.WaitUntil([&] { return done; });
    };
    press(VK_RETURN);
    EXPECT_THAT(commands, ElementsAre()) << "nobody registered it";
    EXPECT_EQ(Shell<ShellRegisterWindowFunction>(ShellService::registerWindow)(window, 8, 0), 0u);
    const HMENU menu = CreateMenu();
    AppendMenuA(menu, MF_STRING, 0x20E, "Stop");
    SetMenu(window, menu);
    press(VK_RETURN);
    press(VK_ESCAPE);
    EnableMenuItem(menu, 0x20E, MF_GRAYED);
    press(VK_ESCAPE);  // closes where nothing runs
    press(VK_TAB);
    EXPECT_EQ(GetFocus(), check);
    press(VK_RETURN);
    EXPECT_THAT(commands, ElementsAre(0x12Du, 0x20Eu, 0x78u));
    Shell<ShellUnregisterWindowFunction>(ShellService::unregisterWindow)(window);
    press(VK_TAB);
    EXPECT_EQ(GetFocus(), check);
}

}  // namespace
