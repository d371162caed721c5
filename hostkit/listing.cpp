#include "hostkit/listing.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace hostkit {

namespace {

using quennet::DirEntry;

constexpr std::size_t longestName = 65000;
constexpr std::size_t endSize = sizeof(u16);

u16 LengthOf(const char* record) {
    u16 length;
    std::memcpy(&length, record, sizeof(length));
    return length;
}

}  // namespace

ListingEntry Listing::Iterator::operator*() const {
    DirEntry fields;
    std::memcpy(&fields, record_, offsetof(DirEntry, name));
    ListingEntry entry;
    entry.name = record_ + offsetof(DirEntry, name);
    entry.date = fields.date;
    entry.time = fields.time;
    entry.attributes = fields.attributes;
    entry.size = static_cast<u64>(fields.sizeHigh) << 32 | fields.sizeLow;
    return entry;
}

std::string_view NameOf(const ListingEntry& entry) {
    const bool isWhole = (entry.attributes & quennet::attributePermissions) != 0;
    return isWhole ? entry.name : entry.name.substr(0, entry.name.find_last_not_of(' ') + 1);
}

Listing::Iterator& Listing::Iterator::operator++() {
    record_ += LengthOf(record_);
    return *this;
}

Listing::Iterator Listing::Iterator::operator++(int) {
    const Iterator before = *this;
    ++*this;
    return before;
}

Listing::~Listing() {
    std::free(block_);
}

void Listing::Swap(Listing& other) noexcept {
    std::swap(block_, other.block_);
    std::swap(used_, other.used_);
    std::swap(capacity_, other.capacity_);
    std::swap(count_, other.count_);
}

bool Listing::Append(const ListingEntry& entry) noexcept {
    if (entry.name.size() > longestName) {
        return false;
    }
    const std::size_t length = offsetof(DirEntry, name) + entry.name.size() + 1;
    const std::size_t needed = used_ + length + endSize;
    if (needed > capacity_) {
        const std::size_t capacity =
            std::max({needed, capacity_ + capacity_ / 2, std::size_t{256}});
        void* block = std::realloc(block_, capacity);
        if (block == nullptr) {
            return false;
        }
        block_ = static_cast<char*>(block);
        capacity_ = capacity;
    }
    DirEntry fields = {};
    fields.length = static_cast<u16>(length);
    fields.date = entry.date;
    fields.time = entry.time;
    fields.attributes = entry.attributes;
    fields.sizeLow = static_cast<u32>(entry.size);
    fields.sizeHigh = static_cast<u32>(entry.size >> 32);
    char* record = block_ + used_;
    std::memcpy(record, &fields, offsetof(DirEntry, name));
    std::memcpy(record + offsetof(DirEntry, name), entry.name.data(), entry.name.size());
    std::memset(record + length - 1, 0, 1 + endSize);
    used_ += length;
    ++count_;
    return true;
}

const DirEntry* Listing::Records() const {
    return reinterpret_cast<const DirEntry*>(block_);
}

void* Listing::Release() noexcept {
    used_ = capacity_ = count_ = 0;
    return std::exchange(block_, nullptr);
}

}  // namespace hostkit
