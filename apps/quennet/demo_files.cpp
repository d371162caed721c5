#include "demo_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>

#include "failure.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr time_t modified = 995'552'520;  // 19 July 2001, 14:22

/// Bytes without a pattern that repeats.
std::string MixedBytes(std::size_t count) {
    std::string bytes;
    bytes.reserve(count);
    std::uint32_t state = 2463534242;
    while (bytes.size() < count) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        bytes += static_cast<char>(state);
    }
    return bytes;
}

void SetTime(const fs::path& path) {
    const timespec times[2] = {{modified, 0}, {modified, 0}};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
}

}  // namespace

DemoFiles::DemoFiles() : music_(MixedBytes(demoMusicSize)) {
    std::string pattern = fs::temp_directory_path() / "quennet-demo-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw Failure(ExitStatus::failed,
                      "no temporary folder can be made: " + std::generic_category().message(errno));
    }
    folder_ = pattern;
    try {
        Fill();
    } catch (...) {
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
        throw;
    }
}

DemoFiles::~DemoFiles() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

void DemoFiles::Fill() {
    fs::create_directories(Local(""));
    const fs::path served = Served();
    fs::create_directories(served / demoMainframe / demoLibrary);
    fs::create_directories(served / demoDos / demoDosFolder);
    Write(served / demoMusic, music_);
    Write(served / demoNotes, demoNotesText);
    Write(served / demoMainframe / demoDataset, std::string(demoDatasetSize, 'd'));
    Write(served / demoDos / demoProgram, std::string(demoProgramSize, 'p'));
    for (const auto& entry : fs::recursive_directory_iterator(served)) {
        SetTime(entry.path());
    }
}

std::string DemoFiles::Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void DemoFiles::Write(const fs::path& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary);
    file << bytes;
    if (!file.flush()) {
        throw Failure(ExitStatus::failed, path.string() + " cannot be written");
    }
}

}  // namespace cli
