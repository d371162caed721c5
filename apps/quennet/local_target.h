#pragma once
// The local file of a download: its path, and what is there already.

#include <optional>
#include <string>

#include "hostkit/types.h"
#include "url.h"

namespace cli {

struct LocalTarget {
    std::string path;
    bool isStandardOutput = false;

    /// Size of a regular file that is there.
    std::optional<hostkit::u64> ExistingSize() const;
    /// Something is there that is no regular file, such as a device or a pipe. It is written to,
    /// and not asked about.
    bool IsStream() const;
};

/// `output` is what the user named: nothing (the working directory), a file, a folder, which ends
/// in '/' or exists, or «-». A name that the user did not give comes from the URL, and is checked;
/// only one that was given may be something else than a regular file. Throws a Failure for a URL
/// that names no file, and for a folder that is not there.
LocalTarget ChooseTarget(const std::optional<std::string>& output, const Url& url);

}  // namespace cli
