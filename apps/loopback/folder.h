#pragma once
// The served folder. Paths here are those of the clients: absolute, with "/" for the folder itself.
//
// Nothing is ever opened by its whole path. A path is walked name by name from the folder's own
// descriptor, each step without following a link; a link's target is walked in the same way, and a
// target that is absolute or climbs out of the folder is refused. So no race with a changing folder
// leads outside.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "listing.h"
#include "socket.h"

namespace loopback {

/// `name` as seen from the directory `current`, with "." and ".." taken out. Goes no higher than
/// "/".
std::string AbsolutePath(std::string_view current, std::string_view name);

enum class WriteMode { create, append, keep };

/// All operations give 0, or the system's error number. Safe from any thread.
class Folder {
  public:
    /// Throws std::system_error when `root` is no directory.
    explicit Folder(const std::string& root);

    /// What stands at the path; the link itself, when it is one.
    int Look(const std::string& path, ListedFile* file) const;
    /// The same for what a link leads to, which must be a regular file.
    int LookAtFile(const std::string& path, ListedFile* file) const;
    int CheckDirectory(const std::string& path) const;
    /// The entries of a directory by name, or the one file at `path`. With `hidden` also names that
    /// begin with a dot, "." and ".." among them.
    int List(const std::string& path, bool hidden, std::vector<ListedFile>* files) const;

    /// Regular files only.
    int OpenForReading(const std::string& path, Descriptor* file) const;
    /// `create` empties an existing file, `append` writes behind its end, `keep` leaves its bytes.
    int OpenForWriting(const std::string& path, WriteMode mode, Descriptor* file) const;

    int RemoveFile(const std::string& path) const;
    int RemoveDirectory(const std::string& path) const;
    int MakeDirectory(const std::string& path) const;
    int Rename(const std::string& from, const std::string& to) const;
    int ChangeMode(const std::string& path, std::uint32_t mode) const;

  private:
    // A name in an open directory; "." for the folder itself.
    struct Place {
        Descriptor directory;
        std::string name;
    };

    class Walk;

    int Find(const std::string& path, bool followLast, Place* place) const;
    int LookAtPlace(const std::string& path, bool followLast, ListedFile* file) const;
    int Remove(const std::string& path, int flags) const;

    Descriptor root_;
};

}  // namespace loopback
