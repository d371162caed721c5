#pragma once
// What the list, the commands and the exports ask of the store.

#include "find/find_record.h"

namespace quennet {

/// The hit of a row, its name (findNameSize bytes) and the path of its directory (findPathSize
/// bytes); null when there is no such row. The name is empty then, and when the directory is
/// missing. The notify callback runs just before the texts are written.
const FindRecord* ResolveItem(FindWindow* find, char* name, char* directory, i32 row);

/// The same for the list's current row.
const FindRecord* ResolveCurrentItem(FindWindow* find, char* name, char* directory);

/// Fills the record's type name: what the system calls files of its name, "<LINK>" for a link.
/// Runs under ShellListLock.
void FillTypeName(FindRecord* record);

/// The end of a run: makes the record table and brings the list's selection into the records.
/// Called without the lock.
void UpdateRecordTable(FindWindow* find);

/// Copies the state of all rows into their records, and counts the selected ones in `selected`.
/// Called without the lock, since it asks the list.
void ReadSelection(FindWindow* find);

/// Adds a separator to a text that is not empty and does not end with one of either kind. The text
/// has room for it.
void AppendSeparator(char* text, char separator);

/// Copies a text into a field of `size` bytes, cut to it.
void CopyCut(char* field, u32 size, const char* text);

}  // namespace quennet
