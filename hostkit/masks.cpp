#include "hostkit/masks.h"

#include <cstring>

#include "host/records.h"

namespace hostkit {

namespace {

/// One mask. After a mismatch only the last '*' takes one byte more, which finds a match if there
/// is one, since earlier stars have taken the least that they can.
bool Matches(std::string_view name, std::string_view mask) {
    constexpr std::size_t none = std::string_view::npos;
    std::size_t at = 0;
    std::size_t maskAt = 0;
    std::size_t star = none;
    std::size_t starTook = 0;
    while (at < name.size()) {
        if (maskAt < mask.size() && mask[maskAt] == '*') {
            star = maskAt++;
            starTook = at;
        } else if (maskAt < mask.size() &&
                   (mask[maskAt] == '?' || Folded(mask[maskAt]) == Folded(name[at]))) {
            ++at;
            ++maskAt;
        } else if (star != none) {
            maskAt = star + 1;
            at = ++starTook;
        } else {
            return false;
        }
    }
    return mask.find_first_not_of('*', maskAt) == none;
}

bool MatchesAll(std::string_view mask) {
    return mask == "." || mask == "*.*" || mask == "*";
}

}  // namespace

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool MatchesMasks(std::string_view name, std::string_view masks) {
    bool anyMask = false;
    while (!masks.empty()) {
        const std::size_t end = masks.find(';');
        const std::string_view mask = Trimmed(masks.substr(0, end));
        masks.remove_prefix(end == masks.npos ? masks.size() : end + 1);
        if (mask.empty()) {
            continue;
        }
        if (MatchesAll(mask) || Matches(name, mask)) {
            return true;
        }
        anyMask = true;
    }
    return !anyMask;
}

bool PassesFilter(const FilterRecord& filter, std::string_view name, u16 attributes, u16 date,
                  u64 size) {
    const bool isFolder = (attributes & quennet::attributeDirectory) != 0;
    if (isFolder && (filter.flags & filterTakesFolders) == 0) {
        return false;
    }
    if ((filter.firstDate != 0 && date < filter.firstDate) ||
        (filter.lastDate != 0 && (date == 0 || date > filter.lastDate))) {
        return false;
    }
    if (!isFolder && (size < filter.smallest || (filter.largest != 0 && size > filter.largest))) {
        return false;
    }
    return MatchesMasks(name, {filter.masks, strnlen(filter.masks, sizeof(filter.masks))});
}

}  // namespace hostkit
