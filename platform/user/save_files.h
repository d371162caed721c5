#pragma once
// What the dialog for a file to be written knows of files: filters, folders, names.

#include <string>
#include <string_view>
#include <vector>

namespace quennet::user {

struct FileFilter {
    std::string description;
    std::string patterns;  // "*.txt;*.log"
};

/// The pairs of a list whose texts end with a zero each and which ends with an empty one.
std::vector<FileFilter> FiltersOf(const char* list);

/// "*.*" fits every name; the case of letters is ignored.
bool FitsPatterns(const std::string& name, std::string_view patterns);

/// The way up and the folders, with a '/' at their ends, then the files that fit. Names that begin
/// with a dot are left out. At most 20,000.
std::vector<std::string> EntriesOfFolder(const std::string& folder, std::string_view patterns);

bool IsFolder(const std::string& path);
bool Exists(const std::string& path);

/// An absolute path without "." and ".." and without a '/' at its end.
std::string FullPath(const std::string& folder, const std::string& name);
/// The name gets the extension unless it has one.
std::string WithExtension(const std::string& path, const char* extension);

std::string_view FolderPart(std::string_view path);
std::string_view NamePart(std::string_view path);

}  // namespace quennet::user
