#include "standard_output.h"

#include <errno.h>
#include <unistd.h>

#include <system_error>

#include "failure.h"

namespace cli {

namespace {

constexpr std::size_t blockSize = 64 * 1024;

}  // namespace

void StandardOutput::Write(std::string_view text) {
    pending_ += text;
    if (pending_.size() >= blockSize) {
        Flush();
    }
}

void StandardOutput::Flush() {
    std::string_view rest = pending_;
    while (!rest.empty()) {
        const ssize_t count = write(STDOUT_FILENO, rest.data(), rest.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0 && errno == EPIPE) {
            throw Failure(ExitStatus::failed, "");
        }
        if (count <= 0) {
            throw Failure(ExitStatus::failed,
                          "standard output: " + std::generic_category().message(errno));
        }
        rest.remove_prefix(static_cast<std::size_t>(count));
    }
    pending_.clear();
}

}  // namespace cli
