#pragma once
// Local files, as the module reads and writes them: whole blocks, one position, 64-bit sizes.
//
// Blocks of the module are small, so each file keeps one buffer of `bufferSize` bytes, made at its
// first use, in which writes are gathered or data is read ahead. What is gathered goes out when
// the buffer is full and before the file is sought, read, measured, dated or closed. The call that
// meets a failed write reports it, and so does every later one up to the close.

#include <sys/types.h>

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "hostkit/types.h"

namespace hostkit {

/// What a local operation failed on.
struct FileFailure {
    std::string path;  // empty when it was memory
    int code = 0;      // an errno value
    /// The path and the cause, for a person.
    std::string Text() const;
};

/// The last failure of a local operation on the calling thread since `ClearFileFailure`; the module
/// works on local files on the thread of the message that asks for it.
std::optional<FileFailure> LastFileFailure();
void ClearFileFailure();
/// Needs no memory: of a path that no file can have, an end is lost.
void NoteFileFailure(std::string_view path, int code);

class LocalFile {
  public:
    static constexpr std::size_t bufferSize = 128 * 1024;

    /// Creates a file, mode 0666 less the umask, or empties the one that is there. Null after a
    /// failure, ENXIO for a pipe without a reader. Refused with ECANCELED while an abort is pending
    /// (SetAbortPending), which also ends a write that nobody takes.
    static std::unique_ptr<LocalFile> Create(const std::string& path);

    /// Opens an existing file that is no directory. `access` is one of the module's access words.
    static std::unique_ptr<LocalFile> Open(const std::string& path, u32 access);

    ~LocalFile();
    LocalFile(const LocalFile&) = delete;
    LocalFile& operator=(const LocalFile&) = delete;

    // All give 0 or an errno value.
    int Read(void* target, std::size_t size);  // fewer bytes than asked for is EIO
    int Write(const void* data, std::size_t size);
    int Seek(u64 position);
    int Size(u64& size);
    int SetTime(u16 dosDate, u16 dosTime);  // local time; EINVAL for words that are no date
    int Close();                            // a failed close after writing is a failure

    const std::string& Path() const { return path_; }

  private:
    enum class Holds { nothing, readAhead, gathered };

    LocalFile(std::string path, int descriptor, bool seekable, bool canStall);
    static std::unique_ptr<LocalFile> Adopt(const std::string& path, int descriptor, bool isOutput);

    int Fail(int code);
    int Flush();
    ssize_t WriteSome(const std::byte* data, std::size_t size);
    int WriteOut(const std::byte* data, std::size_t size);
    int ReadAhead();
    ssize_t ReadSome(void* target, std::size_t size);
    bool MakeBuffer();

    std::string path_;
    int descriptor_;
    bool seekable_;
    bool canStall_;  // whoever is at the other end decides
    bool written_ = false;
    int writeError_ = 0;  // of the first failed write
    u64 position_ = 0;    // of the next read or write
    Holds holds_ = Holds::nothing;
    u64 bufferStart_ = 0;  // position of the buffer's first byte
    std::size_t filled_ = 0;
    std::unique_ptr<std::byte[]> buffer_;
};

/// The DOS date and time of a point in time, in local time. They stay as they are for one that has
/// none.
void ToDosTime(time_t moment, u16& date, u16& time);

/// 0 when there is something under that path.
int CheckFile(const std::string& path);

/// While an abort is pending no file is created, by whatever thread: a download that the module
/// restarts then ends instead of truncating what was received. `Connection::Abort` does the same
/// for the transfer of one connection.
void SetAbortPending(bool pending);

/// The same for the files that the calling thread creates while the object lives, whenever
/// `pending` holds true.
class AbortScope {
  public:
    explicit AbortScope(const std::atomic<bool>& pending);
    ~AbortScope();
    AbortScope(const AbortScope&) = delete;
    AbortScope& operator=(const AbortScope&) = delete;

  private:
    const std::atomic<bool>* outer_;
};

/// Makes `name` a path that `LocalFile::Create` understands as an open descriptor, such as that of
/// standard output. There is never a file of that name to be found, and once something was written
/// it cannot be created anew. Must not be changed while it is in use.
void RegisterOutput(const std::string& name, int descriptor);
void UnregisterOutput(const std::string& name);

}  // namespace hostkit
