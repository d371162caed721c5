#include "status.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "terminal_text.h"

namespace cli {

namespace {

constexpr char clearLine[] = "\r\x1B[K";
constexpr unsigned usualWidth = 80;
constexpr std::size_t mostHeld = 100'000;  // bytes

int OwnDescriptor() {
    char name[PATH_MAX];
    const int own = ttyname_r(STDERR_FILENO, name, sizeof name) == 0
                        ? open(name, O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)
                        : -1;
    return own == -1 ? STDERR_FILENO : own;
}

}  // namespace

Status::Status() : isTerminal_(isatty(STDERR_FILENO) != 0), descriptor_(OwnDescriptor()) {}

Status::~Status() {
    RemoveBottom();
    if (descriptor_ != STDERR_FILENO) {
        close(descriptor_);
    }
}

unsigned Status::Width() const {
    winsize size = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : usualWidth;
}

void Status::Line(std::string_view text) {
    const std::lock_guard lock(mutex_);
    WriteLine(text);
}

void Status::LastLine(std::string_view text) {
    Hurry();
    if (const std::unique_lock lock(mutex_, std::try_to_lock); lock) {
        WriteLine(text);
    }
}

void Status::WriteLine(std::string_view text) {
    const std::string line = HarmlessText(text) + "\n";
    Write(bottom_.empty() ? line : clearLine + line + bottom_);
}

void Status::SetBottom(std::string_view text) {
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (lock && isTerminal_ && CanWrite(0)) {
        bottom_ = HarmlessText(text);
        Write(clearLine + bottom_);
    }
}

void Status::RemoveBottom() {
    const std::lock_guard lock(mutex_);
    if (!bottom_.empty()) {
        Write(clearLine);
        bottom_.clear();
    }
}

void Status::Ask(std::string_view question) {
    const std::lock_guard lock(mutex_);
    Write(HarmlessText(question));
}

void Status::CountHold(int more) {
    const std::lock_guard lock(mutex_);
    holds_ += more;
    if (holds_ == 0) {
        Write(std::exchange(heldBytes_, {}));
    }
}

/// Nobody is left to hear of a failure. What is held is the last that a person can use.
void Status::Write(const std::string& bytes) {
    if (holds_ > 0) {
        heldBytes_ += bytes;
        heldBytes_.erase(0, heldBytes_.size() - std::min(heldBytes_.size(), mostHeld));
        return;
    }
    constexpr int lookMilliseconds = 100;  // between two looks whether the program is to end
    std::size_t written = 0;
    while (written < bytes.size()) {
        if (!CanWrite(hurried_ ? 0 : lookMilliseconds)) {
            if (hurried_) {
                return;
            }
            continue;
        }
        // A pipe that can be written to takes so many bytes at once.
        const std::size_t piece = std::min<std::size_t>(bytes.size() - written, PIPE_BUF);
        const ssize_t count = write(descriptor_, bytes.data() + written, piece);
        if (count <= 0 && errno != EINTR && errno != EAGAIN) {
            return;
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

bool Status::CanWrite(int milliseconds) const {
    pollfd reader = {descriptor_, POLLOUT, 0};
    return poll(&reader, 1, milliseconds) > 0;
}

}  // namespace cli
