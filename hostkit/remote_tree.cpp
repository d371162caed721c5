#include "hostkit/remote_tree.h"

#include <utility>

namespace hostkit {

namespace {

constexpr std::size_t deepest = 512;
constexpr std::size_t noParent = static_cast<std::size_t>(-1);

/// Walks a tree without recursion: what is still to be entered stands on a stack, so that each
/// directory comes before those that it holds, and all of these before the next beside it.
class Collector {
  public:
    Collector(Connection& connection, TreeOperation& operation, const EnterHelp& help)
        : connection_(connection), operation_(operation), help_(help) {}

    std::optional<RemoteTree> Run(const std::string& root) {
        const DirectoryResult entered = Enter(connection_, operation_, root);
        if (!entered.Done()) {
            TellFailed(operation_, root, CauseOf(entered));
            return std::nullopt;
        }
        const std::string name = root.substr(root.find_last_of('/') + 1);
        Add({entered.directory, name.empty() ? root : name, {}}, noParent);
        while (!pending_.empty() && !MustEnd(operation_)) {
            const Pending next = std::move(pending_.back());
            pending_.pop_back();
            EnterChild(next);
        }
        if (MustEnd(operation_)) {
            return std::nullopt;
        }
        return std::move(tree_);
    }

  private:
    struct Pending {
        std::size_t parent;
        RemoteEntry entry;
    };

    /// The directory that the session stands in becomes one of the tree.
    void Add(RemoteDirectory directory, std::size_t parent) {
        const std::size_t index = tree_.size();
        here_ = index;
        const ListResult listing = ListWhole(connection_);
        if (!listing.done) {
            TellFailed(operation_, directory.name, CauseOf(CommandResult{-1, listing.text, false}));
        }
        tree_.push_back(std::move(directory));
        parents_.push_back(parent);
        depths_.push_back(parent == noParent ? 0 : depths_[parent] + 1);
        for (const ListingEntry& listed : listing.entries) {
            TakeEntry(index, listed);
        }
        const std::vector<RemoteEntry>& entries = tree_[index].entries;
        for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
            if (entry->isDirectory) {
                pending_.push_back({index, *entry});
            }
        }
    }

    void TakeEntry(std::size_t index, const ListingEntry& listed) {
        RemoteEntry entry = {std::string(NameOf(listed)), listed.date, listed.time,
                             listed.attributes, listed.size};
        if (entry.name == "." || entry.name == "..") {
            return;
        }
        if (!IsSafeName(entry.name)) {
            TellFailed(operation_, JoinPath(tree_[index].name, entry.name),
                       "no entry can have this name");
            return;
        }
        entry.isDirectory = listed.IsDirectory() && !listed.IsLink();
        tree_[index].entries.push_back(std::move(entry));
    }

    void EnterChild(const Pending& child) {
        const std::string name = JoinPath(tree_[child.parent].name, child.entry.name);
        if (const auto refusal = RefusalOf(child)) {
            TellFailed(operation_, name, *refusal);
            return;
        }
        if (here_ != child.parent) {
            if (const auto words = EnterAgain(connection_, operation_, tree_[child.parent].path)) {
                TellFailed(operation_, name, *words);
                return;
            }
            here_ = child.parent;
        }
        DirectoryResult entered = Enter(connection_, operation_, child.entry.name);
        if (!entered.Done() && help_ && help_(child.entry)) {
            entered = Enter(connection_, operation_, child.entry.name);
        }
        if (!entered.Done()) {
            TellFailed(operation_, name, CauseOf(entered));
            return;
        }
        here_ = noParent;
        if (IsOnPath(child.parent, entered.directory)) {
            TellLeftOut(operation_, name, "it is a directory that holds it");
        } else if (!LiesBelow(entered.directory, tree_.front().path)) {
            TellLeftOut(operation_, name, "it leads out of the tree, to " + entered.directory);
        } else {
            Add({entered.directory, name, {}}, child.parent);
        }
    }

    std::optional<std::string> RefusalOf(const Pending& child) const {
        if (depths_[child.parent] + 1 >= deepest) {
            return "more than 512 directories deep";
        }
        return std::nullopt;
    }

