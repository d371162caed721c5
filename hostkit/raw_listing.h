#pragma once
// What the raw text of a listing tells beyond the module's entries.
//
// The module reads a line in pieces of 256 bytes and sizes modulo 2^32, and skips the blanks before
// a name and around an arrow in it. So a longer line gives an entry with a cut name, and entries
// made of its rest. Here the text is walked by the same rules beside the entries: each piece is
// read for what it must have given, and when all agree, the entries are mended from the whole
// lines. Where one disagrees, as in listings of MVS, all stay as they are.

#include <string_view>

#include "hostkit/listing.h"

namespace hostkit {

/// Gives entries of the module their whole names and true sizes, and drops those made of the rest
/// of a line. `text` is the listing that they come from. False when they stay as they are, because
/// a line must have given something else, or memory is short.
bool MendEntries(std::string_view text, Listing& entries);

}  // namespace hostkit
