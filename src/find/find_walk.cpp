// Each directory is worked on in three steps: enter it and read its entries, which no other thread
// may come between; go through the entries; go down. The first step begins in the parent: back
// there by its absolute path, then on by the entry's name.
//
// A lost connection is repaired underneath, and the repair leaves the server in the session's own
// directory. A relative step, or a listing, that met a repair has gone wrong without a sign, so
// the number of logins is compared before and behind, and the step is made once more. So it is when
// the server has closed in order instead of answering, which by itself only the next command would
// find out.

#include "find/find_walk.h"

#include <commctrl.h>

#include <cstring>

#include "control/exchange.h"
#include "control/reconnect.h"
#include "control/sockets.h"
#include "control/working_directory.h"
#include "find/find_lookup.h"
#include "find/find_store.h"
#include "find/find_summary.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr int done = 2;
constexpr u32 deepestLevel = 512;

/// A directory of the present path. It stands on the stack, so it is kept small.
struct WalkLevel {
    const WalkLevel* parent;  // null at the start
    u32 depth;                // 1 at the start
    bool isLink;              // entered by a link
    char path[findPathSize];  // the server's name of it
    u64 listingMark;          // of what the server lists in it, 0 for nothing
    GrowBuffer names;         // of the directories in it, see AppendName
};

enum class Entered {
    entered,
    refused,     // pass this one over
    parentLost,  // and those beside it
};

void Release(GrowBuffer* buffer) {
    CoreFreeWord(&buffer->base);
    *buffer = {};
}

/// A mark of all that is listed: the same for the same entries in the same order (FNV-1a).
u64 MarkOfListing(const void* entries) {
    u64 mark = 0;
    const auto add = [&mark](const void* bytes, std::size_t count) {
        constexpr u64 prime = 0x100000001B3;
        for (std::size_t index = 0; index < count; ++index) {
            mark = (mark ^ static_cast<const u8*>(bytes)[index]) * prime;
        }
    };
    const auto* entry = static_cast<const DirEntry*>(entries);
    while (entry != nullptr && entry->length != 0) {
        constexpr u64 offsetBasis = 0xCBF29CE484222325;
        mark = mark == 0 ? offsetBasis : mark;
        add(entry, offsetof(DirEntry, hostOwned2));
        add(entry->name, std::strlen(entry->name) + 1);
        entry =
            reinterpret_cast<const DirEntry*>(reinterpret_cast<const char*>(entry) + entry->length);
    }
    return mark;
}

/// Whether a link has led to a directory of the present path under another name: some servers call
/// a directory by the way that led there. It lists the same then, to the last date.
bool RepeatsPresentPath(const WalkLevel& level) {
    if (!level.isLink || level.listingMark == 0) {
        return false;
    }
    const WalkLevel* above = level.parent;
    while (above != nullptr && above->listingMark != level.listingMark) {
        above = above->parent;
    }
    return above != nullptr;
}

bool IsOnPresentPath(const WalkLevel* level, const char* path) {
    for (; level != nullptr; level = level->parent) {
        if (std::strcmp(level->path, path) == 0) {
            return true;
        }
    }
    return false;
}

bool HoldsQuote(const char* text) {
    return std::strchr(text, '"') != nullptr;
}

/// Whether the server's answer ends at a quote of a name, which not every server writes twice.
bool HasLostQuote(const WalkLevel* parent, const char* name, const char* path) {
    const bool hasQuote = HoldsQuote(name) || (parent != nullptr && HoldsQuote(parent->path));
    return hasQuote && (path == nullptr || !HoldsQuote(path));
}

bool StorePath(Session* session, WalkLevel* level, const char* path) {
    if (IsOnPresentPath(level->parent, path)) {
        return false;
    }
    if (!StoreText(level->path, findPathSize, path)) {
        RefuseDirectory(session);
        return false;
    }
    return true;
}

/// Takes the step from the parent for the directory's path; not that of a link, which may lead
/// anywhere.
bool StoreStep(Session* session, const char* name, WalkLevel* level) {
    char path[findPathSize + 1 + findNameSize] = "";
    if (level->parent == nullptr || level->isLink) {
        return false;
    }
    StoreText(path, findPathSize, level->parent->path);
    AppendSeparator(path, '/');
    ShellAppendText(path, name, sizeof path);
    return StorePath(session, level, path);
}

