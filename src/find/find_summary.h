#pragma once
// The status bar of a Find window.

#include "find/find_record.h"

namespace quennet {

constexpr u32 findSummarySize = 512;

/// Heads of summaries, which are text ids of the host.
constexpr u16 runSummary = 0x157D;
constexpr u16 selectionSummary = 0x157E;

/// Puts the summary of the counters together: "HEAD 3 files, 1 folder, 20 bytes", without what is
/// 0, empty when all is; that of a run which was stopped ends with a note. `text` has
/// findSummarySize bytes.
void BuildFindSummary(char* text, const FindCounters& counters, u16 head, bool stopped);

/// Shows a summary: that of the selection in pane 0, that of a run in pane 1.
void ShowFindSummary(FindWindow* find, const FindCounters& counters, u16 head);

/// Shows a text in a pane.
void ShowFindPane(const FindWindow* find, u32 pane, const char* text);

}  // namespace quennet
