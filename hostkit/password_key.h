#pragma once
// The key of stored passwords: a random word, made once and kept where its owner alone can read it.

#include <filesystem>

#include "hostkit/types.h"

namespace hostkit {

/// The key in that file, never 0. A missing file, and its folders, are made; of several processes
/// that do so at once, all get the key of the first. 0 for an empty path, for a file that does not
/// hold a key, and when none can be made.
u32 KeptPasswordKey(const std::filesystem::path& path);

}  // namespace hostkit
