#pragma once
// A listing as it comes in, seen where the module has its buffer grown.

#include <cstddef>
#include <string_view>

#include "host/grow_buffer.h"
#include "hostkit/types.h"

namespace hostkit {

/// Looks at what message 26 receives on the calling thread while the object lives.
///
/// The module takes the text up to its first NUL, which is the one that it ends it with: those of
/// the server become SUB, so that they hide nothing.
class ReceivedListing {
  public:
    /// Of at most `limit` bytes.
    explicit ReceivedListing(u64 limit);
    ~ReceivedListing();
    ReceivedListing(const ReceivedListing&) = delete;
    ReceivedListing& operator=(const ReceivedListing&) = delete;

    /// Whether its text may tell more than the module's entries (raw_listing.h); `kept` is what was
    /// to be said of the one in the cache, when none has been received.
    bool MayTellMore(bool kept) const { return buffer_ != nullptr ? mayTellMore_ : kept; }

    /// False when a buffer may not grow by `size` bytes, with the reason as a file failure.
    static bool MayAppend(const quennet::GrowBuffer& buffer, u32 size);
    /// Hands on that the last `size` bytes of a buffer have just been added.
    static void Appended(quennet::GrowBuffer& buffer, u32 size);

  private:
    bool IsFull(const quennet::GrowBuffer& buffer, u32 size) const;
    void Take(quennet::GrowBuffer& buffer, u32 size);
    void Look(std::string_view block);

    const u64 limit_;
    const quennet::GrowBuffer* buffer_ = nullptr;
    bool mayTellMore_ = false;
    // Of the line that is on its way:
    std::size_t length_ = 0;
    std::size_t digits_ = 0;  // the last ones in a row
    std::size_t blanks_ = 0;
    std::size_t columns_ = 0;
};

}  // namespace hostkit
