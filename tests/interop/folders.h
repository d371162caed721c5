#pragma once
// Folders and files of the interop tests.

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace quennet::interop {

/// A folder below the system's temporary one, gone with the object. The sessions of every server
/// may read it. vsftpd serves nothing anonymously that they may write to, so uploads want a folder
/// in it.
class TestFolder {
  public:
    TestFolder();
    ~TestFolder();
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

  private:
    std::filesystem::path path_;
};

/// Bytes without a pattern that repeats; the same for the same seed.
std::string MixedBytes(std::size_t count, std::uint32_t seed = 1);

void WriteBytes(const std::filesystem::path& path, const std::string& bytes);
std::string ReadBytes(const std::filesystem::path& path);

/// A file of that many bytes which takes up little room: zeros, but for a different mark in every
/// MiB and one at the end.
void WriteSparse(const std::filesystem::path& path, std::uint64_t size);

/// Empty files "entry-number-000001.dat" and so on.
void MakeManyFiles(const std::filesystem::path& folder, int count);
std::string ManyFilesName(int number);

/// Compares as streams: for files that don't fit memory.
bool SameContent(const std::filesystem::path& left, const std::filesystem::path& right);

/// All that is below a folder, by relative paths: the bytes of files, «/» for a folder.
std::map<std::string, std::string> TreeOf(const std::filesystem::path& folder);

/// Sets the time of the last change, in seconds since 1970, UTC.
void SetFileTime(const std::filesystem::path& path, std::int64_t seconds);

}  // namespace quennet::interop
