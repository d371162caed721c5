#pragma once
// A word that threads share without a lock.

#include <atomic>

#include "host/types.h"

namespace quennet {

/// A 32-bit word that is read and written whole on every thread. It has no constructor: zeroed
/// memory is a word of 0. It must lie on a 4-byte boundary.
class SharedWord {
  public:
    u32 Load() const { return std::atomic_ref<u32>(const_cast<u32&>(word_)).load(); }
    void Store(u32 value) { std::atomic_ref<u32>(word_).store(value); }
    void Add(u32 value) { std::atomic_ref<u32>(word_).fetch_add(value); }
    void Subtract(u32 value) { std::atomic_ref<u32>(word_).fetch_sub(value); }
    /// Stores `value` and gives what stood there before.
    u32 Exchange(u32 value) { return std::atomic_ref<u32>(word_).exchange(value); }
    /// Stores `value` where `expected` stands, and gives what stood there before.
    u32 ExchangeIf(u32 expected, u32 value) {
        std::atomic_ref<u32>(word_).compare_exchange_strong(expected, value);
        return expected;
    }
    bool IsSet() const { return Load() != 0; }

  private:
    u32 word_;
};
static_assert(sizeof(SharedWord) == 4);

}  // namespace quennet
