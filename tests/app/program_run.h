#pragma once
// The quennet program, run as a shell runs it: with files for its output, or on a terminal.

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_folder.h"

struct RunResult {
    int status = -1;  // exit status; 128 and the signal's number when a signal ended it
    std::string output;
    std::string errors;
};

/// One run. Home, working directory and temporary folder are `home`; nothing else of this process's
/// environment but the search path is handed on. Standard input is empty.
class ProgramRun {
  public:
    ProgramRun(const TempFolder& home, const std::vector<std::string>& arguments);
    ~ProgramRun();
    ProgramRun(const ProgramRun&) = delete;
    ProgramRun& operator=(const ProgramRun&) = delete;

    void Signal(int signal) const;
    /// Waits for its end.
    RunResult Finish();

  private:
    TempFolder streams_;
    pid_t process_ = -1;
};

/// Runs it to its end.
RunResult Quennet(const TempFolder& home, const std::vector<std::string>& arguments);

/// The same by a shell, with the program as "$0", so that its streams can be redirected.
RunResult Shell(const TempFolder& home, const std::string& command);

/// A run on a terminal of its own, with somebody who types.
class TerminalRun {
  public:
    TerminalRun(const TempFolder& home, const std::vector<std::string>& arguments);
    ~TerminalRun();
    TerminalRun(const TerminalRun&) = delete;
    TerminalRun& operator=(const TerminalRun&) = delete;

    /// Waits until the terminal has shown a text; false when it does not within ten seconds.
    bool Await(const std::string& text);
    void Type(const std::string& text) const;
    /// Waits for the end, and gives the exit status.
    int Finish();
    /// All that the terminal has shown.
    const std::string& Shown() const { return shown_; }

  private:
    bool ReadSome(std::chrono::milliseconds patience);

    int terminal_ = -1;
    pid_t process_ = -1;
    std::string shown_;
};

/// Waits until a file has so many bytes; false when it does not come to that.
bool AwaitSize(const std::filesystem::path& path, std::uintmax_t size);

/// Names in a folder, in their order.
std::vector<std::string> NamesIn(const std::filesystem::path& folder);
