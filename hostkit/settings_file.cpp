// How a settings file is replaced.
//
// Writers take turns by a lock on «NAME.lock», a file of its own, because the settings file itself
// is another file after each change. Under that lock a writer reads the file, changes the text,
// writes it to «NAME.new», syncs it, renames it over the old file and syncs the folder. Who knows
// no lock, an editor say, is not written over: the file must still be the one that was read. A
// reader takes no lock: the name stands for a whole text at any time. A writer that died leaves at
// most a «NAME.new», which the next one removes.

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "hostkit/private_folder.h"
#include "hostkit/settings.h"

namespace hostkit {

namespace {

constexpr off_t largestFile = 64 << 20;
constexpr auto lockPause = std::chrono::milliseconds(10);

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { Close(); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return number_; }
    bool IsOpen() const { return number_ != -1; }
    int Release() { return std::exchange(number_, -1); }
    bool Close() { return number_ == -1 || close(std::exchange(number_, -1)) == 0; }

  private:
    int number_;
};

std::string Cause(const std::string& path) {
    return path + ": " + std::generic_category().message(errno);
}

bool ReadAll(int file, std::string& text) {
    char block[65536];
    for (;;) {
        const ssize_t count = read(file, block, sizeof(block));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return count == 0;
        }
        text.append(block, static_cast<std::size_t>(count));
        if (text.size() > static_cast<std::size_t>(largestFile)) {
            errno = EFBIG;
            return false;
        }
    }
}

bool WriteAll(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        text.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return true;
}

bool SyncFolder(const std::filesystem::path& folder) {
    Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor.IsOpen() && fsync(descriptor.Number()) == 0;
}

std::filesystem::path Beside(const std::filesystem::path& path, const char* ending) {
    std::filesystem::path beside = path;
    beside += ending;
    return beside;
}

}  // namespace

struct FileSettings::Stamp {
    dev_t device;
    ino_t number;
    off_t size;
    timespec modified;
    timespec changed;

    explicit Stamp(const struct stat& status)
        : device(status.st_dev),
          number(status.st_ino),
          size(status.st_size),
          modified(status.st_mtim),
          changed(status.st_ctim) {}

    bool operator==(const Stamp& other) const {
        const auto same = [](const timespec& left, const timespec& right) {
            return left.tv_sec == right.tv_sec && left.tv_nsec == right.tv_nsec;
        };
        return device == other.device && number == other.number && size == other.size &&
               same(modified, other.modified) && same(changed, other.changed);
    }
};

FileSettings::FileSettings(std::filesystem::path path) : path_(std::move(path)) {
    // A link stays a link: what it points to is replaced.
    std::error_code error;
    const auto target = std::filesystem::canonical(path_, error);
    if (!error) {
        path_ = target;
    }
}

FileSettings::~FileSettings() {
    Unlock();
}

void FileSettings::Forget() {
    stamp_.reset();
}

bool FileSettings::Load(IniDocument& document, std::string& error) {
    struct stat status;
    Descriptor file(open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.IsOpen() && (errno == ENOENT || errno == ENOTDIR)) {
        document = IniDocument();
        loaded_.clear();
        stamp_.reset();
        return true;
    }
    if (!file.IsOpen() || fstat(file.Number(), &status) != 0) {
        error = Cause(path_);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        error = path_.string() + ": not a regular file";
        return false;
    }
    if (stamp_ != nullptr && *stamp_ == Stamp(status)) {
        return true;
    }
    std::string text;
    stamp_.reset();
    if (!ReadAll(file.Number(), text)) {
        error = Cause(path_);
        return false;
    }
    document = IniDocument(text);
    loaded_ = std::move(text);
    stamp_ = std::make_unique<Stamp>(status);
    return true;
}

bool FileSettings::Save(const IniDocument& document, std::string& error) {
    const std::string text = document.Text();
    if (text == loaded_) {
        return true;
    }
    const auto beside = Beside(path_, ".new");
    const auto loaded = std::exchange(stamp_, nullptr);
    struct stat status;
    if (stat(path_.c_str(), &status) == 0) {
        if ((status.st_mode & S_IWUSR) == 0) {
            errno = EACCES;
            error = Cause(path_);
            return false;
        }
        if (loaded == nullptr || !(*loaded == Stamp(status))) {
            error = path_.string() + ": changed by another program meanwhile";
            return false;
        }
    }
    unlink(beside.c_str());
    Descriptor file(open(beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    const bool written = file.IsOpen() && WriteAll(file.Number(), text) &&
                         fsync(file.Number()) == 0 && file.Close() &&
                         rename(beside.c_str(), path_.c_str()) == 0;
    if (!written) {
        error = Cause(path_);
        unlink(beside.c_str());
        return false;
    }
    SyncFolder(path_.has_parent_path() ? path_.parent_path() : ".");
    return true;
}

bool FileSettings::Lock(std::chrono::milliseconds patience, std::string& error) {
    const auto beside = Beside(path_, ".lock");
    if (!MakePrivateFolders(path_.parent_path())) {
        error = Cause(path_.parent_path());
        return false;
    }
    Descriptor file(open(beside.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    const auto end = std::chrono::steady_clock::now() + patience;
    while (file.IsOpen() && flock(file.Number(), LOCK_EX | LOCK_NB) != 0) {
        const bool waits = errno == EWOULDBLOCK || errno == EINTR;
        if (!waits || std::chrono::steady_clock::now() > end) {
            error = waits ? path_.string() + ": in use by another program" : Cause(beside);
            return false;
        }
        std::this_thread::sleep_for(lockPause);
    }
    if (!file.IsOpen()) {
        error = Cause(beside);
        return false;
    }
    lock_ = file.Release();
    return true;
}

void FileSettings::Unlock() {
    if (lock_ != -1) {
        close(std::exchange(lock_, -1));
    }
}

}  // namespace hostkit
