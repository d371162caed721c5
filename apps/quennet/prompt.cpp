#include "prompt.h"

#include <errno.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace cli {

namespace {

/// The terminal shows nothing of what is typed while the object lives.
class EchoOff {
  public:
    EchoOff() : known_(tcgetattr(STDIN_FILENO, &before_) == 0) {
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= ECHONL;
        if (known_) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
        }
    }
    ~EchoOff() {
        if (known_) {
            tcsetattr(STDIN_FILENO, TCSAFLUSH, &before_);
        }
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;

  private:
    termios before_ = {};
    bool known_;
};

/// Waits for input. False when the verdict came first.
bool AwaitInput(const Watch& watch) {
    pollfd ends[] = {{STDIN_FILENO, POLLIN, 0}, {watch.Descriptor(), POLLIN, 0}};
    while (poll(ends, std::size(ends), -1) < 0) {
        if (errno != EINTR) {
            return false;
        }
    }
    return ends[1].revents == 0;
}

}  // namespace

bool CanAsk() {
    return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

std::optional<std::string> AskLine(Status& status, const Watch& watch,
                                   const std::string& question) {
    constexpr std::size_t longest = 4096;
    status.Ask(question);
    std::string line;
    while (line.size() < longest && AwaitInput(watch)) {
        char byte = 0;
        if (read(STDIN_FILENO, &byte, 1) != 1) {
            break;
        }
        if (byte == '\n') {
            return line;
        }
        line += byte;
    }
    status.Line("");
    return std::nullopt;
}

std::optional<std::string> AskSecret(Status& status, const Watch& watch,
                                     const std::string& question) {
    const EchoOff echoOff;
    return AskLine(status, watch, question);
}

}  // namespace cli
