#pragma once
// The second table of host services. Its order is the host's interface.

#include "host/grow_buffer.h"
#include "host/types.h"

namespace quennet {

struct ColumnRow;
struct DirEntry;
struct FtpHandle;
struct MenuRow;
struct Session;
struct SiteRecord;

/// Words of the table, by index. The module calls neither word 19 nor word 25.
enum class ShellService : u32 {
    currentSiteId = 0,  // data: address of an i32
    optionWord = 1,     // data: address of a u32
    listLock = 2,       // data: address of the CRITICAL_SECTION of list data
    folderSample = 3,   // data
    fileWord = 4,       // data
    registerWindow = 5,
    unregisterWindow = 6,
    getTransferType = 7,
    editFilter = 8,
    refreshPanel = 9,
    readDirectory = 10,
    setStatusIcon = 11,
    fileCheck = 12,
    closeFile = 13,
    createFile = 14,
    queryFileSize = 15,
    openFile = 16,
    openFileAt = 17,
    readFile = 18,
    seekFile = 20,
    setFileTime = 21,
    writeTextLine = 22,
    writeFile = 23,
    addProgress = 24,
    panelClosed = 26,
    panelConnected = 27,
    menuInit = 28,
    askPassword = 29,
    freeHandle = 30,
    filterMatch = 31,
    matchMask = 32,
    setColumns = 33,
    getColumnOrder = 34,
    loadColumns = 35,
    getCurrentItem = 36,
    setCurrentItem = 37,
    columnTexts = 38,
    prepareList = 39,
    setViewStyle = 40,
    saveColumns = 41,
    readSetting = 42,
    writeSetting = 43,
    readSection = 44,
    writeSection = 45,
    loadPlacement = 46,
    savePlacement = 47,
    comboAdd = 48,
    bufferAppend = 49,
    preparePath = 50,
    formatDate = 51,
    createToolbar = 52,
    formatAttributes = 53,
    formatNumber = 54,
    extensionOffset = 55,
    nameOffset = 56,
    getSystemDir = 57,
    listAction1 = 58,
    listAction2 = 59,
    reportError = 60,
    getDialogFont = 61,
    moveControl = 62,
    setForeground = 63,
    upperFirst = 64,
    appendText = 65,
    count = 66,
};

struct ShellServices {
    HostWord words[static_cast<u32>(ShellService::count)];
};

/// Handle of an open file; any value, the host's own.
using ShellFile = HostWord;

/// Access words of openFile and openFileAt.
constexpr u32 accessRead = 0x80000000;
constexpr u32 accessWrite = 0x40000000;
constexpr u32 accessReadWrite = 0xC0000000;

/// Record of askPassword.
struct PasswordQuestion {
    HostWord buffer;    // address of the text to be filled
    HostWord size;      // bytes of it, with the terminator
    HostWord hostText;  // address of the server's name
};

extern "C" {

// Panels and windows.
/// The low 16 bits of the result are 0 when the window was accepted.
using ShellRegisterWindowFunction = u32 (*)(HWND window, u32 kind, u32 zero);
using ShellUnregisterWindowFunction = void (*)(HWND window);
/// Gives the window a menu bar of these rows, with the host's texts.
using ShellMenuInitFunction = void (*)(HWND window, const MenuRow* rows);
/// Fills a font record of the platform; 0 when there is none.
using ShellGetDialogFontFunction = i32 (*)(HWND window, void* font, u32 size);
using ShellMoveControlFunction = void (*)(HWND control, i32 x, i32 y, i32 width, i32 height);
/// The panel of a cookie may show what is no longer so.
using ShellRefreshPanelFunction = void (*)(u32 cookie, u32 zero);
using ShellPanelClosedFunction = void (*)(Session* session, u32 panelId);
using ShellPanelConnectedFunction = void (*)(u32 panelId, SiteRecord* site);
/// 0 when the user cancelled.
using ShellAskPasswordFunction = i32 (*)(HWND owner, PasswordQuestion* question);
/// Gives the block back to the host's allocator; the result, null, goes into the holder.
using ShellFreeHandleFunction = void* (*)(void* handle);
using ShellReportErrorFunction = void (*)(HWND owner, u32 textId, HostWord caption, u32 icon);
using ShellSetForegroundFunction = void (*)(HWND window);

// Files; 0 is success. The services that open a file put its handle where `file` says, all others
// take the handle. `size` of queryFileSize and `position` of seekFile count bytes.
/// The letter for TYPE.
using ShellGetTransferTypeFunction = i32 (*)(const char* path);
/// 0 when there is such a file.
using ShellFileCheckFunction = i32 (*)(const char* path);
using ShellCloseFileFunction = i32 (*)(ShellFile file);
/// Creates or overwrites.
using ShellCreateFileFunction = i32 (*)(HWND window, const char* path, ShellFile* file);
using ShellQueryFileSizeFunction = i32 (*)(u32 zero, ShellFile file, u64* size);
using ShellOpenFileFunction = i32 (*)(const char* path, ShellFile* file, u32 access);
using ShellOpenFileAtFunction = i32 (*)(HWND console, const char* path, ShellFile* file,
                                        u32 access);
/// A read of fewer bytes than asked for is a failure.
using ShellReadFileFunction = i32 (*)(ShellFile file, void* buffer, u32 size);
using ShellSeekFileFunction = i32 (*)(ShellFile file, HostWord position);
/// DOS date and time.
using ShellSetFileTimeFunction = i32 (*)(ShellFile file, u32 date, u32 time);
using ShellWriteFileFunction = i32 (*)(HWND window, ShellFile file, const void* data, u32 length);
/// Writes the text and CR LF.
using ShellWriteTextLineFunction = i32 (*)(HWND window, ShellFile file, const char* text);
/// The entries of the server's current directory, ended by a length of 0 and given back with
/// CoreFree; null when there is no listing. `option` is the listing option of message 26.
using ShellReadDirectoryFunction = DirEntry* (*)(const char* path, FtpHandle* handle, u32 option);
using ShellAddProgressFunction = void (*)(HostWord progress, u32 bytes);

// Settings. A read fills at most `size` bytes with the terminator; a section's text is in whatever
// form the host's write takes back. A result that a host gives is not looked at.
using ShellReadSettingFunction = void (*)(const char* section, const char* key,
                                          const char* defaultText, char* buffer, u32 size,
                                          const char* file);
using ShellWriteSettingFunction = void (*)(const char* section, const char* key, const char* value,
                                           const char* file);
using ShellReadSectionFunction = void (*)(const char* section, char* buffer, u32 size,
                                          const char* file);
using ShellWriteSectionFunction = void (*)(const char* section, const char* text, const char* file);
using ShellLoadPlacementFunction = void (*)(const char* file, const char* name, i32* x, i32* y,
                                            i32* width, i32* height, u32* word);
using ShellSavePlacementFunction = void (*)(HWND window, const char* file, const char* name);
/// Moves the selected entry of a list box.
using ShellListActionFunction = void (*)(HWND window, u32 listId);

// Lists and filters. `columns` is a whole column table, `filter` the host's filter record.
/// Non-zero when the entry passes. `size` is the address of 64 bits, on any boundary.
using ShellFilterMatchFunction = i32 (*)(const char* name, u32 attributes, u32 date, u32 time,
                                         const void* size, const void* filter);
/// Non-zero when the name matches one of the masks.
using ShellMatchMaskFunction = i32 (*)(const char* name, const char* masks);
/// Shows the host's filter dialog.
using ShellEditFilterFunction = i32 (*)(HWND owner, void* filter);
using ShellSetStatusIconFunction = void (*)(HWND statusBar, u32 pane, u32 on);
/// Gives the list the columns of the table, and their titles.
using ShellSetColumnsFunction = void (*)(HWND list, const ColumnRow* columns);
using ShellColumnTextsFunction = ShellSetColumnsFunction;
/// Brings the list's widths and order back into the table.
using ShellGetColumnOrderFunction = void (*)(HWND list, ColumnRow* columns);
/// What was stored goes into the table.
using ShellLoadColumnsFunction = void (*)(ColumnRow* columns, const char* name, const char* file,
                                          u32 zero);
using ShellSaveColumnsFunction = void (*)(const ColumnRow* columns, const char* name,
                                          const char* file);
/// Below 0 when there is none.
using ShellGetCurrentItemFunction = i32 (*)(HWND list);
using ShellSetCurrentItemFunction = void (*)(HWND list, i32 item);
using ShellPrepareListFunction = void (*)(HWND list);
using ShellSetViewStyleFunction = void (*)(HWND list, u32 view);
using ShellComboAddFunction = void (*)(HWND comboBox, const char* text);
using ShellCreateToolbarFunction = HWND (*)(HWND window, HINSTANCE instance, const void* buttons,
                                            u32 style, u32 id, u32 zero1, u32 zero2, u32 count,
                                            u32 bitmaps);

// Text.
/// `size` bytes at most, with the terminator; empty for a date of 0.
using ShellFormatDateFunction = void (*)(char* text, u32 date, u32 time, u32 size);
/// At most 31 characters, as for a number.
using ShellFormatAttributesFunction = void (*)(char* text, u32 attributes);
/// `number` is the address of 64 bits, on any boundary.
using ShellFormatNumberFunction = void (*)(const void* number, char* text);
/// Offset of the dot that begins the extension, or of the end.
using ShellExtensionOffsetFunction = u16 (*)(const char* name);
/// Makes the first letter a capital.
using ShellUpperFirstFunction = void (*)(char* text);
/// 0 on success; on failure the record is as it was.
using ShellBufferAppendFunction = i32 (*)(GrowBuffer* record, const void* data, u32 size);
/// Gives a path of the server the form that its commands need, in its place.
using ShellPreparePathFunction = i32 (*)(char* path);
/// Offset of the last component.
using ShellNameOffsetFunction = u32 (*)(const char* path);
using ShellGetSystemDirFunction = u32 (*)(char* buffer, u32 size);
/// Adds `text` behind the text in `target`, never past `size` bytes in all.
using ShellAppendTextFunction = void (*)(char* target, const char* text, u32 size);
}

}  // namespace quennet
