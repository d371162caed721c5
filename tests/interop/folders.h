#pragma once
// Folders and files of the interop tests.

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "support/temp_folder.h"

namespace quennet::interop {

/// A folder that the sessions of every server may read. vsftpd serves nothing anonymously that they
/// may write to, so uploads want a folder in it.
class TestFolder : public TempFolder {
  public:
    TestFolder() { std::filesystem::permissions(Path(), std::filesystem::perms(0755)); }
};

constexpr auto WriteBytes = WriteWhole;
constexpr auto ReadBytes = ReadWhole;

/// A file of that many bytes which takes up little room: zeros, but for a different mark in every
/// MiB and one at the end.
void WriteSparse(const std::filesystem::path& path, std::uint64_t size);

/// Compares as streams: for files that don't fit memory.
bool SameContent(const std::filesystem::path& left, const std::filesystem::path& right);

/// All that is below a folder, by relative paths: the bytes of files, «/» for a folder.
std::map<std::string, std::string> TreeOf(const std::filesystem::path& folder);

}  // namespace quennet::interop
