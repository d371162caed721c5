#include "status.h"

#include <errno.h>
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

}  // namespace

Status::Status() : isTerminal_(isatty(STDERR_FILENO) != 0) {}

Status::~Status() {
    RemoveBottom();
}

unsigned Status::Width() const {
    winsize size = {};
    const bool known = ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : usualWidth;
}

void Status::Line(std::string_view text) {
    const std::lock_guard lock(mutex_);
    const std::string line = HarmlessText(text) + "\n";
    Write(bottom_.empty() ? line : clearLine + line + bottom_);
}

void Status::SetBottom(std::string_view text) {
    const std::lock_guard lock(mutex_);
    if (isTerminal_) {
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

void Status::SetHeld(bool held) {
    const std::lock_guard lock(mutex_);
    held_ = held;
    if (!held) {
        Write(std::exchange(heldBytes_, {}));
    }
}

/// Nobody is left to hear of a failure. What is held is the last that a person can use.
void Status::Write(const std::string& bytes) {
    if (held_) {
        heldBytes_ += bytes;
        heldBytes_.erase(0, heldBytes_.size() - std::min(heldBytes_.size(), mostHeld));
        return;
    }
    std::size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t count = write(STDERR_FILENO, bytes.data() + written, bytes.size() - written);
        if (count <= 0 && errno != EINTR) {
            return;
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

}  // namespace cli
