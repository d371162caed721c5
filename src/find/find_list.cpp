#include "find/find_list.h"

#include <commctrl.h>
#include <shellapi.h>

#include <cstring>

#include "find/find_lookup.h"
#include "find/find_store.h"
#include "host/services.h"

namespace quennet {

namespace {

enum Column : u32 { nameColumn, sizeColumn, dateColumn, attributeColumn, folderColumn, typeColumn };

constexpr ColumnRow firstColumns[findColumns] = {
    {0xFA2, 150, 0, 0, 0}, {0xFA3, 60, 1, 1, 0x101}, {0xFA4, 105, 2, 2, 0}, {0xFA5, 45, 3, 3, 1},
    {0xFBD, 45, 4, 4, 0},  {0xFA1, 45, 5, 5, 0},     {0, 0, 0, 0, 0},
};

constexpr u32 cellSize = 260;

void Put(LVITEMA* item, const char* text) {
    if (item->pszText != nullptr && item->cchTextMax > 0) {
        CopyCut(item->pszText, static_cast<u32>(item->cchTextMax), text);
    }
}

/// The row's position in the table, which says what is shown; findColumns when there is none.
u32 ColumnOf(const FindWindow* find, u32 subItem) {
    for (u32 column = 0; find->columns[column].title != 0; ++column) {
        if (find->columns[column].subItem == subItem) {
            return column;
        }
    }
    return findColumns;
}

/// The system's number for the icon; all directories have that of a folder.
i32 SystemIcon(const FindRecord& record) {
    SHFILEINFOA info;
    std::memset(&info, 0, sizeof info);
    const bool isDirectory = IsDirectory(record);
    SHGetFileInfoA(isDirectory ? ShellFolderSample() : record.name, 0, &info, sizeof info,
                   SHGFI_SYSICONINDEX | (isDirectory ? 0 : SHGFI_USEFILEATTRIBUTES));
    return info.iIcon;
}

void PutSize(const FindRecord& record, LVITEMA* item) {
    constexpr u64 unknownSize = ~u64{0};
    if (IsDirectory(record) || record.size == unknownSize) {
        return;
    }
    char text[cellSize] = "";
    ShellFormatNumber(&record.size, text);
    Put(item, text);
}

void PutText(const FindWindow* find, u32 column, FindRecord* record, LVITEMA* item) {
    char text[cellSize] = "";
    const FindDirRecord* folder = nullptr;
    switch (column) {
        case nameColumn:
            Put(item, record->name);
            break;
        case sizeColumn:
            PutSize(*record, item);
            break;
        case dateColumn:
            ShellFormatDate(text, record->date, record->time, cellSize);
            Put(item, text);
            break;
        case attributeColumn:
            ShellFormatAttributes(text, record->attributes);
            Put(item, text);
            break;
        case folderColumn:
            folder = DirectoryByNumber(find, record->directoryNumber);
            if (folder != nullptr) {
                Put(item, folder->path);
            }
            break;
        case typeColumn:
            if (record->type[0] == 0) {
                FillTypeName(record);
            }
            Put(item, record->type);
            break;
        default:
            break;
    }
}

}  // namespace

void InitFindColumns(FindWindow* find) {
    std::memcpy(find->columns, firstColumns, sizeof firstColumns);
}

void FillFindCell(FindWindow* find, LVITEMA* item) {
    const ListLock lock;
    FindRecord* record = item->iItem >= 0 ? HitAtRow(find, static_cast<u32>(item->iItem)) : nullptr;
    if (record == nullptr) {
        return;
    }
    const u32 column = ColumnOf(find, static_cast<u32>(item->iSubItem));
    if ((item->mask & LVIF_TEXT) != 0) {
        PutText(find, column, record, item);
    }
    if (column != nameColumn) {
        return;
    }
    if ((item->mask & LVIF_IMAGE) != 0) {
        if (record->icon == -1) {
            record->icon = SystemIcon(*record);
        }
        item->iImage = record->icon;
    }
    if ((item->mask & LVIF_INDENT) != 0) {
        item->iIndent = 0;
    }
}

}  // namespace quennet
