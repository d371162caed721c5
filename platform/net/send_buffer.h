#pragma once
// Bytes of a stream that the caller has sent and the system has not got yet.

#include <cstddef>
#include <memory>

#include "net/visible.h"

namespace quennet::net {

class SendBuffer {
  public:
    static constexpr std::size_t capacity = 256 * 1024;

    /// Takes what there is room for. Returns the number of bytes taken.
    std::size_t Append(const char* data, std::size_t length);

    /// Hands the bytes to the system, without waiting. Returns 0 or an errno value; after an error
    /// nothing is left to push.
    int PushTo(int descriptor);

    /// Sends straight from the caller's memory, without waiting; the buffer must be empty. Returns
    /// 0 or an errno value and sets `taken`.
    int SendThrough(int descriptor, const char* data, std::size_t length, std::size_t* taken);

    std::size_t Size() const { return end_ - begin_; }
    bool Empty() const { return begin_ == end_; }
    bool Full() const { return Size() == capacity; }
    /// Whether the system would not take all at the last attempt.
    bool Stalled() const { return stalled_; }

    /// Forgets the bytes and gives the memory back.
    void Clear();

  private:
    std::unique_ptr<char[]> bytes_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    Visible<bool> stalled_ = false;
};

}  // namespace quennet::net
