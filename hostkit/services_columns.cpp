// List views: their columns, which the settings keep, their view and their current row.

#include <windows.h>

#include <commctrl.h>
#include <shellapi.h>

#include <algorithm>
#include <charconv>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/service_help.h"
#include "hostkit/texts.h"

namespace hostkit {

namespace {

using namespace quennet;

// What a stored width may be, in pixels: a column can always be seen and taken hold of.
constexpr u32 narrowest = 12;
constexpr u32 widest = 4000;

/// The rows of a table, without its end.
template <typename Row>
std::vector<Row*> RowsOf(Row* table) {
    std::vector<Row*> rows;
    for (Row* row = table; (row->title & 0xFFFF) != 0; ++row) {
        rows.push_back(row);
    }
    return rows;
}

/// The columns from left to right, by their numbers in the table. Rows with the same order stand as
/// in the table.
std::vector<INT> OrderOf(const std::vector<const ColumnRow*>& rows) {
    std::vector<INT> numbers(rows.size());
    std::iota(numbers.begin(), numbers.end(), 0);
    std::ranges::stable_sort(
        numbers, {}, [&](INT number) { return rows[static_cast<std::size_t>(number)]->order; });
    return numbers;
}

const char* TitleOf(const ColumnRow& row) {
    const char* title = TextOfId(row.title);
    return title != nullptr ? title : "";
}

std::string ColumnKey(const ColumnRow& column) {
    return "Column" + std::to_string(column.subItem);
}

struct StoredColumn {
    u32 width;
    u32 order;
};

/// «WIDTH,ORDER»; nothing for any other text.
std::optional<StoredColumn> ReadColumn(const std::optional<std::string>& text) {
    if (!text) {
        return std::nullopt;
    }
    StoredColumn column = {};
    const char* end = text->data() + text->size();
    const auto [comma, widthError] = std::from_chars(text->data(), end, column.width);
    if (widthError != std::errc() || comma == end || *comma != ',') {
        return std::nullopt;
    }
    const auto [rest, orderError] = std::from_chars(comma + 1, end, column.order);
    if (orderError != std::errc() || rest != end) {
        return std::nullopt;
    }
    return column;
}

/// Whether each place from 0 on is taken once.
bool IsOrder(std::vector<u32> places) {
    std::ranges::sort(places);
    for (std::size_t place = 0; place < places.size(); ++place) {
        if (places[place] != place) {
            return false;
        }
    }
    return true;
}

void InsertColumn(HWND list, std::size_t number, const ColumnRow& row) {
    std::string title = TitleOf(row);
    LVCOLUMNA column = {};
    column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    column.fmt = static_cast<INT>(row.format & LVCFMT_JUSTIFYMASK);
    column.cx = static_cast<INT>(row.width);
    column.pszText = title.data();
    column.iSubItem = static_cast<INT>(row.subItem);
    SendMessageA(list, LVM_INSERTCOLUMNA, number, reinterpret_cast<LPARAM>(&column));
}

extern "C" {

static void SetColumns(HWND list, const ColumnRow* columns) {
    while (SendMessageA(list, LVM_DELETECOLUMN, 0, 0) != 0) {
    }
    const auto rows = RowsOf(columns);
    for (std::size_t number = 0; number < rows.size(); ++number) {
        InsertColumn(list, number, *rows[number]);
    }
    std::vector<INT> order = OrderOf(rows);
    SendMessageA(list, LVM_SETCOLUMNORDERARRAY, order.size(),
                 reinterpret_cast<LPARAM>(order.data()));
}

static void ColumnTexts(HWND list, const ColumnRow* columns) {
    const auto rows = RowsOf(columns);
    for (std::size_t number = 0; number < rows.size(); ++number) {
        std::string title = TitleOf(*rows[number]);
        LVCOLUMNA column = {};
        column.mask = LVCF_TEXT;
        column.pszText = title.data();
        SendMessageA(list, LVM_SETCOLUMNA, number, reinterpret_cast<LPARAM>(&column));
    }
}

/// A list without these columns leaves the table as it is.
static void GetColumnOrder(HWND list, ColumnRow* columns) {
    const auto rows = RowsOf(columns);
    std::vector<INT> order(rows.size(), -1);
    if (SendMessageA(list, LVM_GETCOLUMNORDERARRAY, order.size(),
                     reinterpret_cast<LPARAM>(order.data())) == 0 ||
        !IsOrder({order.begin(), order.end()})) {
        return;
    }
    for (u32 place = 0; place < order.size(); ++place) {
        const auto number = static_cast<std::size_t>(order[place]);
        rows[number]->order = place;
        // LVM_GETCOLUMNWIDTH would give that of an item while another view is shown.
        LVCOLUMNA column = {};
        column.mask = LVCF_WIDTH;
        if (SendMessageA(list, LVM_GETCOLUMNA, number, reinterpret_cast<LPARAM>(&column)) != 0) {
            rows[number]->width = static_cast<u32>(column.cx);
        }
    }
}

/// A width that can't be is brought to one that can; an order is taken whole or not at all.
static void LoadColumns(ColumnRow* columns, const char* name, const char* file, u32) {
    const auto rows = RowsOf(columns);
    std::vector<u32> places;
    for (ColumnRow* row : rows) {
        if (const auto stored = ReadColumn(StoreOf(file)->Read(name, ColumnKey(*row)))) {
            row->width = std::clamp(stored->width, narrowest, widest);
            places.push_back(stored->order);
        }
    }
    if (places.size() == rows.size() && IsOrder(places)) {
        for (std::size_t number = 0; number < rows.size(); ++number) {
            rows[number]->order = places[number];
        }
    }
}

static void SaveColumns(const ColumnRow* columns, const char* name, const char*) {
    KeepForWindow([&](SettingsStore& store) {
        for (const ColumnRow* row : RowsOf(columns)) {
            store.Write(name, ColumnKey(*row),
                        std::to_string(row->width) + "," + std::to_string(row->order));
        }
    });
}

/// Icons are the system's: their list is borrowed.
static void PrepareList(HWND list) {
    SendMessageA(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
    SHFILEINFOA any = {};
    const DWORD_PTR icons = SHGetFileInfoA("file", FILE_ATTRIBUTE_NORMAL, &any, sizeof(any),
                                           SHGFI_SYSICONINDEX | SHGFI_USEFILEATTRIBUTES);
    for (const WPARAM size : {WPARAM{LVSIL_NORMAL}, WPARAM{LVSIL_SMALL}}) {
        SendMessageA(list, LVM_SETIMAGELIST, size, static_cast<LPARAM>(icons));
    }
}

/// The views have the numbers of the list's own styles.
static void SetViewStyle(HWND list, u32 view) {
    const LONG style = GetWindowLongA(list, GWL_STYLE);
    const LONG wanted = view <= LVS_LIST ? static_cast<LONG>(view) : LVS_REPORT;
    SetWindowLongA(list, GWL_STYLE, (style & ~LONG{LVS_TYPEMASK}) | wanted);
    InvalidateRect(list, nullptr, TRUE);
}

static i32 GetCurrentItem(HWND list) {
    return static_cast<i32>(
        SendMessageA(list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
}

/// The only one that is selected, and in sight.
static void SetCurrentItem(HWND list, i32 item) {
    if (item < 0 || item >= SendMessageA(list, LVM_GETITEMCOUNT, 0, 0)) {
        return;
    }
    LVITEMA state = {};
    state.stateMask = LVIS_SELECTED;
    SendMessageA(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(&state));
    state.state = LVIS_FOCUSED | LVIS_SELECTED;
    state.stateMask = LVIS_FOCUSED | LVIS_SELECTED;
    const auto number = static_cast<WPARAM>(item);
    SendMessageA(list, LVM_SETITEMSTATE, number, reinterpret_cast<LPARAM>(&state));
    SendMessageA(list, LVM_ENSUREVISIBLE, number, FALSE);
}
}

}  // namespace

void FillColumnServices(ShellServices& shell) {
    Put<ShellSetColumnsFunction, SetColumns>(shell, ShellService::setColumns);
    Put<ShellColumnTextsFunction, ColumnTexts>(shell, ShellService::columnTexts);
    Put<ShellGetColumnOrderFunction, GetColumnOrder>(shell, ShellService::getColumnOrder);
    Put<ShellLoadColumnsFunction, LoadColumns>(shell, ShellService::loadColumns);
    Put<ShellSaveColumnsFunction, SaveColumns>(shell, ShellService::saveColumns);
    Put<ShellPrepareListFunction, PrepareList>(shell, ShellService::prepareList);
    Put<ShellSetViewStyleFunction, SetViewStyle>(shell, ShellService::setViewStyle);
    Put<ShellGetCurrentItemFunction, GetCurrentItem, -1>(shell, ShellService::getCurrentItem);
    Put<ShellSetCurrentItemFunction, SetCurrentItem>(shell, ShellService::setCurrentItem);
}

}  // namespace hostkit
