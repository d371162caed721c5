#pragma once
// A folder on disk with all that it holds, read whole before anything is done with it.

#include <string>
#include <vector>

#include "hostkit/trees.h"

namespace hostkit {

struct LocalEntry {
    std::string name;
    u64 size = 0;
};

struct LocalFolder {
    std::string path;
    std::string name;        // relative to the folder that holds the tree
    std::size_t parent = 0;  // its place in the tree; of the root its own
    std::vector<LocalEntry> files;
};

/// Folders, each before those below it, names in their order.
using LocalTree = std::vector<LocalFolder>;

/// Reads the tree below a folder, which is called `name`. Links to files count as files; links to
/// folders and what is no file are left out; what can't be read, and a name that holds a line end,
/// is told as failed. Adds what was found to the operation's totals.
LocalTree ReadLocalTree(const std::string& path, const std::string& name, TreeOperation& operation);

}  // namespace hostkit
