#pragma once
// The hits of a run as a file: a list for people, a list for programs, a table for browsers.

#include "find/find_record.h"

namespace quennet {

// Each asks for a file and writes all hits, in the order found. Nothing happens without a finished
// run. On the window's thread; the window may be gone when the question has been answered, so the
// caller keeps the record.
void ExportText(FindWindow* find);
void ExportCsv(FindWindow* find);
void ExportHtml(FindWindow* find);

/// The same without a question, into the file at `path`.
void WriteFoundText(FindWindow* find, const char* path);
void WriteFoundCsv(FindWindow* find, const char* path);
void WriteFoundHtml(FindWindow* find, const char* path);

/// Asks for the name of a file to be written: true when there is one. `path` (pathSize bytes) is
/// what the question begins with, `filter` pairs of description and pattern.
bool AskExportFile(HWND window, char* path, const char* filter, const char* extension);

}  // namespace quennet
