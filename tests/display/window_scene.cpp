// A window with a menu bar, a tool bar, an editable drop-down list and a list of what it was told.

#include "display/window_scene.h"

#include <commctrl.h>
#include <commdlg.h>

#include <cstring>

namespace {

enum : UINT {
    idSave = 10,
    idText,
    idPage,
    idQuit,
    idWide,
    idNarrow,
    idBar,
    idMask,
    idMaskLabel,
    idList
};

HWND toolBar = nullptr;
std::string savePath;

HMENU MakeMenu() {
    const HMENU bar = CreateMenu();
    const HMENU file = CreatePopupMenu();
    const HMENU exporting = CreatePopupMenu();
    const HMENU view = CreatePopupMenu();
    AppendMenuA(exporting, MF_STRING, idText, "&Text");
    AppendMenuA(exporting, MF_STRING | MF_GRAYED, idPage, "&Page");
    AppendMenuA(file, MF_STRING, idSave, "&Save as...\tF2");
    AppendMenuA(file, MF_POPUP, reinterpret_cast<UINT_PTR>(exporting), "&Export");
    AppendMenuA(file, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(file, MF_STRING, idQuit, "&Quit");
    AppendMenuA(view, MF_STRING | MF_CHECKED, idBar, "&Tool bar");
    AppendMenuA(view, MF_SEPARATOR, 0, nullptr);
    AppendMenuA(view, MF_STRING, idWide, "&Wide");
    AppendMenuA(view, MF_STRING, idNarrow, "&Narrow");
    AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(file), "&File");
    AppendMenuA(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(view), "&View");
    return bar;
}

HWND MakeControl(HWND parent, const char* className, UINT id, DWORD style, const char* text = "") {
    return CreateWindowExA(0, className, text, style | WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, parent,
                           reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), nullptr, nullptr);
}

void Create(HWND window) {
    SetMenu(window, MakeMenu());
    toolBar = MakeControl(window, TOOLBARCLASSNAMEA, 0, TBSTYLE_TOOLTIPS);
    const TBBUTTON buttons[] = {{0, idSave, TBSTATE_ENABLED, TBSTYLE_BUTTON, {}, 0, 0},
                                {0, 0, TBSTATE_ENABLED, TBSTYLE_SEP, {}, 0, 0},
                                {1, idText, TBSTATE_ENABLED, TBSTYLE_BUTTON, {}, 0, 0},
                                {2, idPage, 0, TBSTYLE_BUTTON, {}, 0, 0}};
    SendMessageA(toolBar, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
    SendMessageA(toolBar, TB_ADDBUTTONSA, 4, reinterpret_cast<LPARAM>(buttons));
    MakeControl(window, "Static", idMaskLabel, 0, "&Mask:");
    MakeControl(window, "ComboBox", idMask, 0x00210042);
    for (const char* mask : {"*.txt", "*.cpp;*.h"}) {
        SendDlgItemMessageA(window, idMask, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(mask));
    }
    MakeControl(window, "ListBox", idList, LBS_NOTIFY | WS_TABSTOP);
}

void Layout(HWND window, LPARAM size) {
    const int width = LOWORD(size);
    SendMessageA(toolBar, WM_SIZE, 0, size);
    MoveWindow(GetDlgItem(window, idMaskLabel), 8, 32, 56, 16, TRUE);
    MoveWindow(GetDlgItem(window, idMask), 72, 32, width - 80, 120, TRUE);
    MoveWindow(GetDlgItem(window, idList), 0, 64, width, HIWORD(size) - 64, TRUE);
}

void Note(HWND window, const std::string& text) {
    SendDlgItemMessageA(window, idList, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
}

void Save(HWND window) {
    char path[260] = "";
    savePath.copy(path, sizeof(path) - 1);
    OPENFILENAMEA request = {};
    request.lStructSize = OPENFILENAME_SIZE_VERSION_400A;
    request.hwndOwner = window;
    request.lpstrFilter = "Text List\0*.txt\0All Files\0*.*\0";
    request.lpstrFile = path;
    request.nMaxFile = sizeof(path);
    request.Flags = OFN_OVERWRITEPROMPT | OFN_HIDEREADONLY;
    request.lpstrDefExt = "txt";
    Note(window, GetSaveFileNameA(&request) ? std::string("saved ") + (path + request.nFileOffset)
                                            : "not saved");
}

void Command(HWND window, WPARAM wParam) {
    const UINT id = LOWORD(wParam);
    switch (id) {
        case idSave:
            return Save(window);
        case idQuit:
            DestroyWindow(window);
            return;
        case idMask: {
            char mask[40] = "";
            GetDlgItemTextA(window, idMask, mask, sizeof(mask));
            if (HIWORD(wParam) == CBN_SELCHANGE) {
                Note(window, std::string("chosen ") + mask);
            }
            return;
        }
        case idList:
            return;
        default:
            return Note(window, "command " + std::to_string(id));
    }
}

LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
            Create(window);
            break;
        case WM_SIZE:
            Layout(window, lParam);
            break;
        case WM_SETFOCUS:
            SetFocus(GetDlgItem(window, idList));
            break;
        case WM_COMMAND:
            Command(window, wParam);
            break;
        case WM_INITMENUPOPUP:
            if (lParam == 1) {
                CheckMenuRadioItem(GetMenu(window), idWide, idNarrow, idNarrow, MF_BYCOMMAND);
            }
            break;
        case WM_NOTIFY: {
            auto* tip = reinterpret_cast<NMTTDISPINFOA*>(lParam);
            if (tip->hdr.code == TTN_GETDISPINFOA) {
                const UINT_PTR id = tip->hdr.idFrom;
                std::strcpy(tip->szText, id == idSave ? "Save" : id == idText ? "Text" : "Page");
            }
            break;
        }
        case WM_DESTROY:
            PostQuitMessage(0);
            break;
        default:
            break;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace

void RunWindow(const std::string& path) {
    savePath = path;
    WNDCLASSEXA windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    windowClass.lpfnWndProc = Procedure;
    windowClass.lpszClassName = "scene";
    RegisterClassExA(&windowClass);
    const HWND window = CreateWindowExA(0, "scene", "Scene", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                                        400, 300, nullptr, nullptr, nullptr, nullptr);
    SetFocus(window);
    MSG message = {};
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (!IsDialogMessageA(window, &message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
}