/// Asks the server where it is. False for no answer, and for a directory that is not to be walked.
bool LearnPath(Session* session, const char* name, WalkLevel* level) {
    char* path = nullptr;
    if (GetWholeWorkingDir(session, &path) != done) {
        return false;
    }
    if (HasLostQuote(level->parent, name, path)) {
        return StoreStep(session, name, level);
    }
    return path != nullptr && StorePath(session, level, path);
}

Entered EnterOnce(Session* session, const char* name, WalkLevel* level) {
    if (level->parent != nullptr && ChangeDir(session, level->parent->path) != done) {
        return Entered::parentLost;
    }
    if (ChangeDir(session, name) != done || !LearnPath(session, name, level)) {
        return Entered::refused;
    }
    return Entered::entered;
}

/// Another thread that holds the connection sees to that itself.
void RepairIfClosed(const FindWindow* find) {
    Session* session = find->session;
    const bool isHeld = session->exchangeThread.Load() == GetCurrentThreadId();
    if (isHeld && !find->stop.IsSet() && PeerHasClosed(session->controlSocket)) {
        Reconnect(session);
    }
}

Entered Enter(const FindWindow* find, const char* name, WalkLevel* level) {
    Session* session = find->session;
    const u32 logins = session->logins;
    const Entered entered = EnterOnce(session, name, level);
    if (entered != Entered::entered) {
        RepairIfClosed(find);
    }
    if (session->logins == logins) {
        return entered;
    }
    return find->stop.IsSet() ? Entered::refused : EnterOnce(session, name, level);
}

/// The host asks for the listing itself, on this thread or on one of its own.
void* ReadByHost(const FindRun& run, const WalkLevel& level) {
    Session* session = run.find->session;
    const LentExchange lent(session);
    return ShellReadDirectory(level.path, session->handle, run.options & FindOptLongList);
}

/// The entries of the directory that has just been entered; null when there are none.
void* ReadEntries(const FindRun& run, const WalkLevel& level) {
    Session* session = run.find->session;
    const u32 logins = session->logins;
    void* entries = ReadByHost(run, level);
    if (entries == nullptr) {
        RepairIfClosed(run.find);
    }
    if (session->logins == logins) {
        return entries;
    }
    CoreFree(&entries);
    if (run.find->stop.IsSet() || ChangeDir(session, level.path) != done) {
        return nullptr;
    }
    return ReadByHost(run, level);
}

bool IsWanted(const FindRun& run, const FindRecord& record) {
    if (ShellMatchMask(record.name, run.mask) == 0) {
        return false;
    }
    return (run.options & FindOptUseFilter) == 0 || run.filter == nullptr ||
           FilterAccepts(record.name, record.attributes, record.date, record.time, &record.size,
                         run.filter);
}

/// The record of an entry, in the run's scratch area.
FindRecord* BuildRecord(FindRun* run, const DirEntry& entry, std::size_t nameLength,
                        u32 directoryNumber) {
    std::memset(run->scratch, 0, sizeof run->scratch);
    auto* record = reinterpret_cast<FindRecord*>(run->scratch);
    char* name = run->scratch + offsetof(FindRecord, name);
    std::memcpy(name, entry.name, nameLength);
    const u16 dot = ShellExtensionOffset(name);
    record->length = static_cast<u16>(sizeof(FindRecord) + nameLength);
    record->extension = static_cast<u16>(dot < nameLength ? dot + 1 : nameLength);
    record->directoryNumber = directoryNumber;
    record->icon = -1;
    record->size = u64{entry.sizeHigh} << 32 | entry.sizeLow;
    record->attributes = entry.attributes;
    record->date = entry.date;
    record->time = entry.time;
    return record;
}

constexpr char linkMark = 'l';
constexpr char directoryMark = 'd';

/// A name of a directory stands behind a mark that tells whether it is a link's.
void AppendName(GrowBuffer* names, const char* name, bool isLink) {
    char marked[1 + findNameSize];
    marked[0] = isLink ? linkMark : directoryMark;
    const std::size_t length = std::strlen(name);
    std::memcpy(marked + 1, name, length + 1);
    ShellBufferAppend(names, marked, static_cast<u32>(length + 2));
}

/// Takes what is wanted of one entry. True when it is a hit.
bool TakeEntry(FindRun* run, const DirEntry& entry, u32 directoryNumber, WalkLevel* level) {
    const char* name = entry.name;
    const std::size_t nameLength = std::strlen(name);
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0 || nameLength >= findNameSize) {
        return false;
    }
    const FindRecord* record = BuildRecord(run, entry, nameLength, directoryNumber);
    if (IsDirectory(*record) && (run->options & FindOptRecurse) != 0) {
        AppendName(&level->names, name, IsLink(*record));
    }
    if (!IsWanted(*run, *record) || !AppendHit(run->find, record)) {
        return false;
    }
    run->find->found.Count(*record);
    return true;
}

