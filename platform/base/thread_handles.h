#pragma once
// The handles of threads.

#include <cstddef>

namespace quennet {

/// How many are open in this process.
std::size_t OpenThreadHandles();

}  // namespace quennet
