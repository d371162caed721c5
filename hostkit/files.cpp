#include "hostkit/files.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <limits>
#include <map>
#include <mutex>
#include <system_error>
#include <utility>

#include "host/shell_services.h"
#include "hostkit/local_path.h"

namespace hostkit {

namespace {

/// Without a destructor, which the runtime could not note for want of memory.
struct KeptFailure {
    int code = 0;  // 0 for none
    char path[PATH_MAX] = "";
};
thread_local KeptFailure lastFailure;
thread_local const std::atomic<bool>* threadAbort = nullptr;
std::atomic<bool> processAbort = false;

struct RegisteredOutput {
    int descriptor;
    bool used = false;  // something was written to it
};
std::mutex outputMutex;
std::map<std::string, RegisteredOutput> outputs;

int NoteFailure(const std::string& path, int code) {
    NoteFileFailure(path, code);
    return code;
}

bool AbortIsPending() {
    return processAbort || (threadAbort != nullptr && *threadAbort);
}

/// A descriptor of a registered output for the file to own; -1 with errno. `found` tells whether
/// there is an output of that name.
int DuplicateOutput(const std::string& path, bool& found) {
    const std::lock_guard lock(outputMutex);
    const auto output = outputs.find(path);
    found = output != outputs.end();
    if (!found) {
        return -1;
    }
    if (output->second.used) {
        errno = ESPIPE;
        return -1;
    }
    return fcntl(output->second.descriptor, F_DUPFD_CLOEXEC, 0);
}

void MarkOutputUsed(const std::string& path) {
    const std::lock_guard lock(outputMutex);
    if (const auto output = outputs.find(path); output != outputs.end()) {
        output->second.used = true;
    }
}

bool IsOutput(const std::string& path) {
    const std::lock_guard lock(outputMutex);
    return outputs.contains(path);
}

int OpenFlags(u32 access) {
    const bool reads = (access & quennet::accessRead) != 0;
    const bool writes = (access & quennet::accessWrite) != 0;
    return reads && writes ? O_RDWR : writes ? O_WRONLY : O_RDONLY;
}

}  // namespace

std::string FileFailure::Text() const {
    const std::string cause = code == ENXIO ? "nobody reads from it or writes to it"
                                            : std::generic_category().message(code);
    return path.empty() ? cause : path + ": " + cause;
}

std::optional<FileFailure> LastFileFailure() {
    if (lastFailure.code == 0) {
        return std::nullopt;
    }
    return FileFailure{lastFailure.path, lastFailure.code};
}

void ClearFileFailure() {
    lastFailure.code = 0;
}

void NoteFileFailure(std::string_view path, int code) {
    lastFailure.code = code;
    lastFailure.path[path.copy(lastFailure.path, sizeof(lastFailure.path) - 1)] = '\0';
}

void SetAbortPending(bool pending) {
    processAbort = pending;
}

AbortScope::AbortScope(const std::atomic<bool>& pending)
    : outer_(std::exchange(threadAbort, &pending)) {}

AbortScope::~AbortScope() {
    threadAbort = outer_;
}

void RegisterOutput(const std::string& name, int descriptor) {
    const std::lock_guard lock(outputMutex);
    outputs[name] = RegisteredOutput{descriptor};
}

void UnregisterOutput(const std::string& name) {
    const std::lock_guard lock(outputMutex);
    outputs.erase(name);
}

void ToDosTime(time_t moment, u16& date, u16& time) {
    constexpr int firstYear = 80;  // since 1900
    constexpr int lastYear = 207;
    struct tm local;
    if (localtime_r(&moment, &local) == nullptr || local.tm_year < firstYear ||
        local.tm_year > lastYear) {
        return;
    }
    date = static_cast<u16>((local.tm_year - firstYear) << 9 | (local.tm_mon + 1) << 5 |
                            local.tm_mday);
    time = static_cast<u16>(local.tm_hour << 11 | local.tm_min << 5 | local.tm_sec / 2);
}

int CheckFile(const std::string& path) {
    struct stat status;
    if (IsOutput(path)) {
        return ENOENT;
    }
    return LookAtPath(path, status);
}

LocalFile::LocalFile(std::string path, int descriptor, bool seekable, bool canStall)
    : path_(std::move(path)), descriptor_(descriptor), seekable_(seekable), canStall_(canStall) {}

LocalFile::~LocalFile() {
    if (descriptor_ != -1) {
        Close();
    }
}

std::unique_ptr<LocalFile> LocalFile::Create(const std::string& path) {
    if (AbortIsPending()) {
        NoteFailure(path, ECANCELED);
        return nullptr;
    }
    bool isOutput = false;
    int descriptor = DuplicateOutput(path, isOutput);
    if (!isOutput) {
        descriptor = OpenPath(path, O_WRONLY | O_CREAT | O_TRUNC, 0666);
    }
    return Adopt(path, descriptor, isOutput);
}

std::unique_ptr<LocalFile> LocalFile::Open(const std::string& path, u32 access) {
    if (IsOutput(path)) {
        NoteFailure(path, ENOENT);
        return nullptr;
    }
    return Adopt(path, OpenPath(path, OpenFlags(access)), false);
}

std::unique_ptr<LocalFile> LocalFile::Adopt(const std::string& path, int descriptor,
                                            bool isOutput) {
    struct stat status;
    if (descriptor == -1 || fstat(descriptor, &status) != 0) {
        NoteFailure(path, errno);
        if (descriptor != -1) {
            close(descriptor);
        }
        return nullptr;
    }
    if (S_ISDIR(status.st_mode)) {
        NoteFailure(path, EISDIR);
        close(descriptor);
        return nullptr;
    }
    const bool seekable = !isOutput && S_ISREG(status.st_mode);
    const bool canStall =
        S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || isatty(descriptor) != 0;
    return std::unique_ptr<LocalFile>(new LocalFile(path, descriptor, seekable, canStall));
}

int LocalFile::Fail(int code) {
    return NoteFailure(path_, code);
}

bool LocalFile::MakeBuffer() {
    if (buffer_ == nullptr) {
        buffer_.reset(new (std::nothrow) std::byte[bufferSize]);
    }
    return buffer_ != nullptr;
}

/// Writes some of it at `bufferStart_`; below 0 with errno after a failure. Whoever should take it
/// at the other end may not: then the wait ends with an abort.
ssize_t LocalFile::WriteSome(const std::byte* data, std::size_t size) {
    if (seekable_) {
        return pwrite(descriptor_, data, size, static_cast<off_t>(bufferStart_));
    }
    if (!canStall_) {
        return write(descriptor_, data, size);
    }
    constexpr int lookMilliseconds = 100;  // between two looks at the abort
    pollfd other = {descriptor_, POLLOUT, 0};
    while (poll(&other, 1, lookMilliseconds) == 0) {
        if (AbortIsPending()) {
            errno = ECANCELED;
            return -1;
        }
    }
    return write(descriptor_, data, std::min<std::size_t>(size, PIPE_BUF));
}

/// Writes at `bufferStart_`, which moves on.
int LocalFile::WriteOut(const std::byte* data, std::size_t size) {
    while (size > 0) {
        const ssize_t count = WriteSome(data, size);
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) {
            continue;
        }
        if (count <= 0) {
            writeError_ = count < 0 ? errno : ENOSPC;
            return writeError_;
        }
        data += count;
        size -= static_cast<std::size_t>(count);
        bufferStart_ += static_cast<u64>(count);
    }
    return 0;
}

