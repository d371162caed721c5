// Lists, histories, and what windows look like.
//
// Menus, tool bars, columns and icons belong to a display. This host shows no windows of its own,
// so those services leave the window as it is and say that there is nothing.

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "hostkit/host.h"
#include "hostkit/services.h"

namespace hostkit {

namespace {

using namespace quennet;

// Messages of a combo box.
constexpr UINT comboAddString = 0x0143;
constexpr UINT comboDeleteString = 0x0144;
constexpr UINT comboGetCount = 0x0146;
constexpr UINT comboGetText = 0x0148;
constexpr UINT comboGetTextLength = 0x0149;
constexpr UINT comboInsertString = 0x014A;
constexpr UINT comboFindStringExact = 0x0158;

constexpr i32 historyLimit = 30;

/// A row of a column table; `title` 0 ends it.
struct Column {
    u32 title;
    u32 width;
    u32 order;
    u32 item;
    u32 format;
};
static_assert(sizeof(Column) == 20);

struct Placement {
    const char* key;
    i32 standard;
};
constexpr Placement placements[] = {{"X", 80}, {"Y", 60}, {"Width", 640}, {"Height", 400}};

std::shared_ptr<SettingsStore> StoreOf(const char* file) {
    return Host::Current()->GetServices().StoreOf(file);
}

/// Keeps exceptions, which only want of memory raises here, on this side.
template <typename Operation>
void Guarded(Operation operation) {
    try {
        operation();
    } catch (const std::exception&) {
    }
}

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

u32 NumberOf(const std::optional<std::string>& text, u32 standard) {
    unsigned value = 0;
    return text && std::sscanf(text->c_str(), "%u", &value) == 1 ? value : standard;
}

std::string ColumnKey(const Column& column) {
    return "Column" + std::to_string(column.item);
}

extern "C" {

static void MoveUp(HWND window, u32 listId) {
    Guarded([&] { MoveSelected(window, listId, -1); });
}

static void MoveDown(HWND window, u32 listId) {
    Guarded([&] { MoveSelected(window, listId, 1); });
}

static void AddHistory(HWND comboBox, const char* text) {
    const auto words = reinterpret_cast<LPARAM>(text);
    const LRESULT known =
        SendMessageA(comboBox, comboFindStringExact, static_cast<WPARAM>(-1), words);
    if (known >= 0) {
        SendMessageA(comboBox, comboDeleteString, static_cast<WPARAM>(known), 0);
    }
    SendMessageA(comboBox, comboInsertString, 0, words);
    if (SendMessageA(comboBox, comboGetCount, 0, 0) > historyLimit) {
        SendMessageA(comboBox, comboDeleteString, static_cast<WPARAM>(historyLimit), 0);
    }
}

static void SaveHistory(HWND comboBox, const char* path, const char* section, i32 limit) {
    Guarded([&] {
        const auto store = StoreOf(path);
        SettingsBatch batch(*store);
        const auto count = std::min<LRESULT>(SendMessageA(comboBox, comboGetCount, 0, 0), limit);
        for (i32 i = 0; i < limit; ++i) {
            const std::string key = "History" + std::to_string(i + 1);
            if (i < count) {
                store->Write(
                    section, key,
                    EntryText(comboBox, comboGetText, comboGetTextLength, static_cast<WPARAM>(i)));
            } else {
                store->Remove(section, key);
            }
        }
    });
}

static void LoadHistory(HWND comboBox, const char* path, const char* section, i32 limit) {
    Guarded([&] {
        for (i32 i = 0; i < limit; ++i) {
            const auto text = StoreOf(path)->Read(section, "History" + std::to_string(i + 1));
            if (!text) {
                return;
            }
            SendMessageA(comboBox, comboAddString, 0, reinterpret_cast<LPARAM>(text->c_str()));
        }
    });
}

static void LoadPlacement(const char* file, const char* name, i32* x, i32* y, i32* width,
                          i32* height, u32* word) {
    i32* const results[] = {x, y, width, height};
    for (std::size_t i = 0; i < std::size(placements); ++i) {
        *results[i] = placements[i].standard;
    }
    *word = 0;
    Guarded([&] {
        for (std::size_t i = 0; i < std::size(placements); ++i) {
            const auto text = StoreOf(file)->Read(name, placements[i].key);
            *results[i] =
                static_cast<i32>(NumberOf(text, static_cast<u32>(placements[i].standard)));
        }
    });
}

static void SavePlacement(HWND window, const char* file, const char* name) {
    RECT place;
    if (GetWindowRect(window, &place) == FALSE) {
        return;
    }
    const i32 values[] = {place.left, place.top, place.right - place.left,
                          place.bottom - place.top};
    Guarded([&] {
        const auto store = StoreOf(file);
        SettingsBatch batch(*store);
        for (std::size_t i = 0; i < std::size(placements); ++i) {
            store->Write(name, placements[i].key, std::to_string(values[i]));
        }
    });
}

static void LoadColumns(void* columns, const char* name, const char* file, u32) {
    Guarded([&] {
        for (auto* column = static_cast<Column*>(columns); column->title != 0; ++column) {
            const auto text = StoreOf(file)->Read(name, ColumnKey(*column));
            unsigned width = 0;
            unsigned order = 0;
            if (text && std::sscanf(text->c_str(), "%u,%u", &width, &order) == 2) {
                column->width = width;
                column->order = order;
            }
        }
    });
}

static void SaveColumns(const void* columns, const char* name, const char* file) {
    Guarded([&] {
        const auto store = StoreOf(file);
        SettingsBatch batch(*store);
        for (const auto* column = static_cast<const Column*>(columns); column->title != 0;
             ++column) {
            store->Write(name, ColumnKey(*column),
                         std::to_string(column->width) + "," + std::to_string(column->order));
        }
    });
}

static void MenuInit(HWND, const void*) {}
static i32 GetDialogFont(HWND, void*, u32) {
    return 0;
}
static void MoveControl(HWND, i32, i32, i32, i32) {}
static i32 EditFilter(HWND, void*) {
    return 0;
}
static void SetStatusIcon(HWND, u32, u32) {}
static void SetColumns(HWND, const void*) {}
static void GetColumnOrder(HWND, void*) {}
static i32 GetCurrentItem(HWND) {
    return -1;
}
static void SetCurrentItem(HWND, i32) {}
static void PrepareList(HWND) {}
static void SetViewStyle(HWND, u32) {}
static HWND CreateToolbar(HWND, HINSTANCE, const void*, u32, u32, u32, u32, u32, u32) {
    return nullptr;
}
}

}  // namespace

void FillListServices(CoreServices& core, ShellServices& shell) {
    Put<CoreAddHistoryFunction>(core, CoreService::addHistory, AddHistory);
    Put<CoreSaveHistoryFunction>(core, CoreService::saveHistory, SaveHistory);
    Put<CoreLoadHistoryFunction>(core, CoreService::loadHistory, LoadHistory);
    Put<ShellListActionFunction>(shell, ShellService::listAction1, MoveUp);
    Put<ShellListActionFunction>(shell, ShellService::listAction2, MoveDown);
    Put<ShellComboAddFunction>(shell, ShellService::comboAdd, AddHistory);
    Put<ShellLoadPlacementFunction>(shell, ShellService::loadPlacement, LoadPlacement);
    Put<ShellSavePlacementFunction>(shell, ShellService::savePlacement, SavePlacement);
    Put<ShellLoadColumnsFunction>(shell, ShellService::loadColumns, LoadColumns);
    Put<ShellSaveColumnsFunction>(shell, ShellService::saveColumns, SaveColumns);

    Put<ShellMenuInitFunction>(shell, ShellService::menuInit, MenuInit);
    Put<ShellGetDialogFontFunction>(shell, ShellService::getDialogFont, GetDialogFont);
    Put<ShellMoveControlFunction>(shell, ShellService::moveControl, MoveControl);
    Put<ShellEditFilterFunction>(shell, ShellService::editFilter, EditFilter);
    Put<ShellSetStatusIconFunction>(shell, ShellService::setStatusIcon, SetStatusIcon);
    Put<ShellSetColumnsFunction>(shell, ShellService::setColumns, SetColumns);
    Put<ShellColumnTextsFunction>(shell, ShellService::columnTexts, SetColumns);
    Put<ShellGetColumnOrderFunction>(shell, ShellService::getColumnOrder, GetColumnOrder);
    Put<ShellGetCurrentItemFunction>(shell, ShellService::getCurrentItem, GetCurrentItem);
    Put<ShellSetCurrentItemFunction>(shell, ShellService::setCurrentItem, SetCurrentItem);
    Put<ShellPrepareListFunction>(shell, ShellService::prepareList, PrepareList);
    Put<ShellSetViewStyleFunction>(shell, ShellService::setViewStyle, SetViewStyle);
    Put<ShellCreateToolbarFunction>(shell, ShellService::createToolbar, CreateToolbar);
}

}  // namespace hostkit
