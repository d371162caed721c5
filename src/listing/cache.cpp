#include "listing/cache.h"

#include <cstring>

#include "control/exchange.h"
#include "control/working_directory.h"
#include "host/services.h"
#include "listing/list_text.h"
#include "listing/walker.h"

namespace quennet {
namespace {

constexpr u32 spareBytes = 3;  // behind an entry's path
constexpr u32 wordSize = 4;
constexpr std::size_t largestEntry =
    (offsetof(CacheEntry, path) + pathSize + spareBytes + wordSize - 1) / wordSize * wordSize;
static_assert(largestEntry == WidenedOffset(276, 1));

constexpr int listed = 2;  // the result of a fetch that succeeded

u32 EntryCount(const Session* session) {
    return static_cast<u32>(session->cacheBlock.count);
}

CacheEntry* FirstEntry(const Session* session) {
    return PointerFromWord<CacheEntry>(session->cacheBlock.base);
}

// May also stand behind the last one, where there is no entry to look at.
CacheEntry* NextEntry(CacheEntry* entry) {
    return reinterpret_cast<CacheEntry*>(reinterpret_cast<char*>(entry) + entry->length);
}

// The field lies on any byte, so the word is taken out of it first.
void FreeText(CacheEntry* entry) {
    HostWord text = entry->text;
    CoreFreeWord(&text);
    entry->text = 0;
}

// The request that the session notes while it fetches a directory.
bool IsBeingFetched(const Session* session, const char* path) {
    return session->listingDir[0] != '\0' && std::strcmp(session->listingDir, path) == 0;
}

void EndFetch(Session* session) {
    session->listingDir[0] = '\0';
}

// Takes over the text in `buffer`. Without memory for a new entry the text is lost, and the entry
// that was current before stays it.
void KeepListing(Session* session, const char* path, GrowBuffer* buffer) {
    u32 number = FindCacheEntry(session, path);
    if (number == 0) {
        number = AddCacheEntry(session, path);
    }
    CacheEntry* entry = CacheEntryAt(session, number);
    if (entry == nullptr) {
        CoreFreeWord(&buffer->base);
        return;
    }
    FreeText(entry);
    entry->text = buffer->base;
    entry->valid = number;
    session->currentCacheIndex = number;
}

// What the listing of a path is kept under: a path that is too long by its end, where directories
// differ.
const char* KeyOf(const char* path) {
    constexpr std::size_t longest = pathSize - 1;
    const std::size_t length = std::strlen(path);
    return length > longest ? path + length - longest : path;
}

// Whether a cached text serves. If not, the session notes that `path` is being fetched.
bool BeginRequest(Session* session, const char* path, bool isCurrent) {
    const ListLock lock;
    if (IsBeingFetched(session, path)) {
        return true;
    }
    const u32 number = FindCacheEntry(session, path);
    const CacheEntry* entry = CacheEntryAt(session, number);
    if (isCurrent && entry != nullptr && entry->valid != 0) {
        session->currentCacheIndex = number;
        EndFetch(session);
        return true;
    }
    StoreText(session->listingDir, pathSize, path);
    return false;
}

/// A listing by name may be the one that a search waits for.
int ReadForHost(const char* path, Session* session, u32 longOption) {
    const Exchange exchange(path != nullptr ? session : nullptr, Exchange::Lent{});
    return ReadListing(path, session, longOption);
}

}  // namespace

CacheEntry* CacheEntryAt(const Session* session, u32 number) {
    if (number == 0 || number > session->cacheBlock.count) {
        return nullptr;
    }
    CacheEntry* entry = FirstEntry(session);
    for (; number > 1; --number) {
        entry = NextEntry(entry);
    }
    return entry;
}

u32 FindCacheEntry(const Session* session, const char* path) {
    const u32 count = EntryCount(session);
    CacheEntry* entry = FirstEntry(session);
    for (u32 number = 1; number <= count; ++number, entry = NextEntry(entry)) {
        if (EqualsInAnyCase(entry->path, path)) {
            return number;
        }
    }
    return 0;
}

u32 AddCacheEntry(Session* session, const char* path) {
    const std::size_t pathLength = std::strlen(path);
    if (pathLength >= pathSize) {
        return 0;
    }
    CacheEntry head = {};
    head.length = static_cast<u16>(offsetof(CacheEntry, path) + pathLength + 1 + spareBytes);
    char record[largestEntry] = {};
    std::memcpy(record, &head, offsetof(CacheEntry, path));
    std::memcpy(record + offsetof(CacheEntry, path), path, pathLength);

    const u32 countBefore = EntryCount(session);
    ShellBufferAppend(&session->cacheBlock, record, head.length);
    const u32 count = EntryCount(session);
    return count > countBefore ? count : 0;
}

void FreeDirCache(Session* session) {
    const u32 count = EntryCount(session);
    CacheEntry* entry = FirstEntry(session);
    for (u32 number = 1; number <= count; ++number, entry = NextEntry(entry)) {
        FreeText(entry);
    }
    GrowBuffer* cache = &session->cacheBlock;
    cache->count = 0;
    CoreFreeWord(&cache->base);
    *cache = {};
}

int ReadListing(const char* path, Session* session, u32 longOption) {
    const bool isCurrent = path == nullptr || path == session->site.directory;
    // The current directory can change while its listing is received.
    char key[pathSize];
    if (isCurrent) {
        CopySessionDir(session, key);
    } else {
        StoreText(key, pathSize, KeyOf(path));
    }
    if (BeginRequest(session, key, isCurrent)) {
        return listed;
    }
    GrowBuffer buffer = {};
    const int result = FetchListing(session, &buffer, longOption);

    const ListLock lock;
    EndFetch(session);
    if (result != listed) {
        CoreFreeWord(&buffer.base);
        return result;
    }
    KeepListing(session, key, &buffer);
    return listed;
}

i32 ListDirectory(const char* path, FtpHandle* handle, ListEntryCallback callback, HostWord context,
                  u32 longOption) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr || ReadForHost(path, session, longOption) != listed) {
        return -1;
    }
    const ListLock lock;
    const CacheEntry* entry = CacheEntryAt(session, session->currentCacheIndex);
    if (entry != nullptr) {
        ParseListing(path, session, PointerFromWord<const char>(entry->text), callback, context);
    }
    return 0;
}