int LocalFile::Flush() {
    if (writeError_ != 0) {
        return writeError_;
    }
    if (holds_ != Holds::gathered) {
        return 0;
    }
    holds_ = Holds::nothing;
    return WriteOut(buffer_.get(), filled_);
}

int LocalFile::Write(const void* data, std::size_t size) {
    if (writeError_ != 0) {
        return Fail(writeError_);
    }
    if (!seekable_ && !written_) {
        MarkOutputUsed(path_);
    }
    written_ = true;
    if (holds_ != Holds::gathered) {
        holds_ = Holds::nothing;  // what was read ahead is out of date
        bufferStart_ = position_;
    }
    if (holds_ == Holds::gathered && filled_ + size > bufferSize && Flush() != 0) {
        return Fail(writeError_);
    }
    const auto* bytes = static_cast<const std::byte*>(data);
    if (size >= bufferSize || !MakeBuffer()) {
        if (Flush() != 0 || WriteOut(bytes, size) != 0) {
            return Fail(writeError_);
        }
        position_ += size;
        return 0;
    }
    if (holds_ == Holds::nothing) {
        holds_ = Holds::gathered;
        filled_ = 0;
    }
    std::copy_n(bytes, size, buffer_.get() + filled_);
    filled_ += size;
    position_ += size;
    return 0;
}

