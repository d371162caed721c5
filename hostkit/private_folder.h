#pragma once
// Folders that belong to their owner alone.

#include <filesystem>

namespace hostkit {

/// Makes a folder and the parents that it lacks, each of mode 0700. False with errno.
bool MakePrivateFolders(const std::filesystem::path& folder);

}  // namespace hostkit
