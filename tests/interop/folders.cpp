#include "interop/folders.h"

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

}  // namespace quennet::interop
