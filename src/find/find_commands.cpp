#include "find/find_commands.h"

#include <commctrl.h>

#include "host/services.h"

namespace quennet {

namespace {

constexpr u16 separatorId = 0xFFFF;
constexpr u16 separatorFlag = 0x0800;

struct MenuEntry {
    u16 id;
    u16 flags;
};

constexpr MenuEntry separator = {separatorId, separatorFlag};

constexpr MenuEntry exportMenu[] = {{findExportText, 0}, {findExportCsv, 0}, {findExportHtml, 0}};
constexpr MenuEntry fileMenu[] = {{0x21C, 0}, separator, {findClose, 0}};
constexpr MenuEntry viewMenu[] = {{findToolBar, 0},   {findStatusBar, 0}, separator,
                                  {findViewIcons, 0}, {findViewSmall, 0}, {findViewList, 0},
                                  {findViewReport, 0}};
constexpr MenuEntry findMenu[] = {{findStart, 0}, {findStop, 0}, separator, {findGoTo, 0}};
constexpr MenuEntry filterMenu[] = {{findEditFilter, 0}};

template <std::size_t count>
struct MenuLevel {
    MenuRow rows[count + 1] = {};  // with the row that ends it

    explicit MenuLevel(const MenuEntry (&entries)[count]) {
        for (std::size_t i = 0; i < count; ++i) {
            rows[i].id = entries[i].id;
            rows[i].flags = entries[i].flags;
        }
    }
};

constexpr u16 commandsWithStates[] = {findExportText, findExportCsv, findExportHtml,
                                      findStart,      findStop,      findGoTo};
static_assert(sizeof commandsWithStates / sizeof commandsWithStates[0] + 1 == findCommandStates);

constexpr FindView views[] = {
    {FindOptViewIcons, 0, findViewIcons},
    {FindOptViewSmall, 2, findViewSmall},
    {FindOptViewList, 3, findViewList},
    {0, 1, findViewReport},
};

void Show(FindWindow* find, u32 command, u32 disabled) {
    HMENU menu = GetMenu(find->window);
    if (menu != nullptr) {
        EnableMenuItem(menu, command, MF_BYCOMMAND | (disabled != 0 ? MF_GRAYED : MF_ENABLED));
    }
    SendMessageA(find->toolBar, TB_ENABLEBUTTON, command, disabled == 0 ? TRUE : FALSE);
}

void CheckBar(HMENU menu, u32 command, HWND bar) {
    const bool shown = bar != nullptr && IsWindowVisible(bar);
    CheckMenuItem(menu, command, MF_BYCOMMAND | (shown ? MF_CHECKED : MF_UNCHECKED));
}

}  // namespace

const FindView& ViewOfOptions(u32 options) {
    const u32 bits = options & FindOptViewBits;
    for (const FindView& view : views) {
        if (view.bits == bits) {
            return view;
        }
    }
    return views[3];
}

const FindView* ViewOfCommand(u32 command) {
    for (const FindView& view : views) {
        if (view.command == command) {
            return &view;
        }
    }
    return nullptr;
}

void InitFindMenu(FindWindow* find) {
    MenuLevel exports(exportMenu);
    MenuLevel file(fileMenu);
    file.rows[0].entries = WordFromPointer(exports.rows);
    MenuLevel view(viewMenu);
    MenuLevel search(findMenu);
    MenuLevel filter(filterMenu);
    constexpr MenuEntry bar[] = {{0x352, 0}, {0x12B, 0}, {0x21F, 0}, {0x190, 0}};
    MenuLevel menuBar(bar);
    menuBar.rows[0].entries = WordFromPointer(file.rows);
    menuBar.rows[1].entries = WordFromPointer(view.rows);
    menuBar.rows[2].entries = WordFromPointer(search.rows);
    menuBar.rows[3].entries = WordFromPointer(filter.rows);
    ShellMenuInit(find->window, menuBar.rows);
}

void CheckFindMenu(FindWindow* find) {
    HMENU menu = GetMenu(find->window);
    if (menu == nullptr) {
        return;
    }
    CheckMenuRadioItem(menu, findViewIcons, findViewReport, ViewOfOptions(find->options).command,
                       MF_BYCOMMAND);
    CheckBar(menu, findToolBar, find->toolBar);
    CheckBar(menu, findStatusBar, find->statusBar);
}

void ResetCommandStates(FindWindow* find) {
    u32 row = 0;
    for (const u16 command : commandsWithStates) {
        find->commandStates[row++] = {command, 0, 0};
    }
    find->commandStates[row] = {};
}

bool WantsDisabled(u32 command, bool hasHits, bool isBusy) {
    if (command == findStart) {
        return isBusy;
    }
    if (command == findStop) {
        return !isBusy;
    }
    return !hasHits;
}

void UpdateCommandStates(FindWindow* find) {
    SendMessageA(find->window, commandStatesMessage, 0, 0);
}

void ApplyCommandStates(FindWindow* find) {
    const bool hasHits = find->hits.IsSet();
    const bool isBusy = find->busy.IsSet();
    for (FindCommandState* row = find->commandStates; row->command != 0; ++row) {
        row->wanted = WantsDisabled(row->command, hasHits, isBusy) ? 1 : 0;
        if (row->wanted != row->applied) {
            row->applied = row->wanted;
            Show(find, row->command, row->wanted);
        }
    }
}

bool IsCommandDisabled(const FindWindow* find, u32 command) {
    for (const FindCommandState* row = find->commandStates; row->command != 0; ++row) {
        if (row->command == command) {
            return row->wanted == 1;
        }
    }
    return false;
}

}  // namespace quennet
