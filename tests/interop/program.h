#pragma once
// The quennet program, run as a shell runs it.

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "interop/servers.h"

namespace quennet::interop {

struct ProgramResult {
    int status = -1;  // exit status; 128 and the signal's number when a signal ended it
    std::string output;
    std::string errors;
};

/// One run of the program. Standard input is empty, so that it can ask nobody.
class Program {
  public:
    /// Starts it with `home` as its home folder and as its working directory.
    Program(const std::filesystem::path& home, const std::vector<std::string>& arguments);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Signal(int signal);
    /// Waits for its end.
    ProgramResult Finish();

  private:
    const std::filesystem::path outputFile_;
    const std::filesystem::path errorFile_;
    pid_t process_ = -1;
};

/// Starts it and waits for its end.
ProgramResult RunProgram(const std::filesystem::path& home,
                         const std::vector<std::string>& arguments);

/// The URL of a path on a server, with the server's account. The path's characters are encoded
/// where a URL wants that; its slashes stand for themselves.
std::string UrlOf(const Server& server, const std::string& path);

}  // namespace quennet::interop
