#pragma once
// The records of FTP Find: one window and what it found.
//
// Hits lie back to back in one buffer, the directories they are in in another, and the list's rows
// are offsets into the first. An append may move a buffer, so nothing holds an address in it but
// the record table, which exists between two runs only.

#include "control/session.h"

namespace quennet {

constexpr u32 findPathSize = 520;     // of a directory's path, with its terminator
constexpr u32 findNameSize = 521;     // of a hit's name, with its terminator
constexpr u32 findScratchSize = 592;  // one record is built in it
constexpr u32 findMaskSize = 260;
constexpr u32 typeNameSize = 40;

#pragma pack(push, 1)

/// One hit, as long as its name.
struct FindRecord {
    u16 length;               // bytes, with the name and its terminator
    u16 extension;            // offset in the name behind the last dot, or of the terminator
    u32 directoryNumber;      // of its FindDirRecord, from 1
    i32 icon;                 // -1 until the list asks for it
    u64 size;                 // bytes
    u16 attributes;           // attributeDirectory and the bits of a permission word
    u16 date;                 // DOS date
    u16 time;                 // DOS time
    u8 reserved[4];           // 0
    u8 listState;             // state of its row when it was last looked at
    char type[typeNameSize];  // empty until FillTypeName
    char name[1];
};

/// One directory that was entered, hits or not.
struct FindDirRecord {
    u16 length;    // bytes, with the path and its terminator
    char path[1];  // as the server reported it
};

#pragma pack(pop)

static_assert(offsetof(FindRecord, size) == 12 && offsetof(FindRecord, attributes) == 20);
static_assert(offsetof(FindRecord, listState) == 30 && offsetof(FindRecord, name) == 71);
static_assert(offsetof(FindDirRecord, path) == 2);
static_assert(offsetof(FindRecord, name) + findNameSize == findScratchSize);

inline bool IsDirectory(const FindRecord& record) {
    return (record.attributes & attributeDirectory) != 0;
}

/// A directory with both bits of a link.
inline bool IsLink(const FindRecord& record) {
    constexpr u16 linkBits = attributeDirectory | attributePermissions | attributeLink;
    return (record.attributes & linkBits) == linkBits;
}

struct FindCounters {
    u64 folders;
    u64 files;
    u64 bytes;  // of the files

    void Count(const FindRecord& record) {
        if (IsDirectory(record)) {
            ++folders;
        } else {
            ++files;
            bytes += record.size;
        }
    }
};

// Bits of `FindWindow.options`; bit 0 is the host's.
constexpr u32 FindOptToolbarHidden = 0x02;
constexpr u32 FindOptStatusHidden = 0x04;
constexpr u32 FindOptRecurse = 0x10;
constexpr u32 FindOptLongList = 0x20;
constexpr u32 FindOptUseFilter = 0x40;
constexpr u32 FindOptViewIcons = 0x100;
constexpr u32 FindOptViewSmall = 0x200;
constexpr u32 FindOptViewList = 0x400;
constexpr u32 FindOptViewBits = 0xF00;

extern "C" {

/// The host is to show a hit: its name and its directory, good during the call only.
using FindGoToCallback = void (*)(Session* session, const char* name, const char* directory);
/// A hit is about to be looked up.
using FindNotifyCallback = i32 (*)();
}

/// A command of the window that is not always allowed.
struct FindCommandState {
    u32 command;
    u32 wanted;   // 1: disabled
    u32 applied;  // what menu and tool bar show
};

constexpr u32 findCommandStates = 7;  // with the row that ends the table
constexpr u32 findColumns = 7;

/// One Find window. `CoreAlloc` gives it zeroed. The lock is ShellListLock.
struct FindWindow {
    HINSTANCE instance;
    HWND window;
    HWND toolBar;
    HWND statusBar;  // three panes
    Session* session;
    HWND maskLabel;
    HWND maskBox;
    HWND checkBoxes[3];
    HWND filterButton;
    HWND list;
    u32 options;
    char startPath[findPathSize];
    GrowBuffer index;          // u32: the offset in `records` of each row's hit; under the lock
    GrowBuffer records;        // FindRecord; under the lock
    GrowBuffer directories;    // FindDirRecord; under the lock
    FindRecord** recordTable;  // each record's address, null unless a run has ended; under the lock
    FindCounters found;        // the worker's
    FindCounters selected;     // of the rows that are selected
    char textFile[pathSize];
    char csvFile[pathSize];
    char htmlFile[pathSize];
    i32 minimumWidth;  // 0 before the first layout
    i32 minimumHeight;
    void* filter;     // the host's
    SharedWord busy;  // a run is on its way
    SharedWord stop;  // it is to end
    FindGoToCallback goTo;
    FindNotifyCallback notify;
    char separator;

    // The module's bookkeeping beside the fields above.
    SharedWord worker;        // 1 from StartFind to the last step of its run
    SharedWord workerThread;  // its id
    SharedWord hits;          // rows of `index`, for those who only ask whether there are any
    SharedWord closing;       // the window is about to go
    u32 runOptions;           // `options` as they were when the run began
    u32 indexed;              // bytes of `records` that have rows; under the lock
    u32 firstStateRow;        // rows whose records may hold a list state: from here, under the lock
    u32 endStateRow;          //   up to but without this one
    GrowBuffer
        directoryMarks;  // u32: offset of every directoryMarkStep-th directory; under the lock
    FindCommandState commandStates[findCommandStates];
    ColumnRow columns[findColumns];
    HFONT font;  // made for the controls
    u32 uses;    // calls on the window's thread that go on with the record behind a dialog
};

/// Window or connection are about to go: a run ends as soon as it can.
inline bool IsEnding(const FindWindow* find) {
    return find->closing.IsSet() || find->session->closing.IsSet();
}

}  // namespace quennet
