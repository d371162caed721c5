#include "folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <deque>
#include <memory>
#include <system_error>

namespace loopback {

namespace {

std::deque<std::string> NamesOf(std::string_view path) {
    std::deque<std::string> names;
    while (!path.empty()) {
        std::size_t end = std::min(path.find('/'), path.size());
        std::string_view name = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (!name.empty() && name != ".") {
            names.emplace_back(name);
        }
    }
    return names;
}

std::string LinkTarget(int directory, const char* name) {
    char target[PATH_MAX];
    ssize_t size = readlinkat(directory, name, target, sizeof target);
    return size > 0 ? std::string(target, static_cast<std::size_t>(size)) : std::string();
}

bool LookAt(int directory, const std::string& name, ListedFile* file) {
    struct stat status {};
    if (fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    file->name = name;
    file->mode = status.st_mode;
    file->links = static_cast<std::uint32_t>(status.st_nlink);
    file->size = static_cast<std::uint64_t>(status.st_size);
    file->modified = status.st_mtime;
    file->linkTarget = S_ISLNK(status.st_mode) ? LinkTarget(directory, name.c_str()) : "";
    return true;
}

int ErrorUnless(bool done) {
    return done ? 0 : errno;
}

}  // namespace

std::string AbsolutePath(std::string_view current, std::string_view name) {
    std::deque<std::string> names = NamesOf(current);
    if (name.starts_with('/')) {
        names.clear();
    }
    for (std::string& step : NamesOf(name)) {
        if (step != "..") {
            names.push_back(std::move(step));
        } else if (!names.empty()) {
            names.pop_back();
        }
    }
    std::string path;
    for (const std::string& step : names) {
        path += '/' + step;
    }
    return path.empty() ? "/" : path;
}

// The walk along one path: the open directories from the root down, and the names still to go.
class Folder::Walk {
  public:
    Walk(int root, const std::string& path, bool followLast)
        : root_(root), followLast_(followLast), names_(NamesOf(path)) {}

    int Find(Place* place) {
        while (!names_.empty()) {
            std::string name = std::move(names_.front());
            names_.pop_front();
            if (int error = name == ".." ? StepUp() : StepInto(name); error != 0) {
                return error;
            }
        }
        place->directory = Descriptor(fcntl(Top(), F_DUPFD_CLOEXEC, 0));
        place->name = last_;
        return ErrorUnless(place->directory.Valid());
    }

  private:
    static constexpr std::size_t deepest = 100;  // one open descriptor each

    int Top() const { return opened_.empty() ? root_ : opened_.back().Number(); }

    int StepUp() {
        if (opened_.empty()) {
            return EACCES;
        }
        opened_.pop_back();
        return 0;
    }

