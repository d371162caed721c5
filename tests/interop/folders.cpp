#include "interop/folders.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <vector>

namespace quennet::interop {

namespace fs = std::filesystem;

namespace {

constexpr std::uint64_t mebibyte = 1 << 20;

}  // namespace

void WriteSparse(const fs::path& path, std::uint64_t size) {
    WriteBytes(path, "");
    fs::resize_file(path, size);
    std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
    for (std::uint64_t offset = 0; offset < size; offset += mebibyte) {
        const std::uint64_t at = std::min(offset + offset % 8191, size - sizeof(offset));
        const std::uint64_t mark = offset + 1;
        file.seekp(static_cast<std::streamoff>(at));
        file.write(reinterpret_cast<const char*>(&mark), sizeof(mark));
    }
    file.seekp(static_cast<std::streamoff>(size - 3));
    file.write("end", 3);
}

std::string ManyFilesName(int number) {
    char name[40];
    std::snprintf(name, sizeof(name), "entry-number-%06d.dat", number);
    return name;
}

void MakeManyFiles(const fs::path& folder, int count) {
    fs::create_directory(folder);
    const int directory = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int number = 1; number <= count; ++number) {
        close(
            openat(directory, ManyFilesName(number).c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644));
    }
    close(directory);
}

bool SameContent(const fs::path& left, const fs::path& right) {
    if (!fs::exists(left) || !fs::exists(right) || fs::file_size(left) != fs::file_size(right)) {
        return false;
    }
    std::ifstream leftFile(left, std::ios::binary);
    std::ifstream rightFile(right, std::ios::binary);
    std::vector<char> leftBlock(mebibyte);
    std::vector<char> rightBlock(mebibyte);
    while (leftFile && rightFile) {
        leftFile.read(leftBlock.data(), static_cast<std::streamsize>(leftBlock.size()));
        rightFile.read(rightBlock.data(), static_cast<std::streamsize>(rightBlock.size()));
        if (leftFile.gcount() != rightFile.gcount() ||
            std::memcmp(leftBlock.data(), rightBlock.data(),
                        static_cast<std::size_t>(leftFile.gcount())) != 0) {
            return false;
        }
    }
    return true;
}

std::map<std::string, std::string> TreeOf(const fs::path& folder) {
    std::map<std::string, std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        tree[entry.path().lexically_relative(folder)] =
            entry.is_regular_file() ? ReadBytes(entry.path()) : "/";
    }
    return tree;
}

void SetFileTime(const fs::path& path, std::int64_t seconds) {
    timespec times[2] = {};
    times[0].tv_sec = static_cast<time_t>(seconds);
    times[1].tv_sec = static_cast<time_t>(seconds);
    utimensat(AT_FDCWD, path.c_str(), times, 0);
}

}  // namespace quennet::interop
