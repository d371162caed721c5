#pragma once
// The raw listings of a connection's directories, kept so that the host can show one again without
// a new LIST. Text is kept, not entries: each request reads it again.

#include "control/session.h"
#include "host/shell_services.h"

namespace quennet {

#pragma pack(push, 1)

/// One directory in the session's `cacheBlock`, where entries of different lengths lie back to
/// back. They are never removed or moved within it; the block itself moves when it grows, so an
/// entry is remembered by its number, from 1 on.
struct CacheEntry {
    u16 length;     // bytes to the next entry
    u32 valid;      // the entry's number; 0 when stale or not yet filled
    HostWord text;  // NUL-terminated listing, owned by the entry; null before the first fetch
    char path[1];   // NUL-terminated, as long as it is
};

#pragma pack(pop)

static_assert(offsetof(CacheEntry, text) == 6 &&
              offsetof(CacheEntry, path) == WidenedOffset(10, 1));

// The next three are called inside the list lock.

/// Number of the first entry for `path`, in any case; 0 if there is none.
u32 FindCacheEntry(const Session* session, const char* path);

/// The entry of a number, null for 0 and for numbers beyond the last. Good until the cache grows.
CacheEntry* CacheEntryAt(const Session* session, u32 number);

/// Appends an entry without text and returns its number; 0 when memory is short or the path has
/// more than 259 characters.
u32 AddCacheEntry(Session* session, const char* path);

/// Makes sure that the listing of `path`, null for the current directory, is in the cache, and
/// makes it the current entry.
///
/// The current directory is listed again only when its entry is stale; a path that is named is
/// always listed. LIST has no path: who names another directory has changed to it before. While
/// the same directory is being fetched already, nothing is done. A path of more than 259 characters
/// is kept under its last 259. `longOption` as in FetchListing. Takes the list lock, but not while
/// the listing is received.
///
/// Returns 2 on success, else the result of FetchListing, which leaves the cache as it was.
int ReadListing(const char* path, Session* session, u32 longOption);

/// Frees all listings and the cache of a session that nobody works on any more.
void FreeDirCache(Session* session);

/// Message 26: hands the entries of a directory to `callback`, inside the list lock. Arguments as
/// in ReadListing and ParseListing. Returns 0, or -1 when there is no session or no listing.
i32 ListDirectory(const char* path, FtpHandle* handle, ListEntryCallback callback, HostWord context,
                  u32 longOption);

/// Message 27: the directory, null for the one listed last, is fetched anew at the next request.
void InvalidateCacheEntry(FtpHandle* handle, const char* path);

/// Message 28: so are all directories.
void InvalidateDirCache(FtpHandle* handle);

/// Message 48: writes the raw text of the listing read last to a file of the host.
void SaveRawListing(HWND window, ShellFile file, FtpHandle* handle);

}  // namespace quennet