    int StepInto(const std::string& name) {
        struct stat status {};
        bool last = names_.empty();
        int error = ErrorUnless(fstatat(Top(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0);
        if (error == 0 && S_ISLNK(status.st_mode) && (!last || followLast_)) {
            return FollowLink(name);
        }
        if (last) {
            // A last name need not exist: it may be about to be made.
            last_ = name;
            return error == ENOENT ? 0 : error;
        }
        if (error != 0 || opened_.size() >= deepest) {
            return error != 0 ? error : ENAMETOOLONG;
        }
        Descriptor directory(
            openat(Top(), name.c_str(), O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        error = ErrorUnless(directory.Valid());
        opened_.push_back(std::move(directory));
        return error;
    }

    int FollowLink(const std::string& name) {
        constexpr int mostLinks = 20;
        std::string target = LinkTarget(Top(), name.c_str());
        if (target.empty() || target.front() == '/') {
            return EACCES;
        }
        if (++links_ > mostLinks) {
            return ELOOP;
        }
        std::deque<std::string> names = NamesOf(target);
        names_.insert(names_.begin(), names.begin(), names.end());
        return 0;
    }

    int root_;
    bool followLast_;
    std::deque<std::string> names_;
    std::vector<Descriptor> opened_;
    std::string last_ = ".";
    int links_ = 0;
};

Folder::Folder(const std::string& root)
    : root_(open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (!root_.Valid()) {
        throw std::system_error(errno, std::generic_category(), root);
    }
}

int Folder::Find(const std::string& path, bool followLast, Place* place) const {
    return Walk(root_.Number(), path, followLast).Find(place);
}

int Folder::LookAtPlace(const std::string& path, bool followLast, ListedFile* file) const {
    Place place;
    if (int error = Find(path, followLast, &place); error != 0) {
        return error;
    }
    return ErrorUnless(LookAt(place.directory.Number(), place.name, file));
}

int Folder::Look(const std::string& path, ListedFile* file) const {
    return LookAtPlace(path, false, file);
}

int Folder::LookAtFile(const std::string& path, ListedFile* file) const {
    int error = LookAtPlace(path, true, file);
    return error != 0 || S_ISREG(file->mode) ? error : EISDIR;
}

int Folder::CheckDirectory(const std::string& path) const {
    ListedFile file;
    int error = LookAtPlace(path, true, &file);
    return error != 0 || S_ISDIR(file.mode) ? error : ENOTDIR;
}

int Folder::List(const std::string& path, bool hidden, std::vector<ListedFile>* files) const {
    Place place;
    ListedFile self;
    if (int error = Find(path, true, &place); error != 0) {
        return error;
    }
    if (!LookAt(place.directory.Number(), place.name, &self)) {
        return errno;
    }
    if (!S_ISDIR(self.mode)) {
        files->push_back(std::move(self));
        return 0;
    }
    Descriptor opened(openat(place.directory.Number(), place.name.c_str(),
                             O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    std::unique_ptr<DIR, int (*)(DIR*)> directory(fdopendir(opened.Number()), closedir);
    if (directory == nullptr) {
        return errno;
    }
    opened.Release();
    while (const dirent* entry = readdir(directory.get())) {
        ListedFile file;
        if ((hidden || entry->d_name[0] != '.') &&
            LookAt(dirfd(directory.get()), entry->d_name, &file)) {
            files->push_back(std::move(file));
        }
    }
    std::sort(files->begin(), files->end(), [](const ListedFile& left, const ListedFile& right) {
        return left.name < right.name;
    });
    return 0;
}

int Folder::OpenForReading(const std::string& path, Descriptor* file) const {
    Place place;
    struct stat status {};
    if (int error = Find(path, true, &place); error != 0) {
        return error;
    }
    *file = Descriptor(openat(place.directory.Number(), place.name.c_str(),
                              O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    if (!file->Valid() || fstat(file->Number(), &status) != 0) {
        return errno;
    }
    return S_ISREG(status.st_mode) ? 0 : EISDIR;
}

int Folder::OpenForWriting(const std::string& path, WriteMode mode, Descriptor* file) const {
    Place place;
    struct stat status {};
    if (int error = Find(path, true, &place); error != 0) {
        return error;
    }
    int flags = O_WRONLY | O_CREAT | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC;
    flags |= mode == WriteMode::append ? O_APPEND : 0;
    *file = Descriptor(openat(place.directory.Number(), place.name.c_str(), flags, 0644));
    if (!file->Valid() || fstat(file->Number(), &status) != 0) {
        return errno;
    }
    if (!S_ISREG(status.st_mode)) {
        return EISDIR;
    }
    return ErrorUnless(mode != WriteMode::create || ftruncate(file->Number(), 0) == 0);
}

int Folder::Remove(const std::string& path, int flags) const {
    Place place;
    if (int error = Find(path, false, &place); error != 0) {
        return error;
    }
    return ErrorUnless(unlinkat(place.directory.Number(), place.name.c_str(), flags) == 0);
}

int Folder::RemoveFile(const std::string& path) const {
    return Remove(path, 0);
}

int Folder::RemoveDirectory(const std::string& path) const {
    return Remove(path, AT_REMOVEDIR);
}

int Folder::MakeDirectory(const std::string& path) const {
    Place place;
    if (int error = Find(path, true, &place); error != 0) {
        return error;
    }
    return ErrorUnless(mkdirat(place.directory.Number(), place.name.c_str(), 0755) == 0);
}

int Folder::Rename(const std::string& from, const std::string& to) const {
    Place source;
    Place target;
    if (int error = Find(from, false, &source); error != 0) {
        return error;
    }
    if (int error = Find(to, false, &target); error != 0) {
        return error;
    }
    return ErrorUnless(renameat(source.directory.Number(), source.name.c_str(),
                                target.directory.Number(), target.name.c_str()) == 0);
}

int Folder::ChangeMode(const std::string& path, std::uint32_t mode) const {
    Place place;
    if (int error = Find(path, true, &place); error != 0) {
        return error;
    }
    // Opened first: changing the mode by name would follow a link that has just taken its place. A
    // descriptor of this kind needs no right to read, and takes the mode through its own path only.
    Descriptor opened(
        openat(place.directory.Number(), place.name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!opened.Valid() || fstat(opened.Number(), &status) != 0) {
        return errno;
    }
    if (S_ISLNK(status.st_mode)) {
        return ELOOP;
    }
    std::string itself = "/proc/self/fd/" + std::to_string(opened.Number());
    return ErrorUnless(chmod(itself.c_str(), mode & 07777) == 0);
}

}  // namespace loopback
