#include "local_target.h"

#include <sys/stat.h>

#include <filesystem>

#include "failure.h"
#include "hostkit/existing_files.h"

namespace cli {

namespace {

namespace fs = std::filesystem;

constexpr char standardOutputName[] = "standard output";

std::string NameFrom(const Url& url) {
    std::string name = url.FileName();
    if (!hostkit::IsSafeName(name)) {
        throw Failure(ExitStatus::usage, name.empty()
                                             ? "the URL names no file"
                                             : "no file can have the name \"" + name + "\"");
    }
    return name;
}

std::string PathFor(const std::optional<std::string>& output, const Url& url) {
    if (!output) {
        return NameFrom(url);
    }
    std::error_code ignored;
    if (output->ends_with('/')) {
        return *output + NameFrom(url);
    }
    if (fs::is_directory(*output, ignored)) {
        return *output + "/" + NameFrom(url);
    }
    return *output;
}

}  // namespace

std::optional<hostkit::u64> LocalTarget::ExistingSize() const {
    struct stat status;
    if (isStandardOutput || stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    return static_cast<hostkit::u64>(status.st_size);
}

bool LocalTarget::IsStream() const {
    struct stat status;
    return isStandardOutput || (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode));
}

LocalTarget ChooseTarget(const std::optional<std::string>& output, const Url& url) {
    if (url.FileName().empty()) {
        throw Failure(ExitStatus::usage, "the URL names no file");
    }
    if (output == "-") {
        return {standardOutputName, true};
    }
    if (output == "") {
        throw Failure(ExitStatus::usage, "the name of the local file is empty");
    }
    const std::string path = PathFor(output, url);
    const fs::path folder = fs::path(path).parent_path();
    std::error_code ignored;
    if (!folder.empty() && !fs::is_directory(folder, ignored)) {
        throw Failure(ExitStatus::failed, folder.string() + " is no folder");
    }
    const LocalTarget target = {path};
    if (path != output && target.IsStream()) {
        throw Failure(ExitStatus::failed, path + " is no regular file");
    }
    return target;
}

}  // namespace cli