    bool IsOnPath(std::size_t directory, const std::string& path) const {
        for (; directory != noParent; directory = parents_[directory]) {
            if (tree_[directory].path == path) {
                return true;
            }
        }
        return false;
    }

    Connection& connection_;
    TreeOperation& operation_;
    const EnterHelp& help_;
    RemoteTree tree_;
    std::vector<std::size_t> parents_;
    std::vector<std::size_t> depths_;
    std::vector<Pending> pending_;
    std::size_t here_ = noParent;  // the directory that the session stands in
};

}  // namespace

std::optional<RemoteTree> CollectTree(Connection& connection, const std::string& root,
                                      TreeOperation& operation, const EnterHelp& help) {
    return Collector(connection, operation, help).Run(root);
}

DirectoryResult Enter(Connection& connection, TreeOperation& operation, const std::string& path) {
    return RunRepairing<DirectoryResult>(
        connection, operation, [&] { return connection.ChangeDirectory(ServerPath(path)); });
}

std::optional<std::string> EnterAgain(Connection& connection, TreeOperation& operation,
                                      const std::string& path) {
    const DirectoryResult entered = Enter(connection, operation, path);
    if (!entered.Done()) {
        return CauseOf(entered);
    }
    if (entered.directory != path) {
        return path + " has become " + entered.directory;
    }
    return std::nullopt;
}

bool LiesBelow(const std::string& path, const std::string& root) {
    return !root.starts_with('/') || path.starts_with(JoinPath(root, ""));
}

ListResult ListWhole(Connection& connection) {
    connection.InvalidateListing();
    ListResult whole = connection.List(true);
    if (whole.done && !whole.entries.Empty()) {
        return whole;
    }
    // Not every server takes an option there.
    connection.InvalidateListing();
    ListResult plain = connection.List(false);
    return plain.done ? std::move(plain) : std::move(whole);
}

bool MustEnd(const TreeOperation& operation) {
    return operation.lost || (operation.cancelled && operation.cancelled());
}

TreeOutcome OutcomeOf(const TreeOperation& operation) {
    if (operation.cancelled && operation.cancelled()) {
        return TreeOutcome::cancelled;
    }
    if (operation.lost) {
        return TreeOutcome::lost;
    }
    return operation.failures == 0 ? TreeOutcome::done : TreeOutcome::failures;
}

bool HasAnswer(const TransferResult& result) {
    return result.outcome != TransferOutcome::failed || result.localFailure || result.answered;
}

bool HasAnswer(const CommandResult& result) {
    return result.Done() || result.answered;
}

bool Repair(Connection& connection, TreeOperation& operation) {
    constexpr int attempts = 3;  // a connection that was closed in order is only noticed by use
    const std::string directory = connection.Directory();
    DirectoryResult back;
    for (int attempt = 0; attempt < attempts && !MustEnd(operation); ++attempt) {
        back = connection.ChangeDirectory(ServerPath(directory));
        if (HasAnswer(back)) {
            return back.Done() && back.directory == directory;
        }
    }
    operation.lost = true;
    return false;
}

void TellFailed(TreeOperation& operation, const std::string& path, const std::string& cause) {
    ++operation.failures;
    if (operation.failed) {
        operation.failed(path, cause);
    }
}

void TellLeftOut(TreeOperation& operation, const std::string& path, const std::string& why) {
    if (operation.leftOut) {
        operation.leftOut(path, why);
    }
}

std::string CauseOf(const TransferResult& result) {
    if (result.localFailure) {
        return result.localFailure->Text();
    }
    return result.text.empty() ? "the transfer broke off" : result.text;
}

std::string CauseOf(const CommandResult& result) {
    return result.text.empty() ? "the connection was lost" : result.text;
}

std::string JoinPath(const std::string& folder, const std::string& name) {
    return folder.empty() || folder.ends_with('/') ? folder + name : folder + "/" + name;
}

std::string ServerPath(const std::string& path) {
    return path.starts_with(' ') || path.starts_with('~') ? "./" + path : path;
}

}  // namespace hostkit
