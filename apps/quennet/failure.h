#pragma once
// How a run ends: its exit status, and the one line that says why.

#include <stdexcept>
#include <string>

namespace cli {

enum class ExitStatus : int {
    done = 0,
    failed = 1,        // the operation, mostly with the server's words
    usage = 2,         // the command line or the URL
    noConnection = 3,  // no connection, or no login
};

/// Ends the command. The text is one line without the program's name; what it quotes of a server
/// need not be harmless. An empty one is not printed.
class Failure : public std::runtime_error {
  public:
    Failure(ExitStatus status, const std::string& text)
        : std::runtime_error(text), status_(status) {}

    ExitStatus Status() const { return status_; }

  private:
    ExitStatus status_;
};

}  // namespace cli
