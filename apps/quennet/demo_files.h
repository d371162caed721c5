#pragma once
// The files of the demonstration: a served tree and a local folder, in a temporary folder.

#include <filesystem>
#include <string>

namespace cli {

class DemoFiles {
  public:
    /// Makes them. Throws Failure when there is no room for them.
    DemoFiles();
    /// Removes them.
    ~DemoFiles();
    DemoFiles(const DemoFiles&) = delete;
    DemoFiles& operator=(const DemoFiles&) = delete;

    std::filesystem::path Served() const { return folder_ / "served"; }
    std::filesystem::path Local(const std::string& name) const { return folder_ / "local" / name; }

    /// What music.bin holds.
    const std::string& Music() const { return music_; }

    static std::string Read(const std::filesystem::path& path);
    static void Write(const std::filesystem::path& path, const std::string& bytes);

  private:
    void Fill();

    std::filesystem::path folder_;
    std::string music_;
};

// What is served.
constexpr char demoMusic[] = "music.bin";
constexpr std::size_t demoMusicSize = 1'000'000;
constexpr char demoNotes[] = "release notes.txt";
constexpr char demoNotesText[] = "Nothing is lost.\n";
constexpr char demoMainframe[] = "mainframe";  // with demoDataset and demoLibrary
constexpr char demoDataset[] = "DEMO.SEQ";
constexpr std::size_t demoDatasetSize = 6160;
constexpr char demoLibrary[] = "DEMO.LIBRARY";
constexpr char demoDos[] = "dos";  // with demoProgram and demoDosFolder
constexpr char demoProgram[] = "SETUP.EXE";
constexpr std::size_t demoProgramSize = 4096;
constexpr char demoDosFolder[] = "Program Files";

}  // namespace cli
