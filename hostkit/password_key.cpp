#include "hostkit/password_key.h"

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/random.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "hostkit/private_folder.h"

namespace hostkit {

namespace {

// The file holds eight hexadecimal digits and a line end.
constexpr std::size_t digits = 8;

u32 ReadKey(const std::filesystem::path& path) {
    char text[digits + 2] = {};
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file == -1) {
        return 0;
    }
    const ssize_t count = read(file, text, sizeof(text) - 1);
    close(file);
    char* end = nullptr;
    const unsigned long key = strtoul(text, &end, 16);
    const bool isKey = count >= static_cast<ssize_t>(digits) && end == text + digits;
    return isKey ? static_cast<u32>(key) : 0;
}

u32 RandomKey() {
    u32 key = 0;
    while (key == 0) {
        if (getrandom(&key, sizeof(key), 0) != sizeof(key)) {
            return 0;
        }
    }
    return key;
}

/// Writes a whole file beside `path` and links it to that name, which fails when there is one.
void MakeKey(const std::filesystem::path& path) {
    const u32 key = RandomKey();
    std::string beside = path.string() + ".XXXXXX";
    const int file = key == 0 ? -1 : mkostemp(beside.data(), O_CLOEXEC);  // mode 0600
    if (file == -1) {
        return;
    }
    char text[digits + 2];
    std::snprintf(text, sizeof(text), "%08X\n", key);
    const bool written =
        write(file, text, digits + 1) == static_cast<ssize_t>(digits + 1) && fsync(file) == 0;
    close(file);
    if (written && link(beside.c_str(), path.c_str()) != 0 && errno != EEXIST) {
        rename(beside.c_str(), path.c_str());  // a file system without links
    }
    unlink(beside.c_str());
}

}  // namespace

u32 KeptPasswordKey(const std::filesystem::path& path) {
    if (path.empty()) {
        return 0;
    }
    if (access(path.c_str(), F_OK) != 0) {
        MakePrivateFolders(path.parent_path());
        MakeKey(path);
    }
    return ReadKey(path);
}

}  // namespace hostkit
