#pragma once
// Wildcards and the filter record.

#include <cstddef>
#include <string_view>

#include "hostkit/types.h"

namespace hostkit {

/// An ASCII letter in lower case, any other byte as it is.
constexpr char Folded(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

/// The text without the blanks around it.
std::string_view Trimmed(std::string_view text);

/// Whether a name matches one mask of a list. Masks are set apart by ';'; '*' stands for any text,
/// '?' for one byte; ASCII letters match without regard to case. ".", "*.*" and an empty list match
/// every name. Takes at most name times mask steps.
bool MatchesMasks(std::string_view name, std::string_view masks);

/// The host's filter record. The module keeps what it has to say in `flags` and hands the record
/// on.
struct FilterRecord {
    u16 hostWord;
    u16 flags;      // filterTakesFolders, and 0x8000, which the module sets
    u16 firstDate;  // DOS dates; 0 is no bound
    u16 lastDate;
    u64 smallest;     // bytes; a file smaller than that, or larger than the other bound, is out
    u64 largest;      // 0 is no bound
    char masks[260];  // list of masks

    bool operator==(const FilterRecord&) const = default;
};
constexpr u16 filterTakesFolders = 0x10;
static_assert(offsetof(FilterRecord, flags) == 2);

/// A filter that lets all pass.
constexpr FilterRecord openFilter = {0, filterTakesFolders, 0, 0, 0, 0, {}};

/// Whether an entry passes the filter. Sizes are looked at for files alone; an entry without a date
/// lies within no bounds.
bool PassesFilter(const FilterRecord& filter, std::string_view name, u16 attributes, u16 date,
                  u64 size);

}  // namespace hostkit
