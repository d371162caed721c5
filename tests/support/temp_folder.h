#pragma once
// A folder of a test's own, gone with it, whole files, and bytes to fill them with.

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

inline void WriteWhole(const std::filesystem::path& path, std::string_view bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

/// The bytes of a file; none when there is no such file.
inline std::string ReadWhole(const std::filesystem::path& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
}

/// Bytes without a pattern that repeats; the same for the same seed.
inline std::string MixedBytes(std::size_t count, std::uint64_t seed = 1) {
    std::string bytes(count, '\0');
    std::uint64_t number = (seed + 1) * 0x9E3779B97F4A7C15;
    for (std::size_t offset = 0; offset < count; offset += sizeof number) {
        number ^= number << 13;
        number ^= number >> 7;
        number ^= number << 17;
        std::memcpy(bytes.data() + offset, &number, std::min(sizeof number, count - offset));
    }
    return bytes;
}

class TempFolder {
  public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "quennet-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = pattern;
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    operator const std::filesystem::path&() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

    void Write(const std::string& name, const std::string& bytes) const {
        WriteWhole(path_ / name, bytes);
    }

    /// The bytes of a file; "(none)" when there is no such file.
    std::string Read(const std::string& name) const {
        return std::filesystem::exists(path_ / name) ? ReadWhole(path_ / name) : "(none)";
    }

  private:
    std::filesystem::path path_;
};
