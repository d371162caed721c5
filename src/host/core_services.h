#pragma once
// The first table of host services. Its order is the host's interface.

#include "host/types.h"

#if defined(__GNUC__)
#define QUENNET_PRINTF(formatIndex, firstValue) \
    __attribute__((format(printf, formatIndex, firstValue)))
#else
#define QUENNET_PRINTF(formatIndex, firstValue)
#endif

namespace quennet {

/// Words of the table, by index. Words 0 and 1 are data, all others functions, which the module
/// calls on any of its threads.
enum class CoreService : u32 {
    pingWord = 0,  // pointer to a word of the ping tool
    profile = 1,   // opaque; first argument of getProfilePath
    getProfilePath = 2,
    saveHistory = 3,
    loadHistory = 4,
    loadText = 5,
    applyDialogTexts = 6,
    addHistory = 7,
    consolePrint = 8,
    showMessage = 9,
    initDialog = 10,
    alloc = 11,
    free = 12,
    copyText = 13,
    count = 14,
};

struct CoreServices {
    HostWord words[static_cast<u32>(CoreService::count)];
};

extern "C" {

/// Fills a buffer of 260 bytes with the path of the settings file.
using CoreGetProfilePathFunction = void (*)(HostWord profile, char* buffer);
/// Stores a combo box's entries, at most `limit`.
using CoreSaveHistoryFunction = void (*)(HWND comboBox, const char* path, const char* section,
                                         i32 limit);
/// Fills a combo box with at most `limit` stored entries.
using CoreLoadHistoryFunction = CoreSaveHistoryFunction;
/// Text of a 16-bit id, cut to `size` bytes with its terminator.
using CoreLoadTextFunction = void (*)(u32 textId, char* buffer, u32 size);
/// `table`: caption text id or 0, then control ids, 0 at the end; a control's text id is its id.
using CoreApplyDialogTextsFunction = void (*)(HWND window, const u16* table);
/// Puts a text at the head of a combo box's entries.
using CoreAddHistoryFunction = void (*)(HWND comboBox, const char* text);
/// Adds one line to a console, with printf's formatting. The console is a window number.
using CoreConsolePrintFunction QUENNET_PRINTF(2, 3) = void (*)(WindowNumber console,
                                                               const char* format, ...);
/// Shows the text of an id to the user.
using CoreShowMessageFunction = void (*)(WindowNumber window, u32 textId);
/// First call in WM_INITDIALOG of every dialog.
using CoreInitDialogFunction = void (*)(HWND window);
/// Zeroed memory that any thread may use, or null.
using CoreAllocFunction = void* (*)(HostWord size);
/// Frees the block whose address stands in `*pointer` and nulls it; null inside is allowed.
using CoreFreeFunction = void (*)(void** pointer);
/// Adds `text` behind the text in `target`, never past `size` bytes in all.
using CoreCopyTextFunction = void (*)(char* target, const char* text, u32 size);
}

}  // namespace quennet
