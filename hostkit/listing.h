#pragma once
// The entries of a directory in the module's own packed form, one block of memory for all of them.

#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "host/records.h"
#include "hostkit/types.h"

namespace hostkit {

struct ListingEntry {
    std::string_view name;  // as the server wrote it: check it before it becomes a local path
    u16 date = 0;           // DOS date, 0 when unknown
    u16 time = 0;           // DOS time
    u16 attributes = 0;
    u64 size = 0;

    bool IsDirectory() const { return (attributes & quennet::attributeDirectory) != 0; }
    /// A link, to whatever. Walks of a tree do not enter it.
    bool IsLink() const { return (attributes & linkBits) == linkBits; }

    static constexpr u16 linkBits = quennet::attributePermissions | quennet::attributeLink;
};

/// An entry's name without the blanks that some listings put behind it; those with Unix permissions
/// put none there.
std::string_view NameOf(const ListingEntry& entry);

class Listing {
  public:
    class Iterator {
      public:
        using iterator_category = std::input_iterator_tag;
        using value_type = ListingEntry;
        using difference_type = std::ptrdiff_t;
        using pointer = const ListingEntry*;
        using reference = ListingEntry;

        Iterator() = default;
        explicit Iterator(const char* record) : record_(record) {}
        ListingEntry operator*() const;
        Iterator& operator++();
        Iterator operator++(int);
        bool operator==(const Iterator& other) const { return record_ == other.record_; }

      private:
        const char* record_ = nullptr;
    };

    Listing() = default;
    ~Listing();
    Listing(Listing&& other) noexcept { Swap(other); }
    Listing& operator=(Listing&& other) noexcept {
        Swap(other);
        return *this;
    }

    /// Adds an entry. False without memory, and for a name that the form has no room for (more than
    /// 65,000 bytes).
    bool Append(const ListingEntry& entry) noexcept;

    std::size_t Count() const { return count_; }
    bool Empty() const { return count_ == 0; }
    Iterator begin() const { return Iterator(block_); }
    Iterator end() const { return Iterator(block_ + used_); }

    /// The list as the module takes it, ended by a length of 0; null when it is empty.
    const quennet::DirEntry* Records() const;

    /// Hands that list over; it goes back through the host's CoreFree.
    void* Release() noexcept;

  private:
    void Swap(Listing& other) noexcept;

    char* block_ = nullptr;
    std::size_t used_ = 0;  // without the two bytes of the end
    std::size_t capacity_ = 0;
    std::size_t count_ = 0;
};

}  // namespace hostkit
