#include "hostkit/local_path.h"

#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace hostkit {

namespace {

constexpr int stepFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

thread_local const FolderBounds* threadBounds = nullptr;

}  // namespace

FolderBounds::FolderBounds(const std::string& folder)
    : prefix_(folder.ends_with('/') ? folder : folder + "/"),
      outer_(std::exchange(threadBounds, this)),
      descriptor_(open(folder.c_str(), stepFlags)) {
    error_ = descriptor_ == -1 ? errno : 0;
}

FolderBounds::~FolderBounds() {
    threadBounds = outer_;
    if (descriptor_ != -1) {
        close(descriptor_);
    }
}

/// The last step to a path: a folder's descriptor and a name in it.
class BoundPath {
  public:
    explicit BoundPath(const std::string& path) : name_(path) {
        const FolderBounds* bounds = threadBounds;
        if (bounds == nullptr || !path.starts_with(bounds->prefix_)) {
            return;
        }
        isBound_ = true;
        folder_ = fcntl(bounds->descriptor_, F_DUPFD_CLOEXEC, 0);
        error_ = errno;
        name_.erase(0, bounds->prefix_.size());
        for (auto end = name_.find('/'); folder_ != -1 && end != name_.npos;
             end = name_.find('/')) {
            const std::string step = name_.substr(0, end);
            const int next = openat(folder_, step.c_str(), stepFlags | O_NOFOLLOW);
            error_ = errno;
            close(std::exchange(folder_, next));
            name_.erase(0, end + 1);
        }
    }
    ~BoundPath() {
        if (isBound_ && folder_ != -1) {
            close(folder_);
        }
    }
    BoundPath(const BoundPath&) = delete;
    BoundPath& operator=(const BoundPath&) = delete;

    /// False, with errno, when a step has failed.
    bool Reached() const {
        errno = error_;
        return folder_ != -1;
    }
    int Folder() const { return folder_; }
    const char* Name() const { return name_.c_str(); }
    int OpenFlag() const { return isBound_ ? O_NOFOLLOW : 0; }
    int LookFlag() const { return isBound_ ? AT_SYMLINK_NOFOLLOW : 0; }

  private:
    std::string name_;
    bool isBound_ = false;
    int folder_ = AT_FDCWD;
    int error_ = 0;
};

int OpenPath(const std::string& path, int flags, mode_t mode) {
    const BoundPath bound(path);
    constexpr int always = O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    return bound.Reached()
               ? openat(bound.Folder(), bound.Name(), flags | always | bound.OpenFlag(), mode)
               : -1;
}

int LookAtPath(const std::string& path, struct stat& status) {
    const BoundPath bound(path);
    const bool done =
        bound.Reached() && fstatat(bound.Folder(), bound.Name(), &status, bound.LookFlag()) == 0;
    return done ? 0 : errno;
}

int MakeFolder(const std::string& path) {
    const BoundPath bound(path);
    if (!bound.Reached()) {
        return errno;
    }
    if (mkdirat(bound.Folder(), bound.Name(), 0777) == 0) {
        return 0;
    }
    const int code = errno;
    struct stat status;
    const bool isFolder = code == EEXIST &&
                          fstatat(bound.Folder(), bound.Name(), &status, bound.LookFlag()) == 0 &&
                          S_ISDIR(status.st_mode);
    return isFolder ? 0 : code;
}

}  // namespace hostkit
