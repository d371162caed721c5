#pragma once
// The walk over a server's directories.

#include "find/find_record.h"

namespace quennet {

/// What one run works with, on all levels of its walk.
struct FindRun {
    FindWindow* find;
    char mask[findMaskSize];
    u32 options;
    void* filter;
    alignas(8) char scratch[findScratchSize];
};

/// Visits a directory and, when the options say so, all beneath it. Puts what mask and filter let
/// through into the store, and leaves the server in the directory.
///
/// A directory that the server names like one on the way to it is not entered again, nor is one
/// more than 512 levels deep or with a path that does not fit: so a link up the tree ends the walk.
/// A hit with a name that does not fit is left out.
void WalkDirectory(const char* path, FindRun* run);

/// Whether the host's filter lets an entry through. A directory needs the filter's word for it too.
/// `size` is the address of 64 bits, on any boundary.
bool FilterAccepts(const char* name, u16 attributes, u16 date, u16 time, const void* size,
                   const void* filter);

}  // namespace quennet
