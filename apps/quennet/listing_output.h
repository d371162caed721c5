#pragma once
// How entries of a directory are printed.

#include <functional>
#include <string>
#include <string_view>

#include "hostkit/listing.h"
#include "options.h"

namespace cli {

/// Whether an entry is shown: all but the directory itself and its parent.
bool IsShown(const hostkit::ListingEntry& entry);

class ListingFormat {
  public:
    /// `coloured`: directories and links stand out, on a terminal.
    ListingFormat(const Options& options, bool coloured)
        : longForm_(options.longForm), porcelain_(options.porcelain), coloured_(coloured) {}

    /// Makes the columns of the long form wide enough for an entry. To be called for all of them
    /// first.
    void Measure(const hostkit::ListingEntry& entry);

    /// An entry's line, with its line end.
    std::string Line(const hostkit::ListingEntry& entry) const;

  private:
    std::string Porcelain(const hostkit::ListingEntry& entry) const;
    std::string Name(const hostkit::ListingEntry& entry) const;

    bool longForm_;
    bool porcelain_;
    bool coloured_;
    std::size_t attributesWidth_ = 0;
    std::size_t sizeWidth_ = 0;
};

/// Prints the entries that `isWanted` takes on standard output. False when there were none.
bool PrintEntries(const hostkit::Listing& entries, const Options& options,
                  const std::function<bool(const hostkit::ListingEntry&)>& isWanted);

/// Whether standard output may be coloured: a terminal that can, and no NO_COLOR.
bool MayColour();

}  // namespace cli
