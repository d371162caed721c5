#pragma once
// Reading a directory's entries through the module.

#include "host/records.h"
#include "hostkit/host.h"
#include "hostkit/listing.h"

namespace hostkit {

/// Collects what message 26 lists. `directory` is null for the session's own, from the cache if it
/// is there; any other names the server's current directory, which is then listed anew. False when
/// there is no listing, or no memory for its entries.
bool ReadDirectoryThrough(const Host& host, const char* directory, quennet::FtpHandle* handle,
                          u32 option, Listing& entries);

}  // namespace hostkit
