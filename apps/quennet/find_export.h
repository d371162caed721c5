#pragma once
// What a search found, as files.

#include "hostkit/search.h"
#include "options.h"

namespace cli {

/// Throws Failure when one of the files that the options name can't be written, before anything is
/// searched for.
void CheckExports(const Options& options);

/// Writes the files that the options name. Each takes the place of one that is there in one step.
/// Throws Failure.
void WriteExports(const Options& options, hostkit::Search& search);

}  // namespace cli
