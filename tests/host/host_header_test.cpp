// The header for hosts in C says what the module's own headers say. The compiler proves it; there
// is nothing to run.

#include <type_traits>

#include "find/find_record.h"
#include "host/core_services.h"
#include "host/message.h"
#include "host/records.h"
#include "host/shell_services.h"
#include "quennet_host.h"

namespace {

using namespace quennet;

template <typename Ours, typename Theirs>
constexpr bool isSameWord = std::is_same_v<Ours, Theirs> ||
                            (std::is_pointer_v<Ours> && std::is_pointer_v<Theirs> &&
                             std::is_const_v<std::remove_pointer_t<Ours>> ==
                                 std::is_const_v<std::remove_pointer_t<Theirs>>);

/// Whether two functions are called alike: with as many words, each of the same kind.
template <typename Ours, typename Theirs>
constexpr bool isCalledAlike = false;

template <typename A, typename B, typename... As, typename... Bs>
requires(sizeof...(As) == sizeof...(Bs)) constexpr bool isCalledAlike<A (*)(As...), B (*)(Bs...)> =
    isSameWord<A, B> && (isSameWord<As, Bs> && ...);

#define WORD(table, member)                        \
    (offsetof(Quennet##table##Services, member) == \
     static_cast<u32>(table##Service::member) * sizeof(HostWord))
#define CORE(member, type) \
    (WORD(Core, member) && \
     isCalledAlike<decltype(QuennetCoreServices::member), Core##type##Function>)
#define SHELL(member, type) \
    (WORD(Shell, member) && \
     isCalledAlike<decltype(QuennetShellServices::member), Shell##type##Function>)
#define FIELD(record, member)                                         \
    (offsetof(Quennet##record, member) == offsetof(record, member) && \
     sizeof(Quennet##record::member) == sizeof(record::member))

static_assert(WORD(Core, pingWord) && WORD(Core, profile) && WORD(Core, consolePrint));
static_assert(CORE(getProfilePath, GetProfilePath) && CORE(saveHistory, SaveHistory) &&
              CORE(loadHistory, LoadHistory) && CORE(loadText, LoadText) &&
              CORE(applyDialogTexts, ApplyDialogTexts) && CORE(addHistory, AddHistory) &&
              CORE(showMessage, ShowMessage) && CORE(initDialog, InitDialog) &&
              CORE(alloc, Alloc) && CORE(free, Free) && CORE(copyText, CopyText));
static_assert(sizeof(QuennetCoreServices) == sizeof(CoreServices));

static_assert(WORD(Shell, currentSiteId) && WORD(Shell, optionWord) && WORD(Shell, listLock) &&
              WORD(Shell, folderSample) && WORD(Shell, fileWord));
static_assert(SHELL(registerWindow, RegisterWindow) && SHELL(unregisterWindow, UnregisterWindow) &&
              SHELL(getTransferType, GetTransferType) && SHELL(editFilter, EditFilter) &&
              SHELL(refreshPanel, RefreshPanel) && SHELL(readDirectory, ReadDirectory) &&
              SHELL(setStatusIcon, SetStatusIcon) && SHELL(fileCheck, FileCheck) &&
              SHELL(closeFile, CloseFile) && SHELL(createFile, CreateFile) &&
              SHELL(queryFileSize, QueryFileSize) && SHELL(openFile, OpenFile) &&
              SHELL(openFileAt, OpenFileAt) && SHELL(readFile, ReadFile) &&
              SHELL(seekFile, SeekFile) && SHELL(setFileTime, SetFileTime) &&
              SHELL(writeTextLine, WriteTextLine) && SHELL(writeFile, WriteFile) &&
              SHELL(addProgress, AddProgress) && SHELL(panelClosed, PanelClosed) &&
              SHELL(panelConnected, PanelConnected) && SHELL(menuInit, MenuInit) &&
              SHELL(askPassword, AskPassword) && SHELL(freeHandle, FreeHandle) &&
              SHELL(filterMatch, FilterMatch) && SHELL(matchMask, MatchMask) &&
              SHELL(setColumns, SetColumns) && SHELL(getColumnOrder, GetColumnOrder) &&
              SHELL(loadColumns, LoadColumns) && SHELL(getCurrentItem, GetCurrentItem) &&
              SHELL(setCurrentItem, SetCurrentItem) && SHELL(columnTexts, ColumnTexts) &&
              SHELL(prepareList, PrepareList) && SHELL(setViewStyle, SetViewStyle) &&
              SHELL(saveColumns, SaveColumns) && SHELL(readSetting, ReadSetting) &&
              SHELL(writeSetting, WriteSetting) && SHELL(readSection, ReadSection) &&
              SHELL(writeSection, WriteSection) && SHELL(loadPlacement, LoadPlacement) &&
              SHELL(savePlacement, SavePlacement) && SHELL(comboAdd, ComboAdd) &&
              SHELL(bufferAppend, BufferAppend) && SHELL(preparePath, PreparePath) &&
              SHELL(formatDate, FormatDate) && SHELL(createToolbar, CreateToolbar) &&
              SHELL(formatAttributes, FormatAttributes) && SHELL(formatNumber, FormatNumber) &&
              SHELL(extensionOffset, ExtensionOffset) && SHELL(nameOffset, NameOffset) &&
              SHELL(getSystemDir, GetSystemDir) && SHELL(listAction1, ListAction) &&
              SHELL(listAction2, ListAction) && SHELL(reportError, ReportError) &&
              SHELL(getDialogFont, GetDialogFont) && SHELL(moveControl, MoveControl) &&
              SHELL(setForeground, SetForeground) && SHELL(upperFirst, UpperFirst) &&
              SHELL(appendText, AppendText));
static_assert(sizeof(QuennetShellServices) == sizeof(ShellServices));

static_assert(isCalledAlike<QuennetFunction, ModuleFunction> &&
              isCalledAlike<QuennetListEntry, ListEntryCallback> &&
              isCalledAlike<QuennetDirectoryChanged, DirectoryChangedCallback> &&
              isCalledAlike<QuennetConfirm, ConfirmCallback> &&
              isCalledAlike<QuennetFindGoTo, FindGoToCallback> &&
              isCalledAlike<QuennetFindNotify, FindNotifyCallback> &&
              isCalledAlike<QuennetGoToBegins, GotoBeginsCallback> &&
              isCalledAlike<QuennetGoToDone, GotoDoneCallback>);

static_assert(FIELD(SiteRecord, name) && FIELD(SiteRecord, user) && FIELD(SiteRecord, password) &&
              FIELD(SiteRecord, firewallUser) && FIELD(SiteRecord, firewallPassword) &&
              FIELD(SiteRecord, firewallHost) && FIELD(SiteRecord, host) &&
              FIELD(SiteRecord, directory) && FIELD(SiteRecord, firewallType) &&
              FIELD(SiteRecord, siteOptions));
static_assert(FIELD(FtpHandle, tag) && FIELD(FtpHandle, panelId) &&
              FIELD(FtpHandle, connectClock) && FIELD(FtpHandle, session) &&
              FIELD(FtpHandle, errorText));
static_assert(FIELD(ConnectParams, section) && FIELD(ConnectParams, site) &&
              FIELD(ConnectParams, instance) && FIELD(ConnectParams, watchdogInstance));
static_assert(FIELD(DirEntry, length) && FIELD(DirEntry, date) && FIELD(DirEntry, time) &&
              FIELD(DirEntry, sizeLow) && FIELD(DirEntry, sizeHigh) &&
              FIELD(DirEntry, attributes) && FIELD(DirEntry, name));
static_assert(FIELD(TransferItem, source) && FIELD(TransferItem, destination) &&
              FIELD(TransferItem, record) && FIELD(TransferItem, sourceDate) &&
              FIELD(TransferItem, destinationDate) && FIELD(TransferItem, sourceTime) &&
              FIELD(TransferItem, destinationTime) && FIELD(TransferItem, sourceSize) &&
              FIELD(TransferItem, destinationSize) && FIELD(TransferItem, destinationAttributes));
static_assert(FIELD(TransferRecord, clearMask) && FIELD(TransferRecord, setMask) &&
              FIELD(TransferRecord, flags) && FIELD(TransferRecord, startClock) &&
              FIELD(TransferRecord, bytesTotal) && FIELD(TransferRecord, currentName) &&
              FIELD(TransferRecord, sourceHandle) && FIELD(TransferRecord, destinationHandle) &&
              FIELD(TransferRecord, progressWindow) && FIELD(TransferRecord, status) &&
              FIELD(TransferRecord, doneCount) && FIELD(TransferRecord, bytesDone));
static_assert(FIELD(ColumnRow, title) && FIELD(ColumnRow, width) && FIELD(ColumnRow, order) &&
              FIELD(ColumnRow, subItem) && FIELD(ColumnRow, format));
static_assert(FIELD(MenuRow, id) && FIELD(MenuRow, flags) && FIELD(MenuRow, entries));
static_assert(FIELD(GrowBuffer, base) && FIELD(GrowBuffer, count) && FIELD(GrowBuffer, host) &&
              FIELD(GrowBuffer, used));
static_assert(FIELD(PasswordQuestion, buffer) && FIELD(PasswordQuestion, size) &&
              FIELD(PasswordQuestion, hostText));
static_assert(sizeof(QuennetMessage) == sizeof(HostMessage));

}  // namespace
