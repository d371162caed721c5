#include "breaker.h"

#include <algorithm>

namespace loopback {

void Breaker::Set(const Break& next) {
    std::lock_guard guard(lock_);
    chosen_ = next;
    left_ = next.byte;
}

bool Breaker::Counts(Channel channel) const {
    return left_ > 0 && (channel == Channel::data || !chosen_.dataAlone);
}

std::size_t Breaker::Room(Channel channel, std::size_t size) const {
    std::lock_guard guard(lock_);
    return Counts(channel) ? std::min(size, left_) : size;
}

bool Breaker::Moved(Channel channel, std::size_t bytes) {
    std::lock_guard guard(lock_);
    if (!Counts(channel)) {
        return false;
    }
    left_ -= std::min(left_, bytes);
    return left_ == 0;
}

Break Breaker::Chosen() const {
    std::lock_guard guard(lock_);
    return chosen_;
}

bool Breaker::HasBroken() const {
    std::lock_guard guard(lock_);
    return chosen_.byte > 0 && left_ == 0;
}

}  // namespace loopback
