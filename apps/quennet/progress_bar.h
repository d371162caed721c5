#pragma once
// The line that shows how a download goes on.

#include <string>

#include "hostkit/types.h"

namespace cli {

struct ProgressState {
    std::string name;
    hostkit::u64 position = 0;  // bytes of the file that are there
    hostkit::u64 moved = 0;     // bytes that came over the wire
    hostkit::u64 total = 0;     // bytes of the whole file, 0 when unknown
    double seconds = 0;         // since the first byte was awaited
};

/// «readme.txt  42% [=======>          ]  12.3 MiB  4.1 MiB/s  0:17 left», in at most `width`
/// columns; a long name is cut. Without a known total there is no bar and no time left.
std::string ProgressText(const ProgressState& state, unsigned width);

/// «512 B», «12.3 KiB», «1.0 GiB».
std::string ByteCountText(double bytes);

}  // namespace cli