/// Reads what is there, at most `size` bytes; below 0 with errno after a failure.
ssize_t LocalFile::ReadSome(void* target, std::size_t size) {
    for (;;) {
        const ssize_t count = seekable_
                                  ? pread(descriptor_, target, size, static_cast<off_t>(position_))
                                  : read(descriptor_, target, size);
        if (count >= 0 || errno != EINTR) {
            return count;
        }
    }
}

/// Fills the buffer from the present position on; EIO at the end of the file.
int LocalFile::ReadAhead() {
    holds_ = Holds::nothing;
    const ssize_t count = ReadSome(buffer_.get(), bufferSize);
    if (count <= 0) {
        return count < 0 ? errno : EIO;
    }
    holds_ = Holds::readAhead;
    bufferStart_ = position_;
    filled_ = static_cast<std::size_t>(count);
    return 0;
}

int LocalFile::Read(void* target, std::size_t size) {
    if (holds_ == Holds::gathered && Flush() != 0) {
        return Fail(writeError_);
    }
    if (!MakeBuffer()) {
        return Fail(ENOMEM);
    }
    auto* bytes = static_cast<std::byte*>(target);
    while (size > 0) {
        const u64 offset = position_ - bufferStart_;
        if (holds_ != Holds::readAhead || position_ < bufferStart_ || offset >= filled_) {
            if (const int code = ReadAhead(); code != 0) {
                return Fail(code);
            }
            continue;
        }
        const std::size_t count = std::min(size, filled_ - static_cast<std::size_t>(offset));
        std::copy_n(buffer_.get() + offset, count, bytes);
        bytes += count;
        size -= count;
        position_ += count;
    }
    return 0;
}

int LocalFile::Seek(u64 position) {
    if (const int code = Flush(); code != 0) {
        return Fail(code);
    }
    if (!seekable_) {
        return Fail(ESPIPE);
    }
    if (position > static_cast<u64>(std::numeric_limits<off_t>::max())) {
        return Fail(EINVAL);
    }
    position_ = position;
    return 0;
}

int LocalFile::Size(u64& size) {
    struct stat status;
    if (const int code = Flush(); code != 0) {
        return Fail(code);
    }
    if (fstat(descriptor_, &status) != 0) {
        return Fail(errno);
    }
    size = static_cast<u64>(status.st_size);
    return 0;
}

int LocalFile::SetTime(u16 dosDate, u16 dosTime) {
    if (const int code = Flush(); code != 0) {
        return Fail(code);
    }
    struct tm local = {};
    local.tm_year = (dosDate >> 9) + 80;
    local.tm_mon = ((dosDate >> 5) & 15) - 1;
    local.tm_mday = dosDate & 31;
    local.tm_hour = dosTime >> 11;
    local.tm_min = (dosTime >> 5) & 63;
    local.tm_sec = (dosTime & 31) * 2;
    local.tm_isdst = -1;
    const bool isDate = local.tm_mon >= 0 && local.tm_mon < 12 && local.tm_mday > 0;
    if (!isDate || local.tm_hour > 23 || local.tm_min > 59 || local.tm_sec > 59) {
        return Fail(EINVAL);
    }
    const timespec times[2] = {{0, UTIME_OMIT}, {mktime(&local), 0}};
    return futimens(descriptor_, times) == 0 ? 0 : Fail(errno);
}

int LocalFile::Close() {
    if (descriptor_ == -1) {
        return Fail(EBADF);
    }
    int code = Flush();
    const int closed = close(std::exchange(descriptor_, -1));
    if (code == 0 && closed != 0 && written_ && errno != EINTR) {
        code = errno;
    }
    return code == 0 ? 0 : Fail(code);
}

}  // namespace hostkit