void InvalidateCacheEntry(FtpHandle* handle, const char* path) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return;
    }
    const ListLock lock;
    const u32 number = path != nullptr ? FindCacheEntry(session, path) : session->currentCacheIndex;
    CacheEntry* entry = CacheEntryAt(session, number);
    if (entry != nullptr) {
        entry->valid = 0;
    }
}

void InvalidateDirCache(FtpHandle* handle) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return;
    }
    const ListLock lock;
    const u32 count = EntryCount(session);
    CacheEntry* entry = FirstEntry(session);
    for (u32 number = 1; number <= count; ++number, entry = NextEntry(entry)) {
        entry->valid = 0;
    }
}

// The host may wait for its user while it writes, so the lock is not held meanwhile: the text is
// copied first.
void SaveRawListing(HWND window, ShellFile file, FtpHandle* handle) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return;
    }
    void* copy = nullptr;
    std::size_t length = 0;
    {
        const ListLock lock;
        const CacheEntry* entry = CacheEntryAt(session, session->currentCacheIndex);
        const char* text = entry != nullptr ? PointerFromWord<const char>(entry->text) : nullptr;
        length = text != nullptr ? std::strlen(text) : 0;
        copy = length != 0 ? CoreAlloc(length) : nullptr;
        if (copy != nullptr) {
            std::memcpy(copy, text, length);
        }
    }
    if (copy != nullptr) {
        ShellWriteFile(window, file, copy, static_cast<u32>(length));
        CoreFree(&copy);
    }
}

}  // namespace quennet
