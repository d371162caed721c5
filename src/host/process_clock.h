#pragma once
// The process clock.

#include <ctime>

#include "host/types.h"

namespace quennet {

/// Milliseconds since the process started, as `clock` gives them on the module's home platform.
inline u32 ProcessClock() {
    return static_cast<u32>(static_cast<u64>(clock()) * 1000 / CLOCKS_PER_SEC);
}

}  // namespace quennet
