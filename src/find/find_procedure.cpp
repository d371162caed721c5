// The window lives on the thread of message 45, its run on a thread of its own, and the end of the
// connection on a third. The session's word for the window changes under ShellListLock, so that the
// third finds a record that is there.
//
// The record outlives its window where a call below is still at work with it: behind a dialog, say,
// that stood open while the window was closed.

#include "find/find_procedure.h"

#include <commctrl.h>

#include "control/message_wait.h"
#include "find/find_commands.h"
#include "find/find_controls.h"
#include "find/find_export.h"
#include "find/find_list.h"
#include "find/find_lookup.h"
#include "find/find_size.h"
#include "find/find_store.h"
#include "find/find_summary.h"
#include "find/find_worker.h"
#include "host/services.h"

namespace quennet {

namespace {

FindWindow* RecordOf(HWND window) {
    return reinterpret_cast<FindWindow*>(GetWindowLongPtrA(window, GWLP_USERDATA));
}

void FreeRecord(FindWindow* find) {
    if (find->font != nullptr) {
        DeleteObject(find->font);
    }
    void* block = find;
    CoreFree(&block);
}

// --- Commands ------------------------------------------------------------------------------------

void GoToCurrentItem(FindWindow* find) {
    char name[findNameSize] = "";
    char directory[findPathSize] = "";
    ResolveCurrentItem(find, name, directory);
    if (name[0] != 0 && find->goTo != nullptr) {
        find->goTo(find->session, name, directory);
    }
}

void StopCommand(FindWindow* find) {
    if (find->busy.IsSet()) {
        StopFind(find);
    }
}

void Close(FindWindow* find) {
    PostMessageA(find->window, WM_CLOSE, 0, 0);
}

void ToggleToolBar(FindWindow* find) {
    ToggleFindBar(find, find->toolBar, FindOptToolbarHidden);
}

void ToggleStatusBar(FindWindow* find) {
    ToggleFindBar(find, find->statusBar, FindOptStatusHidden);
}

void EditFilter(FindWindow* find) {
    ShellEditFilter(find->window, find->filter);
}

void FocusList(FindWindow* find) {
    SetFocus(find->list);
}

struct CommandHandler {
    u32 command;
    void (*handle)(FindWindow* find);
};

constexpr CommandHandler commandHandlers[] = {
    {findStart, StartFind},
    {findStop, StopCommand},
    {findGoTo, GoToCurrentItem},
    {findExportText, ExportText},
    {findExportCsv, ExportCsv},
    {findExportHtml, ExportHtml},
    {findClose, Close},
    {findToolBar, ToggleToolBar},
    {findStatusBar, ToggleStatusBar},
    {findFilterButton, EditFilter},
    {findEditFilter, EditFilter},
    {findRunEnded, FocusList},
    {findRecurseBox, ReadFindOptions},
    {findLongListBox, ReadFindOptions},
    {findUseFilterBox, ReadFindOptions},
};

void HandleCommand(FindWindow* find, u32 command) {
    if (IsCommandDisabled(find, command)) {
        return;
    }
    const FindView* view = ViewOfCommand(command);
    if (view != nullptr) {
        SetFindView(find, view->bits);
        return;
    }
    for (const CommandHandler& handler : commandHandlers) {
        if (handler.command == command) {
            handler.handle(find);
            return;
        }
    }
}

// --- Opening and closing -------------------------------------------------------------------------

/// A connection has one window: false when another thread has opened it meanwhile.
bool TakePlace(FindWindow* find) {
    const ListLock lock;
    const bool isFree = find->session->findWindow == nullptr;
    if (isFree) {
        find->session->findWindow = find;
    }
    return isFree;
}

void LeavePlace(FindWindow* find) {
    const ListLock lock;
    if (find->session->findWindow == find) {
        find->session->findWindow = nullptr;
    }
}

void Create(FindWindow* find, HWND window) {
    constexpr u32 windowKind = 8;
    SetWindowLongPtrA(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(find));
    find->separator = '\\';
    find->window = window;
    if (!TakePlace(find) || !ShellRegisterWindow(window, windowKind)) {
        SendMessageA(window, WM_CLOSE, 0, 0);
        return;
    }
    CreateFindControls(find);
    ResetCommandStates(find);
    UpdateCommandStates(find);
}

/// Ends the run, if there is one, while the thread's messages are served: the worker sends some.
void AwaitRun(FindWindow* find) {
    constexpr u32 pauseMilliseconds = 10;
    find->closing.Store(1);
    MessageWait wait;
    for (u32 waited = 0; HasWorker(find); waited += pauseMilliseconds) {
        PressWorker(find, waited);
        wait.Pause(pauseMilliseconds);
    }
}

/// A second close finds the first one waiting for the run.
void CloseWindow(FindWindow* find) {
    if (find->closing.IsSet()) {
        return;
    }
    AwaitRun(find);
    if (find->window != nullptr) {
        DestroyWindow(find->window);
    }
}

void SaveSettings(FindWindow* find) {
    constexpr u32 hostsBit = 1;
    char settings[pathSize] = "";
    CoreGetProfilePath(settings);
    ShellSavePlacement(find->window, settings, findName);
    ReadFindOptions(find);
    ShellOptionWord() = (ShellOptionWord() & hostsBit) | find->options;
    if (find->list != nullptr) {
        ShellGetColumnOrder(find->list, find->columns);
        ShellSaveColumns(find->columns, findName, settings);
    }
}

void Destroy(FindWindow* find, HWND window) {
    AwaitRun(find);
    SetWindowLongPtrA(window, GWLP_USERDATA, 0);
    ShellUnregisterWindow(window);
    if (find->filterButton != nullptr) {
        SaveSettings(find);  // the controls are there to tell
    }
    FreeStore(find);
    LeavePlace(find);
    find->session = nullptr;
    find->window = nullptr;
}

// --- Messages ------------------------------------------------------------------------------------

void ShowSelection(FindWindow* find) {
    ReadSelection(find);
    ShowFindSummary(find, find->selected, selectionSummary);
    UpdateCommandStates(find);
}

void HandleNotification(FindWindow* find, WPARAM from, LPARAM lParam) {
    const auto* header = reinterpret_cast<const NMHDR*>(lParam);
    if (header->code == TTN_GETDISPINFOA) {
        auto* tip = reinterpret_cast<NMTTDISPINFOA*>(lParam);
        CoreLoadText(static_cast<u32>(header->idFrom) + toolTipOffset, tip->szText,
                     sizeof tip->szText);
    } else if (header->code == LVN_GETDISPINFOA) {
        FillFindCell(find, &reinterpret_cast<NMLVDISPINFOA*>(lParam)->item);
    } else if ((header->code == LVN_ITEMCHANGED || header->code == LVN_ODSTATECHANGED ||
                header->code == LVN_ITEMACTIVATE) &&
               from == findList) {
        ShowSelection(find);
    }
}

/// True when the size is known and the system is to ask no further.
bool LimitSize(const FindWindow* find, LPARAM lParam) {
    if (find->minimumWidth == 0) {
        return false;
    }
    auto* limits = reinterpret_cast<MINMAXINFO*>(lParam);
    limits->ptMinTrackSize.x = find->minimumWidth;
    limits->ptMinTrackSize.y = find->minimumHeight;
    return true;
}

void Handle(FindWindow* find, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    constexpr LPARAM viewMenu = 1;
    switch (message) {
        case WM_DESTROY:
            Destroy(find, window);
            break;
        case WM_SIZE:
            ResizeFindWindow(find, message, wParam, lParam);
            break;
        case WM_SETFOCUS:
            SetFocus(find->list);
            UpdateCommandStates(find);
            break;
        case WM_NOTIFY:
            HandleNotification(find, wParam, lParam);
            break;
        case WM_COMMAND:
        case WM_SYSCOMMAND:
            HandleCommand(find, LOWORD(wParam));
            break;
        case WM_INITMENUPOPUP:
            if (lParam == viewMenu) {
                CheckFindMenu(find);
            }
            break;
        case commandStatesMessage:
            ApplyCommandStates(find);
            break;
        default:
            break;
    }
}

}  // namespace

FindWindowUse::FindWindowUse(FindWindow* find) : find_(find) {
    if (find_ != nullptr) {
        ++find_->uses;
    }
}

FindWindowUse::~FindWindowUse() {
    if (find_ != nullptr && --find_->uses == 0 && find_->session == nullptr) {
        FreeRecord(find_);
    }
}

LRESULT CALLBACK FindWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    FindWindow* find = RecordOf(window);
    if (message == WM_CREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        find = static_cast<FindWindow*>(creation->lpCreateParams);
    }
    const FindWindowUse use(find);
    if (find == nullptr) {
        return DefWindowProcA(window, message, wParam, lParam);
    }
    if (message == WM_CREATE) {
        Create(find, window);
    } else if (message == WM_CLOSE) {
        CloseWindow(find);
        return 0;
    } else if (message == WM_GETMINMAXINFO && LimitSize(find, lParam)) {
        return 1;
    } else {
        Handle(find, window, message, wParam, lParam);
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace quennet
