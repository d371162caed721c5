#include "hostkit/directory_read.h"

#include <cerrno>
#include <exception>
#include <utility>

#include "hostkit/files.h"
#include "hostkit/framed.h"
#include "hostkit/raw_listing.h"
#include "hostkit/received_listing.h"

namespace hostkit {

namespace {

using quennet::MessageNumber;

struct Collector {
    Listing& entries;
    bool complete = true;
};

/// What the raw listing that the calling thread asks for is to mend.
thread_local Listing* mended = nullptr;

void Mend(const Host& host, quennet::FtpHandle* handle, Listing& entries) {
    mended = &entries;
    host.Send(MessageNumber::saveRawListing, host.MainWindow(), &entries, handle);
    mended = nullptr;
}

extern "C" {

static void TakeEntry(const char* name, u32 date, u32 time, u32 attributes, u32 size,
                      HostWord context) {
    auto& collector = *quennet::PointerFromWord<Collector>(context);
    const bool isComplete = std::exchange(collector.complete, false);
    ListingEntry entry;
    entry.name = name;
    entry.date = static_cast<u16>(date);
    entry.time = static_cast<u16>(time);
    entry.attributes = static_cast<u16>(attributes);
    entry.size = size;
    collector.complete = collector.entries.Append(entry) && isComplete;
}
}

}  // namespace

bool ReadDirectoryThrough(const Host& host, const char* directory, quennet::FtpHandle* handle,
                          u32 option, Listing& entries, bool& mayTellMore) {
    Collector collector{entries};
    const auto callback = framed<quennet::ListEntryCallback, TakeEntry>;
    const ReceivedListing received(host.Options().listingLimit);
    const i32 result =
        host.Send(MessageNumber::listDirectory, directory, handle, callback, &collector, option);
    if (!collector.complete) {
        NoteFileFailure("", ENOMEM);
    }
    mayTellMore = received.MayTellMore(mayTellMore);
    if (result == 0 && mayTellMore) {
        Mend(host, handle, entries);
    }
    if (directory != nullptr) {
        // Kept without regard to case, it might be taken for the listing of another directory.
        host.Send(MessageNumber::invalidateCacheEntry, handle, directory);
    }
    return result == 0 && collector.complete;
}

bool ReadDirectoryThrough(const Host& host, const char* directory, quennet::FtpHandle* handle,
                          u32 option, Listing& entries) {
    bool mayTellMore = true;
    return ReadDirectoryThrough(host, directory, handle, option, entries, mayTellMore);
}

bool TakeRawListing(const void* text, std::size_t length) {
    Listing* entries = std::exchange(mended, nullptr);
    if (entries == nullptr) {
        return false;
    }
    try {
        MendEntries({static_cast<const char*>(text), length}, *entries);
    } catch (const std::exception&) {
        // Without memory they stay as the module has them.
    }
    return true;
}

}  // namespace hostkit
