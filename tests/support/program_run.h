#pragma once
// Programs, run as a shell runs them: with files for their output, or on a terminal.
//
// Home, working directory and temporary folder of a run are `home`; nothing else of this process's
// environment but the search path is handed on. A run that is left before its end is killed.

#include <sys/types.h>
#include <termios.h>

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

/// The quennet program.
extern const char* const quennetProgram;

/// One run with an empty standard input.
class ProgramRun {
  public:
    ProgramRun(const std::filesystem::path& home, const std::vector<std::string>& arguments,
               const std::string& program = quennetProgram);
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
RunResult Quennet(const std::filesystem::path& home, const std::vector<std::string>& arguments);

/// The same by a shell, with the program as "$0", so that its streams can be redirected.
RunResult Shell(const std::filesystem::path& home, const std::string& command);

/// A run on a terminal of its own, with somebody who types.
class TerminalRun {
  public:
    TerminalRun(const std::filesystem::path& home, const std::vector<std::string>& arguments,
                const std::string& program = quennetProgram);
    ~TerminalRun();
    TerminalRun(const TerminalRun&) = delete;
    TerminalRun& operator=(const TerminalRun&) = delete;

    /// Waits until the terminal has shown a text; false when it does not within thirty seconds.
    bool Await(const std::string& text);
    void Type(const std::string& text) const;
    void Signal(int signal) const;
    bool WaitForStop() const;
    /// Takes the terminal away.
    void HangUp();
    /// Waits for the end, and gives the status as RunResult has it; -1 when it does not come.
    int Finish();

    /// All that the terminal has shown.
    const std::string& Shown() const { return shown_; }
    /// How the terminal is set.
    termios Settings() const;

  private:
    bool ReadSome(std::chrono::milliseconds patience);

    int terminal_ = -1;
    int otherEnd_ = -1;  // keeps the terminal when the program has gone
    pid_t process_ = -1;
    std::string shown_;
};

/// Waits until a file has so many bytes; false when it does not come to that.
bool AwaitSize(const std::filesystem::path& path, std::uintmax_t size);

/// Names in a folder, in their order.
std::vector<std::string> NamesIn(const std::filesystem::path& folder);
