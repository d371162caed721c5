#include "hostkit/local_tree.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "hostkit/remote_tree.h"

namespace hostkit {

namespace {

namespace fs = std::filesystem;

std::vector<std::string> NamesIn(const std::string& path, std::error_code& error) {
    std::vector<std::string> names;
    fs::directory_iterator entry(path, error);
    while (!error && entry != fs::directory_iterator()) {
        names.push_back(entry->path().filename().string());
        entry.increment(error);
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Reader {
  public:
    explicit Reader(TreeOperation& operation) : operation_(operation) {}

    LocalTree Read(const std::string& path, const std::string& name) {
        std::vector<LocalFolder> pending = {{path, name, 0, {}}};
        while (!pending.empty()) {
            tree_.push_back(std::move(pending.back()));
            pending.pop_back();
            subfolders_.clear();
            ReadFolder(tree_.size() - 1);
            std::move(subfolders_.rbegin(), subfolders_.rend(), std::back_inserter(pending));
        }
        return std::move(tree_);
    }

  private:
    void ReadFolder(std::size_t index) {
        std::error_code error;
        for (const std::string& name : NamesIn(tree_[index].path, error)) {
            TakeEntry(index, name);
        }
        if (error) {
            TellFailed(operation_, tree_[index].name, error.message());
        }
    }

    void TakeEntry(std::size_t index, const std::string& name) {
        const std::string path = JoinPath(tree_[index].path, name);
        const std::string shownName = JoinPath(tree_[index].name, name);
        std::error_code error;
        const fs::file_status own = fs::symlink_status(path, error);
        const fs::file_status status = fs::status(path, error);
        if (!IsSafeName(name)) {
            TellFailed(operation_, shownName, "the name holds a line end");
        } else if (error && !fs::is_symlink(own)) {
            TellFailed(operation_, shownName, error.message());
        } else if (fs::is_directory(own)) {
            subfolders_.push_back({path, shownName, index, {}});
        } else if (fs::is_regular_file(status)) {
            const u64 size = fs::file_size(path, error);
            tree_[index].files.push_back({name, error ? 0 : size});
            operation_.transfer.record.bytesTotal += error ? 0 : size;
            ++operation_.entriesTotal;
        } else {
            TellLeftOut(operation_, shownName,
                        fs::is_symlink(own) ? "a link to no file" : "no file and no folder");
        }
    }

    TreeOperation& operation_;
    LocalTree tree_;
    std::vector<LocalFolder> subfolders_;
};

}  // namespace

LocalTree ReadLocalTree(const std::string& path, const std::string& name,
                        TreeOperation& operation) {
    return Reader(operation).Read(path, name);
}

}  // namespace hostkit
