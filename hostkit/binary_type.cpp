#include "hostkit/binary_type.h"

#include "hostkit/console.h"

namespace hostkit {

void BinaryType::TakeLine(const std::string& line) {
    const std::lock_guard lock(mutex_);
    if (line.starts_with("Connected to ")) {
        refusal_.clear();
        isAwaited_ = false;
    } else if (line == "TYPE I") {
        isAwaited_ = true;
    } else if (isAwaited_ && IsReply(line)) {
        constexpr char done = '2';
        refusal_ = line.front() == done ? "" : line;
        isAwaited_ = false;
    }
}

bool BinaryType::IsRefused() const {
    const std::lock_guard lock(mutex_);
    return !refusal_.empty();
}

std::string BinaryType::Refusal() const {
    const std::lock_guard lock(mutex_);
    return refusal_.empty() ? "" : refusal_ + " (the binary type was refused)";
}

}  // namespace hostkit
