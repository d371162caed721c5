#pragma once
// A filter record as a person writes it.

#include <optional>
#include <string>

#include "hostkit/masks.h"

namespace hostkit {

/// Empty fields are no bound.
struct FilterText {
    std::string masks;
    std::string smallest;   // bytes, or with K, M, G or T behind the number (1K is 1024)
    std::string largest;    // at least 1
    std::string firstDate;  // YYYY-MM-DD, from 1980 to 2107
    std::string lastDate;
    bool takesFolders = false;
};

enum class FilterField { masks, smallest, largest, firstDate, lastDate };

/// The field that can't be, and a word on what is wrong with it.
struct FilterProblem {
    FilterField field;
    u32 textId;
};

FilterText TextOfFilter(const FilterRecord& filter);

/// Puts what the texts say into the record and keeps its other words. With a problem the record is
/// as it was.
std::optional<FilterProblem> ReadFilter(const FilterText& text, FilterRecord& filter);

}  // namespace hostkit
