#pragma once
// The store of a Find window: what is kept of the hits and the directories they lie in. All of it
// happens under ShellListLock, which the caller holds unless it says otherwise.

#include "find/find_record.h"

namespace quennet {

/// Empties the store for a new run; its memory is used again. Takes the lock.
void ResetStore(FindWindow* find);

/// Gives all its memory back. Takes the lock.
void FreeStore(FindWindow* find);

/// Adds a directory. Returns its number, 0 without memory or for a path that does not fit. Takes
/// the lock.
u32 AppendDirectory(FindWindow* find, const char* path);

/// Adds a hit that has no row yet. False without memory. Takes the lock.
bool AppendHit(FindWindow* find, const FindRecord* record);

/// Gives rows to all hits that have none, and counts them in `hits`. Takes the lock.
void IndexHits(FindWindow* find);

/// Number of rows.
u32 RowCount(const FindWindow* find);

/// The hit of a row; null when there is no such row.
FindRecord* HitAtRow(const FindWindow* find, u32 row);

/// The directory with that number, from 1; null when there is none. Takes at most a few dozen
/// steps, however many directories there are.
const FindDirRecord* DirectoryByNumber(const FindWindow* find, u32 number);

/// Makes the record table if there is none. False without memory. Takes the lock.
bool BuildRecordTable(FindWindow* find);

/// The next record of the buffer, behind `record`.
FindRecord* NextRecord(FindRecord* record);

}  // namespace quennet
