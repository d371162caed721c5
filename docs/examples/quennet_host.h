#pragma once
// What a host and the Quennet module exchange, for C11 and C++17: messages, records, and the two
// tables of services. It needs nothing but the language's own headers, so it can be copied into any
// project. The page host-guide.md tells what each of these is for.
//
// Records are packed and little-endian. A word that holds an address is as wide as one, so offsets
// behind it differ between the two widths; the assertions give both. Bytes called hostOwned are the
// host's: the module neither reads nor writes them.

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// A word that may hold an address, a function or a number.
typedef uintptr_t QuennetWord;
/// A window handle of the platform (HWND), and the same as a number in a record; 0 is none.
typedef void* QuennetWindow;
typedef uint32_t QuennetWindowNumber;
/// The module's own record of a connection.
typedef struct QuennetSession QuennetSession;

/// An offset or a size: in the 32-bit layout and in the 64-bit one.
#define QUENNET_IN_WIDTHS(narrow, wide) (sizeof(QuennetWord) == 4 ? (narrow) : (wide))
#define QUENNET_OFFSET(record, field, narrow, wide) \
    static_assert(offsetof(record, field) == QUENNET_IN_WIDTHS(narrow, wide), #record "." #field)
#define QUENNET_SIZE(record, narrow, wide) \
    static_assert(sizeof(record) == QUENNET_IN_WIDTHS(narrow, wide), #record)

// ---- Messages ---------------------------------------------------------------------------------

enum {
    QUENNET_SET_TABLES = 1,
    QUENNET_PING = 3,
    QUENNET_GET_HOST_TEXT = 21,
    QUENNET_SET_HOST_TEXT = 22,
    QUENNET_GET_DIRECTORY = 23,
    QUENNET_CONNECT = 24,
    QUENNET_DISCONNECT = 25,
    QUENNET_LIST_DIRECTORY = 26,
    QUENNET_INVALIDATE_LISTING = 27,
    QUENNET_INVALIDATE_LISTINGS = 28,
    QUENNET_CHANGE_DIRECTORY = 29,
    QUENNET_TRY_DIRECTORY = 30,
    QUENNET_DELETE_FILE = 31,
    QUENNET_REMOVE_DIRECTORY = 32,
    QUENNET_MAKE_DIRECTORY = 33,
    QUENNET_APPLY_PERMISSIONS = 34,
    QUENNET_RENAME = 37,
    QUENNET_COPY_BETWEEN_SERVERS = 38,
    QUENNET_GET_FILE = 39,
    QUENNET_PUT_FILE = 40,
    QUENNET_ABORT = 41,
    QUENNET_FORMAT_PERMISSIONS = 42,
    QUENNET_ASK_PERMISSIONS = 43,
    QUENNET_ASK_TEXT = 44,
    QUENNET_FIND = 45,
    QUENNET_GO_TO_DIRECTORY = 46,
    QUENNET_RAW_COMMAND = 47,
    QUENNET_SAVE_RAW_LISTING = 48,
};

/// Words that a message does not use need not be set. The module does not write to the record.
typedef struct QuennetMessage {
    QuennetWord message;
    QuennetWord arg1;
    QuennetWord arg2;
    QuennetWord arg3;
    QuennetWord arg4;
    QuennetWord arg5;
    QuennetWord arg6;
    QuennetWord arg7;
} QuennetMessage;
QUENNET_OFFSET(QuennetMessage, arg7, 28, 56);
QUENNET_SIZE(QuennetMessage, 32, 64);

/// The one function that the module exports, by the name "f".
typedef int32_t (*QuennetFunction)(const QuennetMessage* message);

enum { QUENNET_TABLES_STORED = 0x10000 };  // the result of message 1

/// Window message that the module posts to the host's main window, and its wParam.
enum {
    QUENNET_NOTIFICATION = 1074,
    QUENNET_CONNECT_FAILED = 2,     // lParam: a block that is now the host's: panelId, then a text
    QUENNET_RECONNECT_FAILED = 3,   // lParam: panelId as a signed byte
    QUENNET_CONNECTED = 5,          // lParam: panelId in the low byte, the cookie in bits 8 to 23
    QUENNET_CONNECTION_STANDS = 6,  // lParam: 0; comes before QUENNET_CONNECTED
};

// ---- Records ----------------------------------------------------------------------------------

enum {
    QUENNET_LIVE_HANDLE = 20000,  // FtpHandle.tag

    QUENNET_SITE_ANONYMOUS = 1,  // SiteRecord.siteOptions
    QUENNET_SITE_SAVE_PASSWORD = 2,
    QUENNET_SITE_FIREWALL = 4,
    QUENNET_SITE_PASSIVE = 8,

    QUENNET_ATTRIBUTE_DIRECTORY = 0x10,  // attribute words
    QUENNET_ATTRIBUTE_LINK = 0x2000,
    QUENNET_ATTRIBUTE_PERMISSIONS = 0x8000,  // the word comes from a permission string

    QUENNET_GO_ON = 0,  // TransferRecord.status, the answer to the confirm callback
    QUENNET_LEAVE_OUT = 1,

    QUENNET_PATH_SIZE = 260,  // bytes of a path's field, with the terminator
};

/// Access words of the services that open a file.
#define QUENNET_READ       0x80000000u
#define QUENNET_WRITE      0x40000000u
#define QUENNET_READ_WRITE 0xC0000000u

#pragma pack(push, 1)

/// Where and how to connect; the connection dialog fills it. The same in both widths.
typedef struct QuennetSiteRecord {
    char name[28];
    char user[81];
    char password[81];
    char firewallUser[81];
    char firewallPassword[81];
    char firewallHost[81];
    char host[81];
    char directory[260];  // after the login the server's current directory
    uint32_t firewallType;
    uint32_t siteOptions;
} QuennetSiteRecord;
QUENNET_OFFSET(QuennetSiteRecord, user, 28, 28);
QUENNET_OFFSET(QuennetSiteRecord, password, 109, 109);
QUENNET_OFFSET(QuennetSiteRecord, firewallUser, 190, 190);
QUENNET_OFFSET(QuennetSiteRecord, firewallPassword, 271, 271);
QUENNET_OFFSET(QuennetSiteRecord, firewallHost, 352, 352);
QUENNET_OFFSET(QuennetSiteRecord, host, 433, 433);
QUENNET_OFFSET(QuennetSiteRecord, directory, 514, 514);
QUENNET_OFFSET(QuennetSiteRecord, firewallType, 774, 774);
QUENNET_OFFSET(QuennetSiteRecord, siteOptions, 778, 778);
QUENNET_SIZE(QuennetSiteRecord, 782, 782);

/// The front of a connection's block. The module makes it and gives it back.
typedef struct QuennetFtpHandle {
    uint16_t tag;
    uint8_t hostOwned1[276];
    uint8_t panelId;
    uint32_t connectClock;  // milliseconds from the start of the process to the making
    QuennetWord session;    // address of the QuennetSession
    uint8_t hostOwned2[2];
    char errorText[260];  // why the last transfer failed
    uint8_t hostOwned3[260];
} QuennetFtpHandle;
QUENNET_OFFSET(QuennetFtpHandle, panelId, 278, 278);
QUENNET_OFFSET(QuennetFtpHandle, connectClock, 279, 279);
QUENNET_OFFSET(QuennetFtpHandle, session, 283, 283);
QUENNET_OFFSET(QuennetFtpHandle, errorText, 289, 293);
QUENNET_SIZE(QuennetFtpHandle, 809, 813);

/// Argument 7 of message 24.
typedef struct QuennetConnectParams {
    QuennetWord section;           // address of the name of the host's main settings section
    QuennetWord site;              // set by the module: address of the QuennetSiteRecord
    QuennetWord instance;          // of the module: where its dialogs are
    QuennetWord watchdogInstance;  // where its window class is registered: the same
} QuennetConnectParams;
QUENNET_OFFSET(QuennetConnectParams, site, 4, 8);
QUENNET_OFFSET(QuennetConnectParams, instance, 8, 16);
QUENNET_OFFSET(QuennetConnectParams, watchdogInstance, 12, 24);
QUENNET_SIZE(QuennetConnectParams, 16, 32);

/// One listed entry in a list of the host's. The same in both widths.
typedef struct QuennetDirEntry {
    uint16_t length;  // bytes to the next record; 0 ends the list
    uint16_t date;    // DOS date
    uint16_t time;    // DOS time
    uint16_t hostOwned1;
    uint32_t sizeLow;
    uint32_t sizeHigh;
    uint16_t attributes;
    uint8_t hostOwned2[6];
    char name[1];  // as long as it is, with its terminator
} QuennetDirEntry;
QUENNET_OFFSET(QuennetDirEntry, date, 2, 2);
QUENNET_OFFSET(QuennetDirEntry, time, 4, 4);
QUENNET_OFFSET(QuennetDirEntry, sizeLow, 8, 8);
QUENNET_OFFSET(QuennetDirEntry, sizeHigh, 12, 12);
QUENNET_OFFSET(QuennetDirEntry, attributes, 16, 16);
QUENNET_OFFSET(QuennetDirEntry, name, 24, 24);

/// One file of a copy.
typedef struct QuennetTransferItem {
    char source[260];
    char destination[260];
    QuennetWord record;   // address of the QuennetTransferRecord
    uint16_t sourceDate;  // DOS dates and times
    uint16_t destinationDate;
    uint16_t sourceTime;
    uint16_t destinationTime;
    uint64_t sourceSize;
    uint64_t destinationSize;
    uint8_t hostOwned1[4];
    uint32_t destinationAttributes;
} QuennetTransferItem;
QUENNET_OFFSET(QuennetTransferItem, destination, 260, 260);
QUENNET_OFFSET(QuennetTransferItem, record, 520, 520);
QUENNET_OFFSET(QuennetTransferItem, sourceDate, 524, 528);
QUENNET_OFFSET(QuennetTransferItem, destinationDate, 526, 530);
QUENNET_OFFSET(QuennetTransferItem, sourceTime, 528, 532);
QUENNET_OFFSET(QuennetTransferItem, destinationTime, 530, 534);
QUENNET_OFFSET(QuennetTransferItem, sourceSize, 532, 536);
QUENNET_OFFSET(QuennetTransferItem, destinationSize, 540, 544);
QUENNET_OFFSET(QuennetTransferItem, destinationAttributes, 552, 556);
QUENNET_SIZE(QuennetTransferItem, 556, 560);

/// One whole operation of the host.
typedef struct QuennetTransferRecord {
    uint32_t clearMask;
    uint32_t setMask;
    uint32_t flags;
    uint8_t hostOwned1[12];
    uint32_t startClock;  // milliseconds from the start of the process to that of the data
    uint64_t bytesTotal;
    uint8_t hostOwned2[32];
    char currentName[260];
    uint8_t hostOwned3[780];
    QuennetWord sourceHandle;
    QuennetWord destinationHandle;
    QuennetWindowNumber progressWindow;
    uint32_t status;
    uint8_t hostOwned4[24];
    uint64_t doneCount;
    uint64_t bytesDone;
} QuennetTransferRecord;
QUENNET_OFFSET(QuennetTransferRecord, setMask, 4, 4);
QUENNET_OFFSET(QuennetTransferRecord, flags, 8, 8);
QUENNET_OFFSET(QuennetTransferRecord, startClock, 24, 24);
QUENNET_OFFSET(QuennetTransferRecord, bytesTotal, 28, 28);
QUENNET_OFFSET(QuennetTransferRecord, currentName, 68, 68);
QUENNET_OFFSET(QuennetTransferRecord, sourceHandle, 1108, 1108);
QUENNET_OFFSET(QuennetTransferRecord, destinationHandle, 1112, 1116);
QUENNET_OFFSET(QuennetTransferRecord, progressWindow, 1116, 1124);
QUENNET_OFFSET(QuennetTransferRecord, status, 1120, 1128);
QUENNET_OFFSET(QuennetTransferRecord, doneCount, 1148, 1156);
QUENNET_OFFSET(QuennetTransferRecord, bytesDone, 1156, 1164);
QUENNET_SIZE(QuennetTransferRecord, 1164, 1172);

/// A column of a list view; a title of 0 in the low 16 bits ends the table.
typedef struct QuennetColumnRow {
    uint32_t title;
    uint32_t width;
    uint32_t order;
    uint32_t subItem;
    uint32_t format;
} QuennetColumnRow;
QUENNET_OFFSET(QuennetColumnRow, format, 16, 16);
QUENNET_SIZE(QuennetColumnRow, 20, 20);

/// An entry of a menu; an id of 0 ends a level.
typedef struct QuennetMenuRow {
    uint16_t id;
    uint16_t flags;
    uint16_t zero;
    QuennetWord entries;  // address of the rows of a submenu, or 0
} QuennetMenuRow;
QUENNET_OFFSET(QuennetMenuRow, flags, 2, 2);
QUENNET_OFFSET(QuennetMenuRow, entries, 6, 6);
QUENNET_SIZE(QuennetMenuRow, 10, 14);

#pragma pack(pop)

/// A buffer that bufferAppend lets grow; all words 0 when empty.
typedef struct QuennetGrowBuffer {
    QuennetWord base;   // address of the data, as CoreServices.alloc gives it
    QuennetWord count;  // successful appends
    QuennetWord host;   // for bufferAppend itself
    QuennetWord used;   // bytes
} QuennetGrowBuffer;
QUENNET_OFFSET(QuennetGrowBuffer, used, 12, 24);
QUENNET_SIZE(QuennetGrowBuffer, 16, 32);

/// What askPassword is asked.
typedef struct QuennetPasswordQuestion {
    QuennetWord buffer;    // address of the text to be filled
    QuennetWord size;      // its bytes, with the terminator
    QuennetWord hostText;  // address of the server's name
} QuennetPasswordQuestion;
QUENNET_SIZE(QuennetPasswordQuestion, 12, 24);

// ---- Callbacks --------------------------------------------------------------------------------

/// Message 26, once for each entry, inside the list lock. `name` is good during the call only.
typedef void (*QuennetListEntry)(const char* name, uint32_t date, uint32_t time,
                                 uint32_t attributes, uint32_t size, QuennetWord context);
/// Message 29, after success, on a thread of the module.
typedef void (*QuennetDirectoryChanged)(uint16_t cookie, const char* left);
/// Messages 39 and 40, when the target exists: the answer goes into `status` of the item's record.
typedef void (*QuennetConfirm)(QuennetTransferItem* item, QuennetWord resumeOffset);
/// Message 45: a hit is to be shown; a hit is about to be looked up.
typedef void (*QuennetFindGoTo)(QuennetSession* session, const char* name, const char* directory);
typedef int32_t (*QuennetFindNotify)(void);
/// Message 46, before the change and after success, on a thread of the module.
typedef void (*QuennetGoToBegins)(uint16_t cookie, uint8_t panelId);
typedef void (*QuennetGoToDone)(uint16_t cookie, const char* name);

// ---- The two tables of services ---------------------------------------------------------------

#if defined(__GNUC__) && !defined(_WIN32)
#define QUENNET_FORMATTED __attribute__((format(printf, 2, 3)))
#else
#define QUENNET_FORMATTED
#endif

/// 14 words.
typedef struct QuennetCoreServices {
    uint32_t* pingWord;   // 0
    QuennetWord profile;  // 1
    void (*getProfilePath)(QuennetWord profile, char* path);
    void (*saveHistory)(QuennetWindow comboBox, const char* file, const char* section,
                        int32_t limit);
    void (*loadHistory)(QuennetWindow comboBox, const char* file, const char* section,
                        int32_t limit);
    void (*loadText)(uint32_t textId, char* buffer, uint32_t size);  // 5
    void (*applyDialogTexts)(QuennetWindow window, const uint16_t* table);
    void (*addHistory)(QuennetWindow comboBox, const char* text);
    void (*consolePrint)(QuennetWindowNumber console, const char* format, ...) QUENNET_FORMATTED;
    void (*showMessage)(QuennetWindowNumber window, uint32_t textId);
    void (*initDialog)(QuennetWindow dialog);  // 10
    void* (*alloc)(QuennetWord size);
    void (*free)(void** pointer);
    void (*copyText)(char* target, const char* text, uint32_t size);  // 13
} QuennetCoreServices;
QUENNET_SIZE(QuennetCoreServices, 56, 112);

/// 66 words.
typedef struct QuennetShellServices {
    int32_t* currentSiteId;    // 0
    uint32_t* optionWord;      // 1
    void* listLock;            // 2: address of a CRITICAL_SECTION
    const char* folderSample;  // 3
    const char* fileWord;      // 4
    uint32_t (*registerWindow)(QuennetWindow window, uint32_t kind, uint32_t zero);  // 5
    void (*unregisterWindow)(QuennetWindow window);
    int32_t (*getTransferType)(const char* path);
    int32_t (*editFilter)(QuennetWindow owner, void* filter);
    void (*refreshPanel)(uint32_t cookie, uint32_t zero);
    QuennetDirEntry* (*readDirectory)(const char* path, QuennetFtpHandle* handle,
                                      uint32_t option);  // 10
    void (*setStatusIcon)(QuennetWindow statusBar, uint32_t pane, uint32_t on);
    int32_t (*fileCheck)(const char* path);
    int32_t (*closeFile)(QuennetWord file);
    int32_t (*createFile)(QuennetWindow window, const char* path, QuennetWord* file);
    int32_t (*queryFileSize)(uint32_t zero, QuennetWord file, uint64_t* size);  // 15
    int32_t (*openFile)(const char* path, QuennetWord* file, uint32_t access);
    int32_t (*openFileAt)(QuennetWindow console, const char* path, QuennetWord* file,
                          uint32_t access);
    int32_t (*readFile)(QuennetWord file, void* buffer, uint32_t size);
    QuennetWord unused19;
    int32_t (*seekFile)(QuennetWord file, QuennetWord position);  // 20
    int32_t (*setFileTime)(QuennetWord file, uint32_t date, uint32_t time);
    int32_t (*writeTextLine)(QuennetWindow window, QuennetWord file, const char* text);
    int32_t (*writeFile)(QuennetWindow window, QuennetWord file, const void* data, uint32_t length);
    void (*addProgress)(QuennetWord record, uint32_t bytes);
    QuennetWord unused25;
    void (*panelClosed)(QuennetSession* session, uint32_t panelId);
    void (*panelConnected)(uint32_t panelId, QuennetSiteRecord* site);
    void (*menuInit)(QuennetWindow window, const QuennetMenuRow* rows);
    int32_t (*askPassword)(QuennetWindow owner, QuennetPasswordQuestion* question);
    void* (*freeHandle)(void* handle);  // 30
    int32_t (*filterMatch)(const char* name, uint32_t attributes, uint32_t date, uint32_t time,
                           const void* size, const void* filter);
    int32_t (*matchMask)(const char* name, const char* masks);
    void (*setColumns)(QuennetWindow list, const QuennetColumnRow* columns);
    void (*getColumnOrder)(QuennetWindow list, QuennetColumnRow* columns);
    void (*loadColumns)(QuennetColumnRow* columns, const char* name, const char* file,
                        uint32_t zero);  // 35
    int32_t (*getCurrentItem)(QuennetWindow list);
    void (*setCurrentItem)(QuennetWindow list, int32_t item);
    void (*columnTexts)(QuennetWindow list, const QuennetColumnRow* columns);
    void (*prepareList)(QuennetWindow list);
    void (*setViewStyle)(QuennetWindow list, uint32_t view);  // 40
    void (*saveColumns)(const QuennetColumnRow* columns, const char* name, const char* file);
    void (*readSetting)(const char* section, const char* key, const char* standard, char* buffer,
                        uint32_t size, const char* file);
    void (*writeSetting)(const char* section, const char* key, const char* value, const char* file);
    void (*readSection)(const char* section, char* buffer, uint32_t size, const char* file);
    void (*writeSection)(const char* section, const char* text, const char* file);  // 45
    void (*loadPlacement)(const char* file, const char* name, int32_t* x, int32_t* y,
                          int32_t* width, int32_t* height, uint32_t* word);
    void (*savePlacement)(QuennetWindow window, const char* file, const char* name);
    void (*comboAdd)(QuennetWindow comboBox, const char* text);
    int32_t (*bufferAppend)(QuennetGrowBuffer* buffer, const void* data, uint32_t size);
    int32_t (*preparePath)(char* path);  // 50
    void (*formatDate)(char* text, uint32_t date, uint32_t time, uint32_t size);
    QuennetWindow (*createToolbar)(QuennetWindow window, void* instance, const void* buttons,
                                   uint32_t style, uint32_t id, uint32_t zero1, uint32_t zero2,
                                   uint32_t count, uint32_t bitmaps);
    void (*formatAttributes)(char* text, uint32_t attributes);
    void (*formatNumber)(const void* number, char* text);
    uint16_t (*extensionOffset)(const char* name);  // 55
    uint32_t (*nameOffset)(const char* path);
    uint32_t (*getSystemDir)(char* buffer, uint32_t size);
    void (*listAction1)(QuennetWindow dialog, uint32_t listId);
    void (*listAction2)(QuennetWindow dialog, uint32_t listId);
    void (*reportError)(QuennetWindow owner, uint32_t textId, QuennetWord caption,
                        uint32_t icon);  // 60
    int32_t (*getDialogFont)(QuennetWindow window, void* font, uint32_t size);
    void (*moveControl)(QuennetWindow control, int32_t x, int32_t y, int32_t width, int32_t height);
    void (*setForeground)(QuennetWindow window);
    void (*upperFirst)(char* text);
    void (*appendText)(char* target, const char* text, uint32_t size);  // 65
} QuennetShellServices;
QUENNET_OFFSET(QuennetShellServices, seekFile, 20 * 4, 20 * 8);
QUENNET_OFFSET(QuennetShellServices, freeHandle, 30 * 4, 30 * 8);
QUENNET_SIZE(QuennetShellServices, 66 * 4, 66 * 8);

#ifdef __cplusplus
}
#endif