/// Goes through the entries; returns how many are hits.
u32 TakeEntries(FindRun* run, const void* entries, u32 directoryNumber, WalkLevel* level) {
    u32 hits = 0;
    const auto* entry = static_cast<const DirEntry*>(entries);
    while (entry != nullptr && entry->length != 0 && !run->find->stop.IsSet()) {
        hits += TakeEntry(run, *entry, directoryNumber, level) ? 1 : 0;
        entry =
            reinterpret_cast<const DirEntry*>(reinterpret_cast<const char*>(entry) + entry->length);
    }
    return hits;
}

void NoteSeparator(FindWindow* find, const char* path) {
    if (find->separator == '\\' && std::strchr(path, '/') != nullptr) {
        find->separator = '/';
    }
}

/// What one directory added becomes visible.
void ShowProgress(FindWindow* find) {
    SendMessageA(find->list, LVM_SETITEMCOUNT, find->hits.Load(),
                 LVSICF_NOINVALIDATEALL | LVSICF_NOSCROLL);
    ShowFindSummary(find, find->found, runSummary);
}

Entered Walk(const char* name, bool isLink, FindRun* run, const WalkLevel* parent);

/// Visits the directories of a level, in listing order. True when the server is to be brought back
/// to the level behind them.
bool WalkBelow(FindRun* run, WalkLevel* level) {
    const char* name = PointerFromWord<const char>(level->names.base);
    const char* end = name + level->names.used;
    const bool hasNames = level->names.used != 0;
    Entered below = Entered::entered;
    while (name != end && !run->find->stop.IsSet() && below != Entered::parentLost) {
        below = Walk(name + 1, *name == linkMark, run, level);
        name += std::strlen(name) + 1;
    }
    Release(&level->names);
    return hasNames && below != Entered::parentLost;
}

/// Enters a directory, reads it and puts its hits into the store.
Entered Visit(const char* name, FindRun* run, WalkLevel* level, u32* hits) {
    FindWindow* find = run->find;
    void* entries = nullptr;
    u32 directoryNumber = 0;
    {
        const Exchange exchange(find->session);
        const Entered entered = Enter(find, name, level);
        if (entered != Entered::entered) {
            return entered;
        }
        directoryNumber = AppendDirectory(find, level->path);
        ShowFindPane(find, 0, level->path);
        entries = directoryNumber != 0 ? ReadEntries(*run, *level) : nullptr;
    }
    level->listingMark = MarkOfListing(entries);
    if (!RepeatsPresentPath(*level)) {
        *hits = TakeEntries(run, entries, directoryNumber, level);
    }
    CoreFree(&entries);
    return Entered::entered;
}

Entered Walk(const char* name, bool isLink, FindRun* run, const WalkLevel* parent) {
    FindWindow* find = run->find;
    NoteSeparator(find, name);
    WalkLevel level;
    level.parent = parent;
    level.depth = parent != nullptr ? parent->depth + 1 : 1;
    level.isLink = isLink;
    level.listingMark = 0;
    level.names = {};
    if (level.depth > deepestLevel) {
        return Entered::refused;
    }
    u32 hits = 0;
    const Entered entered = Visit(name, run, &level, &hits);
    if (entered != Entered::entered) {
        return entered;
    }
    IndexHits(find);
    const bool leftLevel = WalkBelow(run, &level);
    if (hits != 0) {
        ShowProgress(find);
    }
    if (leftLevel && !IsEnding(find)) {
        ChangeDir(find->session, level.path);
    }
    return Entered::entered;
}

}  // namespace

void WalkDirectory(const char* path, FindRun* run) {
    Walk(path, false, run, nullptr);
}

bool FilterAccepts(const char* name, u16 attributes, u16 date, u16 time, const void* size,
                   const void* filter) {
    constexpr std::size_t wordOffset = 2;
    constexpr u16 acceptsDirectories = 0x10;
    if ((attributes & attributeDirectory) != 0) {
        u16 word = 0;
        std::memcpy(&word, static_cast<const char*>(filter) + wordOffset, sizeof word);
        if ((word & acceptsDirectories) == 0) {
            return false;
        }
    }
    return ShellFilterMatch(name, attributes, date, time, size, filter) != 0;
}

}  // namespace quennet
