#pragma once
// The list of a Find window: its columns, and the cells that it asks for as it paints.

#include "find/find_record.h"

struct tagLVITEMA;  // LVITEMA

namespace quennet {

/// The columns as they are before anything is stored.
void InitFindColumns(FindWindow* find);

/// Fills in what the list asks for one cell. Takes the lock.
void FillFindCell(FindWindow* find, tagLVITEMA* item);

}  // namespace quennet
