#include "net/read_ahead.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "net/system.h"

namespace quennet::net {

namespace {

// A control connection never needs more than the first size; a bulk transfer gets to the last one
// within a few receives.
constexpr std::size_t firstCapacity = 4096;
constexpr std::size_t growthFactor = 4;
constexpr std::size_t lastCapacity = 256 * 1024;

}  // namespace

bool ReadAhead::GrowTo(std::size_t capacity) {
    std::unique_ptr<char[]> larger(new (std::nothrow) char[capacity]);
    if (larger == nullptr) {
        return false;
    }
    const std::size_t size = Size();
    if (size > 0) {
        std::memcpy(larger.get(), bytes_.get() + begin_, size);
    }
    bytes_ = std::move(larger);
    capacity_ = capacity;
    begin_ = 0;
    end_ = size;
    return true;
}

bool ReadAhead::MakeRoom() {
    if (begin_ == end_) {
        begin_ = end_ = 0;
    }
    if (capacity_ == 0) {
        return GrowTo(firstCapacity);
    }
    if ((lastFillWasFull_ || Size() == capacity_) && capacity_ < lastCapacity) {
        lastFillWasFull_ = false;
        GrowTo(capacity_ * growthFactor);  // without the memory, the present size does too
    }
    if (end_ == capacity_ && begin_ > 0) {
        std::memmove(bytes_.get(), bytes_.get() + begin_, Size());
        end_ -= begin_;
        begin_ = 0;
    }
    return end_ < capacity_;
}

ReadAhead::Fill ReadAhead::FillFrom(int descriptor) {
    if (brokenBy_ != 0) {
        errno = brokenBy_;
        return Fill::failed;
    }
    if (!MakeRoom()) {
        errno = ENOBUFS;
        return Fill::failed;
    }
    const std::size_t room = capacity_ - end_;
    const ssize_t received = system::Receive(descriptor, bytes_.get() + end_, room, 0);
    if (received > 0) {
        end_ += static_cast<std::size_t>(received);
        lastFillWasFull_ = static_cast<std::size_t>(received) == room;
        return Fill::received;
    }
    if (received == 0) {
        return Fill::ended;
    }
    if (errno == EAGAIN || errno == EINTR) {
        return Fill::wouldBlock;
    }
    // The system tells it once; from then on it speaks of the end of the stream.
    brokenBy_ = errno;
    return Fill::failed;
}

std::size_t ReadAhead::Peek(char* buffer, std::size_t length) {
    const std::size_t count = std::min(length, Size());
    if (count > 0) {
        std::memcpy(buffer, bytes_.get() + begin_, count);
    }
    seen_ = count;
    return count;
}

std::size_t ReadAhead::Take(char* buffer, std::size_t length) {
    const std::size_t count = Peek(buffer, length);
    begin_ += count;
    seen_ = 0;
    return count;
}

void ReadAhead::Clear() {
    *this = ReadAhead();
}

}  // namespace quennet::net
