#include "hostkit/memory.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace hostkit {

namespace {

constexpr HostWord smallestBuffer = 256;

std::atomic<u32> appendCount = 0;

/// A capacity of at least `needed`; 0 when there is none.
HostWord GrownCapacity(HostWord capacity, HostWord needed) {
    const HostWord grown = capacity + capacity / 2;
    return grown < capacity ? needed : std::max({grown, needed, smallestBuffer});
}

}  // namespace

void AppendBounded(char* target, const char* text, std::size_t size) {
    const std::size_t length = strnlen(target, size);
    if (length >= size) {
        return;
    }
    const std::size_t count = strnlen(text, size - length - 1);
    std::memmove(target + length, text, count);
    target[length + count] = '\0';
}

bool AppendToBuffer(quennet::GrowBuffer& record, const void* data, u32 size) {
    if (size > PTRDIFF_MAX - record.used) {
        return false;
    }
    const HostWord needed = record.used + size;
    if (record.base == 0 || needed > record.host) {
        const HostWord capacity = GrownCapacity(record.host, needed);
        void* block = std::realloc(quennet::PointerFromWord<void>(record.base), capacity);
        if (block == nullptr) {
            return false;
        }
        record.base = quennet::WordFromPointer(block);
        record.host = capacity;
    }
    if (size > 0) {
        std::memcpy(quennet::PointerFromWord<char>(record.base) + record.used, data, size);
    }
    record.used = needed;
    ++record.count;
    appendCount.fetch_add(1, std::memory_order_relaxed);
    return true;
}

u32 BufferAppendCount() {
    return appendCount.load(std::memory_order_relaxed);
}

}  // namespace hostkit
