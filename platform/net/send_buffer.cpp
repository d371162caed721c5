#include "net/send_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "net/system.h"

namespace quennet::net {

std::size_t SendBuffer::Append(const char* data, std::size_t length) {
    if (bytes_ == nullptr) {
        bytes_.reset(new (std::nothrow) char[capacity]);
        if (bytes_ == nullptr) {
            return 0;
        }
    }
    if (begin_ > 0 && length > capacity - end_) {
        std::memmove(bytes_.get(), bytes_.get() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
    }
    const std::size_t count = std::min(length, capacity - end_);
    std::memcpy(bytes_.get() + end_, data, count);
    end_ += count;
    return count;
}

int SendBuffer::SendThrough(int descriptor, const char* data, std::size_t length,
                            std::size_t* taken) {
    *taken = 0;
    stalled_ = false;
    const ssize_t sent = system::Send(descriptor, data, length, 0);
    if (sent < 0 && errno != EAGAIN && errno != EINTR) {
        return errno;
    }
    *taken = sent > 0 ? static_cast<std::size_t>(sent) : 0;
    stalled_ = *taken < length;
    return 0;
}

int SendBuffer::PushTo(int descriptor) {
    if (Empty()) {
        stalled_ = false;
        return 0;
    }
    std::size_t taken = 0;
    const int error = SendThrough(descriptor, bytes_.get() + begin_, end_ - begin_, &taken);
    begin_ = error != 0 ? end_ : begin_ + taken;
    if (Empty()) {
        begin_ = end_ = 0;
    }
    return error;
}

void SendBuffer::Clear() {
    *this = SendBuffer();
}

}  // namespace quennet::net
