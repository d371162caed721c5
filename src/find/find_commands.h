#pragma once
// The commands of a Find window: which there are, and which are allowed.

#include "find/find_record.h"

namespace quennet {

// Numbers of the commands are also ids of their texts, and + 1000 of their tool tips.
constexpr u16 findStart = 0x12D;
constexpr u16 findStop = 0x20E;
constexpr u16 findGoTo = 0x144;
constexpr u16 findExportText = 0x20F;
constexpr u16 findExportCsv = 0x210;
constexpr u16 findExportHtml = 0x211;
constexpr u16 findRunEnded = 0x212;  // posted by the worker after its last step
constexpr u16 findClose = 0x78;
constexpr u16 findToolBar = 0xF1;
constexpr u16 findStatusBar = 0xF3;
constexpr u16 findViewIcons = 0x220;
constexpr u16 findViewSmall = 0x221;
constexpr u16 findViewList = 0x222;
constexpr u16 findViewReport = 0x223;
constexpr u16 findEditFilter = 0x332;
constexpr u32 toolTipOffset = 1000;

/// A way to show the list.
struct FindView {
    u32 bits;   // of the options
    u32 style;  // of the host's view service
    u16 command;
};

/// The view that the option bits name; the report when they name none.
const FindView& ViewOfOptions(u32 options);
/// The view of a command, null for any other command.
const FindView* ViewOfCommand(u32 command);

/// Gives the window its menu.
void InitFindMenu(FindWindow* find);

/// Marks the view and the bars in the menu, before it opens.
void CheckFindMenu(FindWindow* find);

/// All commands enabled, as menu and tool bar are at first.
void ResetCommandStates(FindWindow* find);

/// Whether a command is to be disabled, as things stand.
bool WantsDisabled(u32 command, bool hasHits, bool isBusy);

/// Brings menu and tool bar up to date. From any thread: the window's own does it, and is waited
/// for.
void UpdateCommandStates(FindWindow* find);

/// The window message that asks for it, which the window answers with ApplyCommandStates.
constexpr UINT commandStatesMessage = WM_APP + 1;
void ApplyCommandStates(FindWindow* find);

/// On the window's thread. Commands that are always allowed are never disabled.
bool IsCommandDisabled(const FindWindow* find, u32 command);

}  // namespace quennet
