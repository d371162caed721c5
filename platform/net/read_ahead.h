#pragma once
// Bytes of a stream that were received ahead of the caller's reads.

#include <cstddef>
#include <memory>

namespace quennet::net {

class ReadAhead {
  public:
    enum class Fill { received, ended, wouldBlock, failed };

    /// One receive without waiting, for as much as there is room. After `failed`, errno tells the
    /// reason, and so it does each time from then on: a broken stream has no end that could be
    /// reached.
    Fill FillFrom(int descriptor);

    /// Copies at most `length` bytes out, in the stream's order; Take removes them.
    std::size_t Take(char* buffer, std::size_t length);
    std::size_t Peek(char* buffer, std::size_t length);

    std::size_t Size() const { return end_ - begin_; }
    /// Whether the last peek has shown all there is, and nothing was taken or received since.
    bool AllSeen() const { return seen_ == Size(); }

    /// Gives the memory back.
    void Clear();

  private:
    bool MakeRoom();
    bool GrowTo(std::size_t capacity);

    std::unique_ptr<char[]> bytes_;
    std::size_t capacity_ = 0;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::size_t seen_ = 0;
    bool lastFillWasFull_ = false;
    int brokenBy_ = 0;  // errno of the failure that ended the stream
};

}  // namespace quennet::net
