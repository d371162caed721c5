#pragma once
// The host's growing buffer: listing texts, the directory cache and the find store live in it.

#include "host/types.h"

namespace quennet {

/// All words zero when empty. `ShellBufferAppend` adds to it: each successful append adds 1 to
/// `count` and the appended size to `used`, and may move `base`. The data goes back with
/// `CoreFree(&base)`.
struct GrowBuffer {
    HostWord base;   // address of the data, as CoreAlloc gives it
    HostWord count;  // successful appends
    HostWord host;   // kept by ShellBufferAppend
    HostWord used;   // bytes
};
static_assert(sizeof(GrowBuffer) == 4 * sizeof(HostWord));

}  // namespace quennet
