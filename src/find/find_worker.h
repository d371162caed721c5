#pragma once
// A run of FTP Find: its thread, and who may start and stop it.

#include "find/find_record.h"

namespace quennet {

/// Starts a run, unless one is still on its way or the connection ends. On the window's thread.
void StartFind(FindWindow* find);

/// Asks the run to end. Hits found so far stay.
void StopFind(FindWindow* find);

/// Whether a run stands anywhere between its start and its last step.
bool HasWorker(const FindWindow* find);

/// Presses a run to its end, for who waits for that: to be called again and again, with the
/// milliseconds since the first call. The first second lets the command in progress end in peace;
/// after it, and every second, what the worker does on the connection is aborted.
void PressWorker(FindWindow* find, u32 waited);

}  // namespace quennet
