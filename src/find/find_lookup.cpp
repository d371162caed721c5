#include "find/find_lookup.h"

#include <commctrl.h>
#include <shellapi.h>

#include <cstring>

#include "find/find_store.h"
#include "host/services.h"

namespace quennet {

namespace {

/// What the system calls a kind of file; empty when it has no word for it.
void TypeNameOf(const char* path, UINT flags, char* type) {
    SHFILEINFOA info;
    std::memset(&info, 0, sizeof info);
    SHGetFileInfoA(path, 0, &info, sizeof info, SHGFI_TYPENAME | flags);
    CopyCut(type, typeNameSize, info.szTypeName);
}

/// "Zip-File" for a type that the system does not know, "File" without an extension.
void MakeTypeName(FindRecord* record) {
    const char* extension = record->name + record->extension;
    if (extension[0] != 0) {
        CopyCut(record->type, typeNameSize, extension);
        ShellUpperFirst(record->type);
        ShellAppendText(record->type, "-", typeNameSize);
    }
    ShellAppendText(record->type, ShellFileWord(), typeNameSize);
}

/// The next row behind `row` with a state, -1 for none; a row of -1 is before all.
LRESULT NextRow(HWND list, LRESULT row, UINT state) {
    const LRESULT next =
        SendMessageA(list, LVM_GETNEXTITEM, static_cast<WPARAM>(row), MAKELPARAM(state, 0));
    return next > row ? next : -1;
}

/// Takes the states that the last look left out of the records.
void ClearStates(FindWindow* find) {
    const ListLock lock;
    for (u32 row = find->firstStateRow; row < find->endStateRow; ++row) {
        FindRecord* record = HitAtRow(find, row);
        if (record != nullptr) {
            record->listState = 0;
        }
    }
    find->firstStateRow = find->endStateRow = 0;
}

/// Keeps a row's state, and counts the row when it is selected; `counters` may be null.
void KeepState(FindWindow* find, u32 row, u32 state, FindCounters* counters) {
    const ListLock lock;
    FindRecord* record = HitAtRow(find, row);
    if (record == nullptr) {
        return;
    }
    record->listState = static_cast<u8>(state);
    if (find->endStateRow == 0 || row < find->firstStateRow) {
        find->firstStateRow = row;
    }
    if (row >= find->endStateRow) {
        find->endStateRow = row + 1;
    }
    if (counters != nullptr && (state & LVIS_SELECTED) != 0) {
        counters->Count(*record);
    }
}

/// Brings the list's states into the records. Only rows with a state are asked for: a list of a
/// million rows has few of them as a rule, and the worker waits for each answer.
void ReadStates(FindWindow* find, FindCounters* counters) {
    ClearStates(find);
    const LRESULT focused = NextRow(find->list, -1, LVNI_FOCUSED);
    if (focused >= 0) {
        KeepState(find, static_cast<u32>(focused), LVIS_FOCUSED, nullptr);
    }
    const LRESULT selected = SendMessageA(find->list, LVM_GETSELECTEDCOUNT, 0, 0);
    const LRESULT rows = SendMessageA(find->list, LVM_GETITEMCOUNT, 0, 0);
    const bool isAll = selected == rows;
    LRESULT row = -1;
    for (LRESULT left = selected; left > 0; --left) {
        row = isAll ? row + 1 : NextRow(find->list, row, LVNI_SELECTED);
        if (row < 0) {
            break;
        }
        const u32 focus = row == focused ? LVIS_FOCUSED : 0;
        KeepState(find, static_cast<u32>(row), LVIS_SELECTED | focus, counters);
    }
}

}  // namespace

void CopyCut(char* field, u32 size, const char* text) {
    field[0] = 0;
    ShellAppendText(field, text, size);
}

void AppendSeparator(char* text, char separator) {
    const std::size_t length = std::strlen(text);
    if (length != 0 && text[length - 1] != '\\' && text[length - 1] != '/') {
        text[length] = separator;
        text[length + 1] = 0;
    }
}

const FindRecord* ResolveItem(FindWindow* find, char* name, char* directory, i32 row) {
    name[0] = 0;
    const ListLock lock;
    const FindRecord* record = row >= 0 ? HitAtRow(find, static_cast<u32>(row)) : nullptr;
    if (record == nullptr) {
        return nullptr;
    }
    const FindDirRecord* folder = DirectoryByNumber(find, record->directoryNumber);
    if (find->notify != nullptr) {
        find->notify();
    }
    if (folder != nullptr) {
        StoreText(name, findNameSize, record->name);
        StoreText(directory, findPathSize, folder->path);
    }
    return record;
}

const FindRecord* ResolveCurrentItem(FindWindow* find, char* name, char* directory) {
    const i32 row = ShellGetCurrentItem(find->list);
    if (row < 0) {
        name[0] = 0;
        return nullptr;
    }
    return ResolveItem(find, name, directory, row);
}

void FillTypeName(FindRecord* record) {
    record->type[0] = 0;
    if (IsLink(*record)) {
        CopyCut(record->type, typeNameSize, "<LINK>");
    } else if (IsDirectory(*record)) {
        TypeNameOf(ShellFolderSample(), 0, record->type);
    } else {
        TypeNameOf(record->name, SHGFI_USEFILEATTRIBUTES, record->type);
    }
    if (record->type[0] == 0) {
        MakeTypeName(record);
    }
}

void UpdateRecordTable(FindWindow* find) {
    if (BuildRecordTable(find)) {
        ReadStates(find, nullptr);
    }
}

void ReadSelection(FindWindow* find) {
    find->selected = {};
    if (find->hits.IsSet()) {
        ReadStates(find, &find->selected);
    }
}

}  // namespace quennet
