#pragma once
// Reading a directory's entries through the module.

#include "host/records.h"
#include "hostkit/host.h"
#include "hostkit/listing.h"

namespace hostkit {

/// Collects what message 26 lists, mended by the raw text (raw_listing.h). `directory` is null for
/// the session's own, from the cache if it is there; any other names the server's current
/// directory, which is then listed anew. False when there is no listing, or no memory for its
/// entries.
bool ReadDirectoryThrough(const Host& host, const char* directory, quennet::FtpHandle* handle,
                          u32 option, Listing& entries);

/// The same, with `mayTellMore` for the raw text: what it says of one that is kept, and afterwards
/// of the one that was read.
bool ReadDirectoryThrough(const Host& host, const char* directory, quennet::FtpHandle* handle,
                          u32 option, Listing& entries, bool& mayTellMore);

/// Takes the raw text that message 48 writes on behalf of ReadDirectoryThrough. False for what the
/// calling thread writes to a file.
bool TakeRawListing(const void* text, std::size_t length);

}  // namespace hostkit
