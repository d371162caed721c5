#include "find/find_controls.h"

#include <commctrl.h>

#include <cstring>

#include "find/find_commands.h"
#include "find/find_list.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr DWORD noEdge = 0;
constexpr DWORD sunkenEdge = 0x200;
constexpr DWORD statusBarStyle = 0x44000003;
constexpr DWORD listStyle = 0x50011349;  // report, owner data, selection always shown, auto-arrange

struct FindControl {
    int id;
    const char* className;
    const char* text;
    DWORD extendedStyle;
    DWORD style;
    HWND* (*place)(FindWindow* find);
};

template <HWND FindWindow::*field>
HWND* At(FindWindow* find) {
    return &(find->*field);
}

template <int index>
HWND* CheckBoxAt(FindWindow* find) {
    return &find->checkBoxes[index];
}

// Behind the list, in the order of the Tab key.
constexpr FindControl searchControls[] = {
    {findMaskLabel, "Static", "", noEdge, 0x50000000, At<&FindWindow::maskLabel>},
    {findMaskBox, "COMBOBOX", "", sunkenEdge, 0x50210042, At<&FindWindow::maskBox>},
    {findRecurseBox, "BUTTON", "", noEdge, 0x50010003, CheckBoxAt<0>},
    {findLongListBox, "BUTTON", "", noEdge, 0x50010003, CheckBoxAt<1>},
    {findUseFilterBox, "BUTTON", "", noEdge, 0x50010003, CheckBoxAt<2>},
    {findFilterButton, "BUTTON", "...", noEdge, 0x50010000, At<&FindWindow::filterButton>},
};

constexpr u16 controlTexts[] = {0, findMaskLabel, findRecurseBox, findLongListBox, findUseFilterBox,
                                0};

struct CheckBoxOption {
    int control;
    u32 bit;
};

constexpr CheckBoxOption checkBoxOptions[] = {
    {findRecurseBox, FindOptRecurse},
    {findLongListBox, FindOptLongList},
    {findUseFilterBox, FindOptUseFilter},
};

struct ToolButton {
    int bitmap;
    int command;  // 0 is a separator
};

constexpr ToolButton toolButtons[] = {
    {1, findStart},      {2, findStop},        {0, 0}, {12, findGoTo}, {0, 0}, {13, findExportText},
    {14, findExportCsv}, {15, findExportHtml},
};
constexpr u32 toolButtonCount = sizeof toolButtons / sizeof toolButtons[0];

HWND NewControl(FindWindow* find, const FindControl& control) {
    return CreateWindowExA(control.extendedStyle, control.className, control.text, control.style, 0,
                           0, 0, 0, find->window,
                           reinterpret_cast<HMENU>(static_cast<UINT_PTR>(control.id)),
                           find->instance, nullptr);
}

void CreateToolBar(FindWindow* find) {
    constexpr u32 style = 0x800000;
    constexpr u32 bitmaps = 18;
    TBBUTTON buttons[toolButtonCount];
    std::memset(buttons, 0, sizeof buttons);
    for (u32 i = 0; i < toolButtonCount; ++i) {
        buttons[i].iBitmap = toolButtons[i].bitmap;
        buttons[i].idCommand = toolButtons[i].command;
        buttons[i].fsState = TBSTATE_ENABLED;
        buttons[i].fsStyle = toolButtons[i].command != 0 ? TBSTYLE_BUTTON : TBSTYLE_SEP;
    }
    find->toolBar = ShellCreateToolbar(find->window, find->instance, buttons, style, findStart,
                                       toolButtonCount, bitmaps);
}

void ShowUnless(HWND bar, bool hidden) {
    if (bar != nullptr && !hidden) {
        ShowWindow(bar, SW_SHOW);
    }
}

void CreateBars(FindWindow* find) {
    CreateToolBar(find);
    ShowUnless(find->toolBar, (find->options & FindOptToolbarHidden) != 0);
    find->statusBar = CreateStatusWindowA(static_cast<LONG>(statusBarStyle), "", find->window, 0);
    ShowUnless(find->statusBar, (find->options & FindOptStatusHidden) != 0);
}

void ApplyFindView(const FindWindow* find) {
    ShellSetViewStyle(find->list, ViewOfOptions(find->options).style);
}

void CreateFindList(FindWindow* find) {
    constexpr FindControl list = {findList,   WC_LISTVIEWA, "",
                                  sunkenEdge, listStyle,    At<&FindWindow::list>};
    find->list = NewControl(find, list);
    if (find->list == nullptr) {
        return;
    }
    SendMessageA(find->list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_HEADERDRAGDROP);
    ShellPrepareList(find->list);
    char settings[pathSize] = "";
    CoreGetProfilePath(settings);
    InitFindColumns(find);
    ShellLoadColumns(find->columns, findName, settings);
    ShellSetColumns(find->list, find->columns);
    ApplyFindView(find);
}

void ApplyFindFonts(FindWindow* find) {
    constexpr u32 size = 8;
    LOGFONTA description;
    std::memset(&description, 0, sizeof description);
    if (ShellGetDialogFont(find->window, &description, size)) {
        find->font = CreateFontIndirectA(&description);
    }
    HFONT font = find->font;
    if (find->list != nullptr) {
        if (font != nullptr) {
            SendMessageA(find->list, WM_SETFONT, reinterpret_cast<WPARAM>(font), 0);
        }
        font = reinterpret_cast<HFONT>(SendMessageA(find->list, WM_GETFONT, 0, 0));
    }
    if (font == nullptr) {
        return;
    }
    for (const FindControl& control : searchControls) {
        SendMessageA(*control.place(find), WM_SETFONT, reinterpret_cast<WPARAM>(font), 0);
    }
    SendMessageA(find->list, WM_SETFONT, reinterpret_cast<WPARAM>(font), 0);
}

void ApplyFindOptions(FindWindow* find) {
    for (const CheckBoxOption& box : checkBoxOptions) {
        const bool on = (find->options & box.bit) != 0;
        SendDlgItemMessageA(find->window, box.control, BM_SETCHECK,
                            on ? BST_CHECKED : BST_UNCHECKED, 0);
    }
}

void CreateSearchControls(FindWindow* find) {
    for (const FindControl& control : searchControls) {
        *control.place(find) = NewControl(find, control);
    }
    SendMessageA(find->maskBox, CB_LIMITTEXT, findMaskSize - 1, 0);
}

void InitFindTexts(FindWindow* find) {
    InitFindMenu(find);
    CoreApplyDialogTexts(find->window, controlTexts);
    if (find->list != nullptr) {
        ShellColumnTexts(find->list, find->columns);
    }
}

}  // namespace

void CreateFindControls(FindWindow* find) {
    CreateBars(find);
    CreateFindList(find);
    CreateSearchControls(find);
    ApplyFindFonts(find);
    ApplyFindOptions(find);
    InitFindTexts(find);
}

void ReadFindOptions(FindWindow* find) {
    for (const CheckBoxOption& box : checkBoxOptions) {
        const LRESULT on = SendDlgItemMessageA(find->window, box.control, BM_GETCHECK, 0, 0);
        find->options = on != 0 ? find->options | box.bit : find->options & ~box.bit;
    }
}

void SetFindView(FindWindow* find, u32 bits) {
    ShellSetViewStyle(find->list, ViewOfOptions(bits).style);
    find->options = (find->options & ~FindOptViewBits) | bits;
}

}  // namespace quennet
