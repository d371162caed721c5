#pragma once
// Opening what stands under a local path, and the bounds within which that is done.
//
// A download of a tree writes under names that a server chose. A link that happens to stand there
// would lead it to other places, so below the folder that a person named none is followed: each
// step is one component, taken from the descriptor of the step before.

#include <sys/stat.h>

#include <string>

namespace hostkit {

/// As long as the object lives, the calling thread's operations on paths that begin with `folder`
/// follow no link below it, wherever that path itself leads. The folder is opened once.
class FolderBounds {
  public:
    explicit FolderBounds(const std::string& folder);
    ~FolderBounds();
    FolderBounds(const FolderBounds&) = delete;
    FolderBounds& operator=(const FolderBounds&) = delete;

    /// Why the folder could not be opened, an errno value; 0 when it is open.
    int Error() const { return error_; }

  private:
    friend class BoundPath;

    const std::string prefix_;  // ends with '/'
    const FolderBounds* const outer_;
    int error_ = 0;
    int descriptor_;
};

// All work within the bounds of the calling thread, where there are any: a link is what it is
// there, and a path that leads through one fails with ENOTDIR or ELOOP.

/// open(2), at once whatever is there: a pipe without a reader fails with ENXIO. A descriptor, or
/// -1 with errno.
int OpenPath(const std::string& path, int flags, mode_t mode = 0);

/// stat(2). 0 or an errno value.
int LookAtPath(const std::string& path, struct stat& status);

/// Makes a folder, unless there is one. 0 or an errno value; EEXIST for what is no folder.
int MakeFolder(const std::string& path);

}  // namespace hostkit
