#pragma once
// The controls of a Find window: made, filled with texts, and shown or hidden.

#include "find/find_record.h"

namespace quennet {

constexpr int findList = 0x42;
constexpr int findMaskLabel = 0x228;
constexpr int findMaskBox = 0x3D;
constexpr int findRecurseBox = 0x2777;
constexpr int findLongListBox = 0x2E19;
constexpr int findUseFilterBox = 0x38A9;
constexpr int findFilterButton = 0x41;

/// The name under which the host keeps the window's class, place and columns.
constexpr char findName[] = "FTPFind";

/// Makes tool bar, status bar, list and search controls, and gives them fonts, texts and the
/// window's options.
void CreateFindControls(FindWindow* find);

/// Brings the check boxes into the window's options.
void ReadFindOptions(FindWindow* find);

/// Shows the list as another view, which the option bits name.
void SetFindView(FindWindow* find, u32 bits);

}  // namespace quennet
