#pragma once
// Records that the module shares with its host. They are packed and little-endian; bytes that have
// no name of their own here belong to the host. Offsets are those of the 32-bit layout; in a wider
// build a pointer word widens and all else keeps its size (WidenedOffset).

#include "host/types.h"

namespace quennet {

struct Session;
struct TransferRecord;

#pragma pack(push, 1)

/// Where and how to connect. The connection dialog fills it.
struct SiteRecord {
    char name[28];  // the site's label
    char user[81];
    char password[81];
    char firewallUser[81];
    char firewallPassword[81];
    char firewallHost[81];  // may carry ":port"
    char host[81];          // may carry ":port" until the connection is made
    char directory[260];    // the start directory, after login the server's current directory
    u32 firewallType;       // 0 to 6
    u32 siteOptions;        // SiteOption bits
};

/// The host's view of a connection. The session follows right behind it in the same block.
struct FtpHandle {
    u16 tag;  // liveHandleTag
    u8 hostOwned1[276];
    u8 panelId;        // names the panel that owns the connection
    u32 connectClock;  // process clock in milliseconds when the handle was made
    HostWord session;  // address of the Session
    u8 hostOwned2[2];
    char errorText[260];  // the server's last reply text after a failed transfer
    u8 hostOwned3[260];
};

/// Argument of message 24.
struct ConnectParams {
    HostWord section;           // address of the name of the host's main settings section
    HostWord site;              // set by the module: address of the SiteRecord to be filled
    HostWord instance;          // instance that holds the dialog templates
    HostWord watchdogInstance;  // instance that the watchdog's window class is registered in
};

/// One listed entry in a list of the host. The list ends with a null pointer or a length of 0.
struct DirEntry {
    u16 length;  // bytes to the next record
    u16 date;    // DOS date
    u16 time;    // DOS time
    u16 hostOwned1;
    u32 sizeLow;
    u32 sizeHigh;
    u16 attributes;  // attributeDirectory marks a directory
    u8 hostOwned2[6];
    char name[1];  // NUL-terminated, as long as it is
};

/// One file of a copy.
struct TransferItem {
    char source[260];       // path of the file to be read
    char destination[260];  // path of the file to be written
    HostWord record;        // address of the TransferRecord of the whole operation
    u16 sourceDate;         // DOS dates and times
    u16 destinationDate;
    u16 sourceTime;
    u16 destinationTime;
    u64 sourceSize;  // bytes
    u64 destinationSize;
    u8 hostOwned1[4];
    u32 destinationAttributes;
};

/// The host's record of a whole operation.
struct TransferRecord {
    u32 clearMask;  // attribute bits to take away; to the permission dialog the entry's word
    u32 setMask;    // attribute bits to give; to the permission dialog the number of entries
    u32 flags;      // RecordFlag bits, others are the host's
    u8 hostOwned1[12];
    u32 startClock;  // process clock in milliseconds when the data loop began
    u64 bytesTotal;  // the host's count of bytes to move; a resume takes the skipped ones off it
    u8 hostOwned2[32];
    char currentName[260];  // the entry that message 34 works on
    u8 hostOwned3[780];
    HostWord sourceHandle;       // FtpHandle of the source panel
    HostWord destinationHandle;  // FtpHandle of the destination panel
    u32 progressWindow;          // a WindowNumber; hears of each entry of message 34
    u32 status;  // the host's answer to the confirm callback: 0 and 5 go on, all else leaves out
    u8 hostOwned4[24];
    u64 doneCount;  // entries that message 34 has changed
    u64 bytesDone;  // bytes moved so far
};

/// A column of a list view, in a table that ends with a title of 0. The host's services read the
/// table, and write widths and orders into it.
struct ColumnRow {
    u32 title;    // text id; 0 in its low 16 bits ends the table
    u32 width;    // pixels
    u32 order;    // place on the screen, from the left
    u32 subItem;  // number by which the list asks for the column's cells
    u32 format;   // the platform's alignment in the low byte, other bits are the host's
};

/// An entry of a menu, in a level that ends with an id of 0.
struct MenuRow {
    u16 id;            // command, and its text id; menuRowSeparatorId in a separator
    u16 flags;         // menu flags of the platform; 0x0800 marks a separator
    u16 zero;          // 0
    HostWord entries;  // address of the rows of a submenu, or 0
};

#pragma pack(pop)

static_assert(sizeof(SiteRecord) == 782);
static_assert(offsetof(FtpHandle, panelId) == 278 && offsetof(FtpHandle, connectClock) == 279);
static_assert(offsetof(FtpHandle, session) == 283);
static_assert(offsetof(FtpHandle, errorText) == WidenedOffset(289, 1));
static_assert(sizeof(FtpHandle) == WidenedOffset(809, 1));
static_assert(sizeof(ConnectParams) == 4 * sizeof(HostWord));
static_assert(offsetof(DirEntry, sizeLow) == 8 && offsetof(DirEntry, sizeHigh) == 12);
static_assert(offsetof(DirEntry, attributes) == 16 && offsetof(DirEntry, name) == 24);
static_assert(offsetof(TransferItem, record) == 520);
static_assert(offsetof(TransferItem, sourceDate) == WidenedOffset(524, 1));
static_assert(offsetof(TransferItem, destinationDate) == WidenedOffset(526, 1));
static_assert(offsetof(TransferItem, sourceTime) == WidenedOffset(528, 1));
static_assert(offsetof(TransferItem, destinationTime) == WidenedOffset(530, 1));
static_assert(offsetof(TransferItem, sourceSize) == WidenedOffset(532, 1));
static_assert(offsetof(TransferItem, destinationSize) == WidenedOffset(540, 1));
static_assert(offsetof(TransferItem, destinationAttributes) == WidenedOffset(552, 1));
static_assert(offsetof(TransferRecord, setMask) == 4 && offsetof(TransferRecord, flags) == 8);
static_assert(offsetof(TransferRecord, startClock) == 24);
static_assert(offsetof(TransferRecord, bytesTotal) == 28);
static_assert(offsetof(TransferRecord, currentName) == 68);
static_assert(offsetof(TransferRecord, sourceHandle) == 1108);
static_assert(offsetof(TransferRecord, destinationHandle) == WidenedOffset(1112, 1));
static_assert(offsetof(TransferRecord, progressWindow) == WidenedOffset(1116, 2));
static_assert(offsetof(TransferRecord, status) == WidenedOffset(1120, 2));
static_assert(offsetof(TransferRecord, doneCount) == WidenedOffset(1148, 2));
static_assert(offsetof(TransferRecord, bytesDone) == WidenedOffset(1156, 2));
static_assert(offsetof(ColumnRow, width) == 4 && offsetof(ColumnRow, order) == 8);
static_assert(offsetof(ColumnRow, subItem) == 12 && offsetof(ColumnRow, format) == 16);
static_assert(sizeof(ColumnRow) == 20);
static_assert(offsetof(MenuRow, flags) == 2 && offsetof(MenuRow, entries) == 6);
static_assert(sizeof(MenuRow) == WidenedOffset(10, 1));

/// `FtpHandle.tag` of a live handle.
constexpr u16 liveHandleTag = 20000;

/// Bits of `SiteRecord.siteOptions`.
constexpr u32 SiteOptionAnonymous = 1;
constexpr u32 SiteOptionSavePassword = 2;
constexpr u32 SiteOptionFirewall = 4;
constexpr u32 SiteOptionPassive = 8;

/// Bits of an attribute word.
constexpr u16 attributeDirectory = 0x10;
constexpr u16 attributeLink = 0x2000;
constexpr u16 attributePermissions = 0x8000;  // the word comes from a permission string
constexpr u16 permissionBits = 0x07E7;        // read, write, execute of owner, group and others

/// `MenuRow.id` of a separator.
constexpr u16 menuRowSeparatorId = 0xFFFF;

/// `TransferRecord.status` values that let a transfer go on.
constexpr u32 transferGoesOn = 0;
constexpr u32 transferGoesOnToo = 5;

/// Bits of `TransferRecord.flags`: two boxes of the permission dialog, whose meaning is the host's.
constexpr u32 recordFlagFilter = 0x100;
constexpr u32 recordFlagSubfolders = 0x200000;

// Callbacks of the host: C linkage, the platform's C calling convention.
extern "C" {

/// Message 26, once per entry. `date` and `time` are DOS words in the low 16 bits; `name` is good
/// during the call only. Runs inside the list lock: it sends no window message, waits for nobody.
using ListEntryCallback = void (*)(const char* name, u32 date, u32 time, u32 attributes, u32 size,
                                   HostWord context);

/// Message 29, after a change of directory: the name of the directory just left after "..", else
/// the empty text. Runs on the module's thread.
using DirectoryChangedCallback = void (*)(u16 cookie, const char* text);

/// Messages 39 and 40, when the target exists: the host leaves its answer in `status` of the
/// item's record. `resumeOffset` is where a download would go on, 0 for a transfer from the start.
using ConfirmCallback = void (*)(TransferItem* item, HostWord resumeOffset);

/// Message 46, before the change of directory and after its success. Both run on the module's
/// thread.
using GotoBeginsCallback = void (*)(u16 cookie, u8 panelId);
using GotoDoneCallback = void (*)(u16 cookie, const char* name);
}

}  // namespace quennet
