#include "user/save_files.h"

#include <fnmatch.h>

#include <algorithm>
#include <filesystem>

namespace quennet::user {

namespace {

constexpr std::size_t entriesAtMost = 20000;

}  // namespace

std::vector<FileFilter> FiltersOf(const char* list) {
    std::vector<FileFilter> filters;
    while (list && *list != '\0') {
        FileFilter filter;
        filter.description = list;
        list += filter.description.size() + 1;
        filter.patterns = list;
        list += filter.patterns.size() + 1;
        filters.push_back(std::move(filter));
        if (filters.back().patterns.empty()) {
            break;  // the list ends between the two
        }
    }
    return filters;
}

bool FitsPatterns(const std::string& name, std::string_view patterns) {
    while (!patterns.empty()) {
        const std::size_t end = std::min(patterns.find(';'), patterns.size());
        const std::string pattern(patterns.substr(0, end));
        if (pattern == "*.*" || fnmatch(pattern.c_str(), name.c_str(), FNM_CASEFOLD) == 0) {
            return true;
        }
        patterns.remove_prefix(std::min(end + 1, patterns.size()));
    }
    return false;
}

std::vector<std::string> EntriesOfFolder(const std::string& folder, std::string_view patterns) {
    std::vector<std::string> folders;
    std::vector<std::string> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator() &&
           folders.size() + files.size() < entriesAtMost;
         entry.increment(error)) {
        std::string name = entry->path().filename().string();
        std::error_code ignored;
        if (name.starts_with('.')) {
            continue;
        }
        if (entry->is_directory(ignored)) {
            folders.push_back(name + '/');
        } else if (FitsPatterns(name, patterns)) {
            files.push_back(std::move(name));
        }
    }
    std::ranges::sort(folders);
    std::ranges::sort(files);
    if (folder != "/") {
        folders.insert(folders.begin(), "../");
    }
    folders.insert(folders.end(), files.begin(), files.end());
    return folders;
}

bool IsFolder(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_directory(path, error);
}

bool Exists(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

std::string FullPath(const std::string& folder, const std::string& name) {
    std::string path = (std::filesystem::path(folder) / name).lexically_normal().string();
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

std::string WithExtension(const std::string& path, const char* extension) {
    const bool has = NamePart(path).find('.') != std::string_view::npos;
    return has || !extension || *extension == '\0' ? path : path + '.' + extension;
}

std::string_view FolderPart(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return path.substr(0, slash == path.npos ? 0 : std::max<std::size_t>(1, slash));
}

std::string_view NamePart(std::string_view path) {
    return path.substr(path.rfind('/') + 1);
}

}  // namespace quennet::user
