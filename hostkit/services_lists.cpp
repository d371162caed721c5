// List boxes, and the histories of combo boxes.

#include <algorithm>
#include <cstring>
#include <string>

#include "hostkit/service_help.h"

namespace hostkit {

namespace {

using namespace quennet;

constexpr i32 historyLimit = 30;

/// Text of an entry of a list or combo box, empty when there is no such entry.
std::string EntryText(HWND box, UINT getText, UINT getLength, WPARAM entry) {
    const LRESULT length = SendMessageA(box, getLength, entry, 0);
    if (length <= 0) {
        return {};
    }
    std::string text(static_cast<std::size_t>(length) + 1, '\0');
    SendMessageA(box, getText, entry, reinterpret_cast<LPARAM>(text.data()));
    text.resize(std::strlen(text.c_str()));
    return text;
}

/// Moves the selected entry of a list box, with its data, and keeps it selected.
void MoveSelected(HWND dialog, u32 listId, LRESULT distance) {
    const HWND list = GetDlgItem(dialog, static_cast<INT>(listId));
    const LRESULT from = SendMessageA(list, LB_GETCURSEL, 0, 0);
    const LRESULT to = from + distance;
    if (from == LB_ERR || to < 0 || to >= SendMessageA(list, LB_GETCOUNT, 0, 0)) {
        return;
    }
    const auto entry = static_cast<WPARAM>(from);
    const std::string text = EntryText(list, LB_GETTEXT, LB_GETTEXTLEN, entry);
    const LRESULT data = SendMessageA(list, LB_GETITEMDATA, entry, 0);
    SendMessageA(list, LB_DELETESTRING, entry, 0);
    SendMessageA(list, LB_INSERTSTRING, static_cast<WPARAM>(to),
                 reinterpret_cast<LPARAM>(text.c_str()));
    SendMessageA(list, LB_SETITEMDATA, static_cast<WPARAM>(to), data);
    SendMessageA(list, LB_SETCURSEL, static_cast<WPARAM>(to), 0);
}

extern "C" {

static void MoveUp(HWND window, u32 listId) {
    MoveSelected(window, listId, -1);
}

static void MoveDown(HWND window, u32 listId) {
    MoveSelected(window, listId, 1);
}

/// The newest stands first, once; what is in the field stays.
static void AddHistory(HWND comboBox, const char* text) {
    if (*text == '\0') {
        return;
    }
    std::string field(static_cast<std::size_t>(GetWindowTextLengthA(comboBox)) + 1, '\0');
    GetWindowTextA(comboBox, field.data(), static_cast<INT>(field.size()));
    const auto words = reinterpret_cast<LPARAM>(text);
    const LRESULT known =
        SendMessageA(comboBox, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), words);
    if (known >= 0) {
        SendMessageA(comboBox, CB_DELETESTRING, static_cast<WPARAM>(known), 0);
    }
    SendMessageA(comboBox, CB_INSERTSTRING, 0, words);
    if (SendMessageA(comboBox, CB_GETCOUNT, 0, 0) > historyLimit) {
        SendMessageA(comboBox, CB_DELETESTRING, static_cast<WPARAM>(historyLimit), 0);
    }
    SetWindowTextA(comboBox, field.c_str());
}

static void SaveHistory(HWND comboBox, const char*, const char* section, i32 limit) {
    KeepForWindow([&](SettingsStore& store) {
        const auto count = std::min<LRESULT>(SendMessageA(comboBox, CB_GETCOUNT, 0, 0), limit);
        for (i32 i = 0; i < limit; ++i) {
            const std::string key = "History" + std::to_string(i + 1);
            if (i < count) {
                store.Write(
                    section, key,
                    EntryText(comboBox, CB_GETLBTEXT, CB_GETLBTEXTLEN, static_cast<WPARAM>(i)));
            } else {
                store.Remove(section, key);
            }
        }
    });
}

static void LoadHistory(HWND comboBox, const char* path, const char* section, i32 limit) {
    for (i32 i = 0; i < limit; ++i) {
        const auto text = StoreOf(path)->Read(section, "History" + std::to_string(i + 1));
        if (!text) {
            return;
        }
        SendMessageA(comboBox, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text->c_str()));
    }
}
}

}  // namespace

void FillListServices(CoreServices& core, ShellServices& shell) {
    Put<CoreAddHistoryFunction, AddHistory>(core, CoreService::addHistory);
    Put<CoreSaveHistoryFunction, SaveHistory>(core, CoreService::saveHistory);
    Put<CoreLoadHistoryFunction, LoadHistory>(core, CoreService::loadHistory);
    Put<ShellListActionFunction, MoveUp>(shell, ShellService::listAction1);
    Put<ShellListActionFunction, MoveDown>(shell, ShellService::listAction2);
    Put<ShellComboAddFunction, AddHistory>(shell, ShellService::comboAdd);
}

}  // namespace hostkit
