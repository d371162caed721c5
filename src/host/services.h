#pragma once
// The host's services by name, called through the tables that message 1 stored.

#include "host/core_services.h"
#include "host/records.h"
#include "host/shell_services.h"

namespace quennet {

/// What message 1 stored; it stays for the life of the library.
struct HostTables {
    const CoreServices* core;
    u32* passwordKey;
    const ShellServices* shell;
    HWND mainWindow;  // target of all notifications
    HostWord captionWord;
};
extern HostTables hostTables;

template <typename Function>
Function Core(CoreService service) {
    return reinterpret_cast<Function>(hostTables.core->words[static_cast<u32>(service)]);
}

template <typename Function>
Function Shell(ShellService service) {
    return reinterpret_cast<Function>(hostTables.shell->words[static_cast<u32>(service)]);
}

inline void CoreGetProfilePath(char* buffer) {
    Core<CoreGetProfilePathFunction>(CoreService::getProfilePath)(
        hostTables.core->words[static_cast<u32>(CoreService::profile)], buffer);
}

inline void CoreSaveHistory(HWND comboBox, const char* path, const char* section, i32 limit) {
    Core<CoreSaveHistoryFunction>(CoreService::saveHistory)(comboBox, path, section, limit);
}

inline void CoreLoadHistory(HWND comboBox, const char* path, const char* section, i32 limit) {
    Core<CoreLoadHistoryFunction>(CoreService::loadHistory)(comboBox, path, section, limit);
}

inline void CoreAddHistory(HWND comboBox, const char* text) {
    Core<CoreAddHistoryFunction>(CoreService::addHistory)(comboBox, text);
}

inline void CoreLoadText(u32 textId, char* buffer, u32 size) {
    Core<CoreLoadTextFunction>(CoreService::loadText)(textId, buffer, size);
}

inline void CoreApplyDialogTexts(HWND window, const u16* table) {
    Core<CoreApplyDialogTextsFunction>(CoreService::applyDialogTexts)(window, table);
}

/// The printing service itself, so that the compiler checks its format:
/// `CoreConsolePrint()(console, format, values...)`.
inline CoreConsolePrintFunction CoreConsolePrint() {
    return Core<CoreConsolePrintFunction>(CoreService::consolePrint);
}

/// Adds a finished text as one line; a "%" in it is an ordinary character.
inline void CoreConsolePrintText(WindowNumber console, const char* text) {
    CoreConsolePrint()(console, "%s", text);
}

inline void CoreShowMessage(WindowNumber window, u32 textId) {
    Core<CoreShowMessageFunction>(CoreService::showMessage)(window, textId);
}

inline void CoreInitDialog(HWND window) {
    Core<CoreInitDialogFunction>(CoreService::initDialog)(window);
}

inline void* CoreAlloc(HostWord size) {
    return Core<CoreAllocFunction>(CoreService::alloc)(size);
}

inline void CoreFree(void** pointer) {
    Core<CoreFreeFunction>(CoreService::free)(pointer);
}

/// Frees a block whose address a record holds as a word, and makes the word 0.
inline void CoreFreeWord(HostWord* word) {
    void* pointer = PointerFromWord<void>(*word);
    CoreFree(&pointer);
    *word = 0;
}

/// Frees a record that the module allocated.
template <typename Record>
void CoreFreeRecord(Record* record) {
    void* block = record;
    CoreFree(&block);
}

inline void CoreCopyText(char* target, const char* text, u32 size) {
    Core<CoreCopyTextFunction>(CoreService::copyText)(target, text, size);
}

inline int ShellEditFilter(HWND owner, void* filter) {
    return Shell<ShellEditFilterFunction>(ShellService::editFilter)(owner, filter);
}

inline int ShellGetTransferType(const char* path) {
    return Shell<ShellGetTransferTypeFunction>(ShellService::getTransferType)(path);
}

inline int ShellFileCheck(const char* path) {
    return Shell<ShellFileCheckFunction>(ShellService::fileCheck)(path);
}

inline int ShellCloseFile(ShellFile file) {
    return Shell<ShellCloseFileFunction>(ShellService::closeFile)(file);
}

inline int ShellCreateFile(HWND window, const char* path, ShellFile* file) {
    return Shell<ShellCreateFileFunction>(ShellService::createFile)(window, path, file);
}

inline int ShellQueryFileSize(ShellFile file, u64* size) {
    return Shell<ShellQueryFileSizeFunction>(ShellService::queryFileSize)(0, file, size);
}

inline int ShellOpenFile(const char* path, ShellFile* file, u32 access) {
    return Shell<ShellOpenFileFunction>(ShellService::openFile)(path, file, access);
}

inline int ShellOpenFileAt(HWND console, const char* path, ShellFile* file, u32 access) {
    return Shell<ShellOpenFileAtFunction>(ShellService::openFileAt)(console, path, file, access);
}

inline int ShellReadFile(ShellFile file, void* buffer, u32 size) {
    return Shell<ShellReadFileFunction>(ShellService::readFile)(file, buffer, size);
}

inline int ShellSeekFile(ShellFile file, HostWord position) {
    return Shell<ShellSeekFileFunction>(ShellService::seekFile)(file, position);
}

inline int ShellSetFileTime(ShellFile file, u32 date, u32 time) {
    return Shell<ShellSetFileTimeFunction>(ShellService::setFileTime)(file, date, time);
}

inline int ShellWriteFile(HWND window, ShellFile file, const void* data, u32 length) {
    return Shell<ShellWriteFileFunction>(ShellService::writeFile)(window, file, data, length);
}

inline void ShellAddProgress(TransferRecord* progress, u32 bytes) {
    Shell<ShellAddProgressFunction>(ShellService::addProgress)(WordFromPointer(progress), bytes);
}

inline void ShellPanelClosed(Session* session, u32 panelId) {
    Shell<ShellPanelClosedFunction>(ShellService::panelClosed)(session, panelId);
}

inline void ShellPanelConnected(u32 panelId, SiteRecord* site) {
    Shell<ShellPanelConnectedFunction>(ShellService::panelConnected)(panelId, site);
}

inline void ShellRefreshPanel(u32 cookie) {
    Shell<ShellRefreshPanelFunction>(ShellService::refreshPanel)(cookie, 0);
}

inline int ShellAskPassword(HWND owner, PasswordQuestion* question) {
    return Shell<ShellAskPasswordFunction>(ShellService::askPassword)(owner, question);
}

inline void* ShellFreeHandle(void* handle) {
    return Shell<ShellFreeHandleFunction>(ShellService::freeHandle)(handle);
}

/// True when the data was added.
inline bool ShellBufferAppend(GrowBuffer* record, const void* data, u32 size) {
    return Shell<ShellBufferAppendFunction>(ShellService::bufferAppend)(record, data, size) == 0;
}

/// The id of the site whose fields the connection dialog shows; the word is the host's.
inline i32& CurrentSiteId() {
    return *PointerFromWord<i32>(
        hostTables.shell->words[static_cast<u32>(ShellService::currentSiteId)]);
}

// Hosts differ in the results of the settings services, so they are not looked at.

/// Value of a key, empty when it is missing.
inline void ShellReadSetting(const char* section, const char* key, char* buffer, u32 size,
                             const char* file) {
    buffer[0] = 0;
    Shell<ShellReadSettingFunction>(ShellService::readSetting)(section, key, "", buffer, size,
                                                               file);
}

inline void ShellWriteSetting(const char* section, const char* key, const char* value,
                              const char* file) {
    Shell<ShellWriteSettingFunction>(ShellService::writeSetting)(section, key, value, file);
}

inline void ShellReadSection(const char* section, char* buffer, u32 size, const char* file) {
    Shell<ShellReadSectionFunction>(ShellService::readSection)(section, buffer, size, file);
}

inline void ShellWriteSection(const char* section, const char* text, const char* file) {
    Shell<ShellWriteSectionFunction>(ShellService::writeSection)(section, text, file);
}

inline void ShellListAction1(HWND window, u32 listId) {
    Shell<ShellListActionFunction>(ShellService::listAction1)(window, listId);
}

inline void ShellListAction2(HWND window, u32 listId) {
    Shell<ShellListActionFunction>(ShellService::listAction2)(window, listId);
}

inline u32 ShellGetSystemDir(char* buffer, u32 size) {
    return Shell<ShellGetSystemDirFunction>(ShellService::getSystemDir)(buffer, size);
}

inline void ShellPreparePath(char* path) {
    Shell<ShellPreparePathFunction>(ShellService::preparePath)(path);
}

inline u32 ShellNameOffset(const char* path) {
    return Shell<ShellNameOffsetFunction>(ShellService::nameOffset)(path);
}

inline void ShellSetForeground(HWND window) {
    Shell<ShellSetForegroundFunction>(ShellService::setForeground)(window);
}

/// Shows a text to the user as an error, with the host's caption.
inline void ShellReportError(HWND owner, u32 textId) {
    constexpr u32 stopIcon = 16;
    Shell<ShellReportErrorFunction>(ShellService::reportError)(owner, textId,
                                                               hostTables.captionWord, stopIcon);
}

// --- Lists, filters and windows ------------------------------------------------------------------

/// The host's word of options that windows share.
inline u32& ShellOptionWord() {
    return *PointerFromWord<u32>(
        hostTables.shell->words[static_cast<u32>(ShellService::optionWord)]);
}

/// Path of a local folder that stands for all folders.
inline const char* ShellFolderSample() {
    return PointerFromWord<const char>(
        hostTables.shell->words[static_cast<u32>(ShellService::folderSample)]);
}

/// The host's word for a file of no known type.
inline const char* ShellFileWord() {
    return PointerFromWord<const char>(
        hostTables.shell->words[static_cast<u32>(ShellService::fileWord)]);
}

/// The directory's entries; the caller gives them back with CoreFree. Null when there are none.
inline DirEntry* ShellReadDirectory(const char* path, FtpHandle* handle, u32 option) {
    return Shell<ShellReadDirectoryFunction>(ShellService::readDirectory)(path, handle, option);
}

/// Non-zero when the name matches.
inline int ShellMatchMask(const char* name, const char* masks) {
    return Shell<ShellMatchMaskFunction>(ShellService::matchMask)(name, masks);
}

/// Non-zero when the entry passes; `size` is the address of 64 bits.
inline int ShellFilterMatch(const char* name, u16 attributes, u16 date, u16 time, const void* size,
                            const void* filter) {
    return Shell<ShellFilterMatchFunction>(ShellService::filterMatch)(name, attributes, date, time,
                                                                      size, filter);
}

/// True when the host takes the window.
inline bool ShellRegisterWindow(HWND window, u32 kind) {
    const u32 refusal =
        Shell<ShellRegisterWindowFunction>(ShellService::registerWindow)(window, kind, 0);
    return (refusal & 0xFFFF) == 0;
}

inline void ShellUnregisterWindow(HWND window) {
    Shell<ShellUnregisterWindowFunction>(ShellService::unregisterWindow)(window);
}

inline void ShellMenuInit(HWND window, const MenuRow* rows) {
    Shell<ShellMenuInitFunction>(ShellService::menuInit)(window, rows);
}

/// Makes a tool bar of `count` buttons; `firstId` and `bitmaps` tell the host which pictures.
inline HWND ShellCreateToolbar(HWND window, HINSTANCE instance, const void* buttons, u32 style,
                               u32 firstId, u32 count, u32 bitmaps) {
    return Shell<ShellCreateToolbarFunction>(ShellService::createToolbar)(
        window, instance, buttons, style, firstId, 0, 0, count, bitmaps);
}

inline void ShellPrepareList(HWND list) {
    Shell<ShellPrepareListFunction>(ShellService::prepareList)(list);
}

inline void ShellLoadColumns(ColumnRow* columns, const char* name, const char* file) {
    Shell<ShellLoadColumnsFunction>(ShellService::loadColumns)(columns, name, file, 0);
}

inline void ShellSaveColumns(const ColumnRow* columns, const char* name, const char* file) {
    Shell<ShellSaveColumnsFunction>(ShellService::saveColumns)(columns, name, file);
}

inline void ShellSetColumns(HWND list, const ColumnRow* columns) {
    Shell<ShellSetColumnsFunction>(ShellService::setColumns)(list, columns);
}

inline void ShellColumnTexts(HWND list, const ColumnRow* columns) {
    Shell<ShellColumnTextsFunction>(ShellService::columnTexts)(list, columns);
}

inline void ShellGetColumnOrder(HWND list, ColumnRow* columns) {
    Shell<ShellGetColumnOrderFunction>(ShellService::getColumnOrder)(list, columns);
}

/// Icons, report, small icons, list: 0 to 3.
inline void ShellSetViewStyle(HWND list, u32 view) {
    Shell<ShellSetViewStyleFunction>(ShellService::setViewStyle)(list, view);
}

/// Below 0 when there is none.
inline i32 ShellGetCurrentItem(HWND list) {
    return Shell<ShellGetCurrentItemFunction>(ShellService::getCurrentItem)(list);
}

inline void ShellSetCurrentItem(HWND list, i32 row) {
    Shell<ShellSetCurrentItemFunction>(ShellService::setCurrentItem)(list, row);
}

inline void ShellComboAdd(HWND comboBox, const char* text) {
    Shell<ShellComboAddFunction>(ShellService::comboAdd)(comboBox, text);
}

inline void ShellSetStatusIcon(HWND statusBar, u32 pane, bool on) {
    Shell<ShellSetStatusIconFunction>(ShellService::setStatusIcon)(statusBar, pane, on ? 1 : 0);
}

inline void ShellLoadPlacement(const char* file, const char* name, i32* x, i32* y, i32* width,
                               i32* height, u32* word) {
    Shell<ShellLoadPlacementFunction>(ShellService::loadPlacement)(file, name, x, y, width, height,
                                                                   word);
}

inline void ShellSavePlacement(HWND window, const char* file, const char* name) {
    Shell<ShellSavePlacementFunction>(ShellService::savePlacement)(window, file, name);
}

/// False when there is no font.
inline bool ShellGetDialogFont(HWND window, void* font, u32 size) {
    return Shell<ShellGetDialogFontFunction>(ShellService::getDialogFont)(window, font, size) != 0;
}

inline void ShellMoveControl(HWND control, i32 x, i32 y, i32 width, i32 height) {
    Shell<ShellMoveControlFunction>(ShellService::moveControl)(control, x, y, width, height);
}

// --- Text and lines ------------------------------------------------------------------------------

/// True when the text and a line end were written.
inline bool ShellWriteTextLine(HWND window, ShellFile file, const char* text) {
    return Shell<ShellWriteTextLineFunction>(ShellService::writeTextLine)(window, file, text) == 0;
}

/// `text` has `size` bytes; it becomes empty for a date of 0.
inline void ShellFormatDate(char* text, u16 date, u16 time, u32 size) {
    Shell<ShellFormatDateFunction>(ShellService::formatDate)(text, date, time, size);
}

/// At most 31 characters.
inline void ShellFormatAttributes(char* text, u16 attributes) {
    Shell<ShellFormatAttributesFunction>(ShellService::formatAttributes)(text, attributes);
}

/// At most 31 characters; `number` is the address of 64 bits.
inline void ShellFormatNumber(const void* number, char* text) {
    Shell<ShellFormatNumberFunction>(ShellService::formatNumber)(number, text);
}

/// Offset of the dot in front of the extension, or of the end.
inline u16 ShellExtensionOffset(const char* name) {
    return Shell<ShellExtensionOffsetFunction>(ShellService::extensionOffset)(name);
}

/// Makes the first letter a capital.
inline void ShellUpperFirst(char* text) {
    Shell<ShellUpperFirstFunction>(ShellService::upperFirst)(text);
}

inline void ShellAppendText(char* target, const char* text, u32 size) {
    Shell<ShellAppendTextFunction>(ShellService::appendText)(target, text, size);
}

/// Holds the host's lock of list data while it stands.
class ListLock {
  public:
    ListLock() : section_(Section()) { EnterCriticalSection(section_); }
    ~ListLock() { LeaveCriticalSection(section_); }
    ListLock(const ListLock&) = delete;
    ListLock& operator=(const ListLock&) = delete;

  private:
    static CRITICAL_SECTION* Section() {
        return PointerFromWord<CRITICAL_SECTION>(
            hostTables.shell->words[static_cast<u32>(ShellService::listLock)]);
    }
    CRITICAL_SECTION* section_;
};

}  // namespace quennet
