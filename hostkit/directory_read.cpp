#include "hostkit/directory_read.h"

namespace hostkit {

namespace {

using quennet::MessageNumber;

struct Collector {
    Listing& entries;
    bool complete = true;
};

extern "C" {

static void TakeEntry(const char* name, u32 date, u32 time, u32 attributes, u32 size,
                      HostWord context) {
    auto& collector = *quennet::PointerFromWord<Collector>(context);
    ListingEntry entry;
    entry.name = name;
    entry.date = static_cast<u16>(date);
    entry.time = static_cast<u16>(time);
    entry.attributes = static_cast<u16>(attributes);
    entry.size = size;
    collector.complete = collector.entries.Append(entry) && collector.complete;
}
}

}  // namespace

bool ReadDirectoryThrough(const Host& host, const char* directory, quennet::FtpHandle* handle,
                          u32 option, Listing& entries) {
    Collector collector{entries};
    const quennet::ListEntryCallback callback = TakeEntry;
    const i32 result =
        host.Send(MessageNumber::listDirectory, directory, handle, callback, &collector, option);
    if (directory != nullptr) {
        // Kept without regard to case, it might be taken for the listing of another directory.
        host.Send(MessageNumber::invalidateCacheEntry, handle, directory);
    }
    return result == 0 && collector.complete;
}

}  // namespace hostkit
