// The module's templates, as the registration file registers them for this very program.

#include <gtest/gtest.h>
#include <windows.h>

#include <string>
#include <vector>

#include "support/dialog_user.h"

namespace {

struct Described {
    std::string title;
    RECT place = {};
    std::vector<std::string> controls;  // in tab order, "class id"
    LRESULT echo = 0;
};

INT_PTR CALLBACK DescribeAndEnd(HWND dialog, UINT message, WPARAM, LPARAM lParam) {
    if (message != WM_INITDIALOG) {
        return FALSE;
    }
    auto& described = *reinterpret_cast<Described*>(lParam);
    described.title = OpenDialog(dialog).Caption();
    GetWindowRect(dialog, &described.place);
    described.echo = SendDlgItemMessageA(dialog, 15202, EM_GETPASSWORDCHAR, 0, 0);
    HWND control = nullptr;
    while ((control = FindWindowExA(dialog, control, nullptr, nullptr)) != nullptr) {
        char name[20];
        GetClassNameA(control, name, sizeof(name));
        described.controls.push_back(std::string(name) + ' ' +
                                     std::to_string(GetDlgCtrlID(control)));
        EXPECT_EQ(GetWindowTextLengthA(control), 0) << "texts are the host's";
        RECT place = {};
        GetWindowRect(control, &place);
        EXPECT_LE(place.right, described.place.right) << described.controls.back();
        EXPECT_LE(place.bottom, described.place.bottom) << described.controls.back();
    }
    EndDialog(dialog, 1);
    return TRUE;
}

struct TemplateCase {
    WORD id;
    std::string title;
    LONG width;  // in dialog units; 0: not looked at
    LONG height;
    std::vector<std::string> controls;
};

class TemplateTest : public testing::TestWithParam<TemplateCase> {};

TEST_P(TemplateTest, HasItsControlsInTabOrder) {
    const TemplateCase& row = GetParam();
    Described described;
    ASSERT_EQ(DialogBoxParamA(GetModuleHandleA(nullptr), MAKEINTRESOURCEA(row.id), nullptr,
                              DescribeAndEnd, reinterpret_cast<LPARAM>(&described)),
              1);
    EXPECT_EQ(described.title, row.title);
    if (row.width != 0) {
        EXPECT_EQ(described.place.right, 2 * row.width);
        EXPECT_EQ(described.place.bottom, 2 * row.height);
        EXPECT_EQ(described.echo, '*');
    }
    EXPECT_EQ(described.controls, row.controls);
}

const TemplateCase templateCases[] = {
    {14300, " FTP", 303, 208, {"Button 65535", "ListBox 14301", "Static 14314", "Edit 14202",
                               "Static 14318", "Edit 14203",    "Static 14315", "Edit 14302",
                               "Static 14316", "Edit 15202",    "Static 14317", "Edit 14204",
                               "Button 14303", "Button 14304",  "Button 14305", "Button 14306",
                               "Button 99",    "Button 2",      "Button 97",    "Button 96",
                               "Button 14535", "Button 14536"}},
    {14320, " ftp", 0, 0, {"Static 14321", "Edit 14322", "Button 99", "Button 2"}},
    {14340,
     " Firewall",
     258,
     90,
     {"ComboBox 14301", "Static 14312", "Edit 14203", "Static 14315", "Edit 14302", "Static 14316",
      "Edit 15202", "Button 99", "Button 2"}},
    {14360,
     " Permissions",
     0,
     0,
     {"Button 14370", "Button 14361", "Button 14362", "Button 14363", "Button 14371",
      "Button 14364", "Button 14365", "Button 14366", "Button 14372", "Button 14367",
      "Button 14368", "Button 14369", "Button 10103", "Button 14505", "Button 14503", "Button 99",
      "Button 2"}},
    {14373,
     " Permissions",
     0,
     0,
     {"Button 14370", "Button 14361", "Button 14362", "Button 14363", "Button 14371",
      "Button 14364", "Button 14365", "Button 14366", "Button 14372", "Button 14367",
      "Button 14368", "Button 14369", "Edit 14375", "Button 99", "Button 2"}},
    {14350, " FTP Auto", 0, 0, {"Static 14351", "Edit 14352", "Button 99", "Button 2"}},
};

INSTANTIATE_TEST_SUITE_P(Dialogs, TemplateTest, testing::ValuesIn(templateCases),
                         [](const auto& info) { return std::to_string(info.param.id); });

}  // namespace
