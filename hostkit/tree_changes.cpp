// Whole trees deleted on the server, and changed in their permissions.
//
// Both work through the directories from the last to the first: what a directory holds is dealt
// with before the directory itself, which is an entry of the one above it.

#include <algorithm>
#include <functional>

#include "hostkit/remote_tree.h"

namespace hostkit {

namespace {

/// What is done with each entry of the session's directory. It tells what fails.
using Change = std::function<void(const RemoteEntry& entry, const std::string& name)>;

/// Does it with each entry of the directories, and counts.
class TreeChange {
  public:
    TreeChange(Connection& connection, TreeOperation& operation, Change change)
        : connection_(connection), operation_(operation), change_(std::move(change)) {}

    /// `root` is the tree's entry in the directory in which the session stands.
    TreeOutcome Run(const RemoteEntry& root, const EnterHelp& help) {
        const std::string start = connection_.Directory();
        if (root.isDirectory) {
            const auto tree = CollectTree(connection_, root.name, operation_, help);
            if (!tree) {
                return OutcomeOf(operation_);
            }
            // A link that the listing does not show as one is still no directory of this tree.
            if (LiesBelow(tree->front().path, start)) {
                TakeDirectories(*tree);
            }
        }
        ++operation_.entriesTotal;
        if (MustEnd(operation_)) {
            return OutcomeOf(operation_);
        }
        if (root.isDirectory) {
            if (const auto words = EnterAgain(connection_, operation_, start)) {
                TellFailed(operation_, root.name, *words);
                return OutcomeOf(operation_);
            }
        }
        TakeEntry(root, root.name);
        return OutcomeOf(operation_);
    }

  private:
    void TakeDirectories(const RemoteTree& tree) {
        for (const RemoteDirectory& directory : tree) {
            operation_.entriesTotal += directory.entries.size();
        }
        for (auto directory = tree.rbegin(); directory != tree.rend(); ++directory) {
            TakeDirectory(*directory);
        }
    }

    void TakeDirectory(const RemoteDirectory& directory) {
        if (directory.entries.empty() || MustEnd(operation_)) {
            return;
        }
        if (const auto words = EnterAgain(connection_, operation_, directory.path)) {
            TellFailed(operation_, directory.name, *words);
            return;
        }
        for (const RemoteEntry& entry : directory.entries) {
            if (MustEnd(operation_)) {
                return;
            }
            TakeEntry(entry, JoinPath(directory.name, entry.name));
        }
    }

    void TakeEntry(const RemoteEntry& entry, const std::string& name) {
        if (operation_.entry) {
            operation_.entry(name);
        }
        change_(entry, name);
        ++operation_.entriesDone;
    }

    Connection& connection_;
    TreeOperation& operation_;
    const Change change_;
};

/// The entry of a name in the session's directory; nothing when it isn't there, which is told.
std::optional<RemoteEntry> FindEntry(Connection& connection, const std::string& name,
                                     TreeOperation& operation) {
    const ListResult listing = ListWhole(connection);
    const auto found = std::find_if(listing.entries.begin(), listing.entries.end(),
                                    [&](const ListingEntry& each) { return NameOf(each) == name; });
    if (found == listing.entries.end()) {
        TellFailed(operation, name,
                   listing.done ? "there is no such entry"
                                : CauseOf(CommandResult{-1, listing.text, false}));
        return std::nullopt;
    }
    const ListingEntry entry = *found;
    return RemoteEntry{name,       entry.date,
                       entry.time, entry.attributes,
                       entry.size, entry.IsDirectory() && !entry.IsLink()};
}

bool Judge(const CommandResult& result, const std::string& name, TreeOperation& operation) {
    if (!result.Done() && !(operation.cancelled && operation.cancelled())) {
        TellFailed(operation, name, CauseOf(result));
    }
    return result.Done();
}

class PermissionSetter {
  public:
    PermissionSetter(Connection& connection, TreeOperation& operation,
                     const PermissionChange& change)
        : connection_(connection),
          operation_(operation),
          recursive_(change.recursive),
          filter_(change.filter) {
        constexpr u32 valid = quennet::attributePermissions;
        operation_.transfer.record.setMask = change.set | valid;
        operation_.transfer.record.clearMask = change.clear | valid;
    }

    /// False when the entry has not got what was wanted.
    bool Set(const RemoteEntry& entry, const std::string& name) {
        if (filter_ &&
            !PassesFilter(*filter_, entry.name, entry.attributes, entry.date, entry.size)) {
            return false;
        }
        if (recursive_ && entry.IsLink()) {
            TellLeftOut(operation_, name, "a link");
            return true;
        }
        quennet::TransferRecord& record = operation_.transfer.record;
        const std::string path = ServerPath(entry.name);
        if (path.size() >= sizeof record.currentName) {
            TellFailed(operation_, name, "the name is longer than 259 characters");
            return false;
        }
        if (!KnowsAll() && (entry.attributes & quennet::attributePermissions) == 0) {
            TellFailed(operation_, name, "the server's listing tells no permissions");
            return false;
        }
        std::copy_n(path.c_str(), path.size() + 1, record.currentName);
        const auto result = RunRepairing<CommandResult>(connection_, operation_, [&] {
            return connection_.ChangePermissions(record, entry.attributes);
        });
        return Judge(result, name, operation_);
    }

  private:
    /// Whether the change says of each permission what it is to be.
    bool KnowsAll() const {
        const quennet::TransferRecord& record = operation_.transfer.record;
        return ((record.setMask | record.clearMask) & quennet::permissionBits) ==
               quennet::permissionBits;
    }

    Connection& connection_;
    TreeOperation& operation_;
    const bool recursive_;
    const std::optional<FilterRecord> filter_;
};

}  // namespace

TreeOutcome RemoveTree(Connection& connection, const std::string& name, TreeOperation& operation) {
    const auto root = FindEntry(connection, name, operation);
    if (!root) {
        return OutcomeOf(operation);
    }
    const Change remove = [&](const RemoteEntry& entry, const std::string& shown) {
        const std::string path = ServerPath(entry.name);
        const auto result = RunRepairing<CommandResult>(connection, operation, [&] {
            return entry.isDirectory ? connection.RemoveDirectory(path)
                                     : connection.DeleteFile(path);
        });
        Judge(result, shown, operation);
    };
    return TreeChange(connection, operation, remove).Run(*root, {});
}

TreeOutcome ChangeTreePermissions(Connection& connection, const std::string& name,
                                  const PermissionChange& change, TreeOperation& operation) {
    auto root = FindEntry(connection, name, operation);
    if (!root) {
        return OutcomeOf(operation);
    }
    root->isDirectory = root->isDirectory && change.recursive;
    PermissionSetter setter(connection, operation, change);
    const Change set = [&](const RemoteEntry& entry, const std::string& shown) {
        setter.Set(entry, shown);
    };
    return TreeChange(connection, operation, set).Run(*root, [&](const RemoteEntry& entry) {
        return setter.Set(entry, entry.name);
    });
}

}  // namespace hostkit
