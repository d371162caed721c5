// A local folder becomes a directory on the server.

#include <algorithm>
#include <map>

#include "hostkit/local_tree.h"
#include "hostkit/remote_tree.h"

namespace hostkit {

namespace {

bool HoldsLink(const Listing& entries, const std::string& name) {
    return std::any_of(entries.begin(), entries.end(), [&](const ListingEntry& entry) {
        return entry.IsLink() && NameOf(entry) == name;
    });
}

class TreeUpload {
  public:
    TreeUpload(Connection& connection, TreeOperation& operation)
        : connection_(connection), operation_(operation) {}

    TreeOutcome Run(const std::string& source, const std::string& target) {
        const LocalTree tree = ReadLocalTree(source, target, operation_);
        directories_.resize(tree.size());
        for (std::size_t index = 0; index < tree.size() && !MustEnd(); ++index) {
            if (Enter(tree, index)) {
                SendFiles(tree[index], directories_[index]);
            } else {
                operation_.entriesDone += tree[index].files.size();
            }
        }
        return cancelled_ ? TreeOutcome::cancelled : OutcomeOf(operation_);
    }

  private:
    /// What is known of the server's side of a folder.
    struct Directory {
        std::string path;  // as the server calls it; empty when it can't be used
        Listing entries;   // empty when it is new
        bool isNew = false;
    };

    bool MustEnd() const { return cancelled_ || hostkit::MustEnd(operation_); }

    /// Enters the directory of a folder, and makes it where it is missing. False when there is
    /// none: then nothing below it can be sent either.
    bool Enter(const LocalTree& tree, std::size_t index) {
        const LocalFolder& folder = tree[index];
        const bool isRoot = index == 0;
        if (!isRoot && !EnterParent(directories_[folder.parent].path)) {
            TellFailed(operation_, folder.name, "the directory that holds it is missing");
            return false;
        }
        const std::string name = folder.name.substr(isRoot ? 0 : folder.name.rfind('/') + 1);
        Directory& directory = directories_[index];
        if (!isRoot && HoldsLink(directories_[folder.parent].entries, name)) {
            TellFailed(operation_, folder.name, "the server has a link of this name");
            return false;
        }
        const bool mayBeThere = isRoot || !directories_[folder.parent].isNew;
        DirectoryResult entered;
        if (mayBeThere) {
            entered = hostkit::Enter(connection_, operation_, name);
        }
        if (!entered.Done() && !hostkit::MustEnd(operation_)) {
            const auto made = RunRepairing<CommandResult>(connection_, operation_, [&] {
                return connection_.MakeDirectory(ServerPath(name));
            });
            directory.isNew = made.Done();
            entered = hostkit::Enter(connection_, operation_, name);
            entered.text = made.Done() ? entered.text : made.text;
        }
        here_ = entered.Done() ? entered.directory : std::string();
        if (!entered.Done()) {
            TellFailed(operation_, folder.name, CauseOf(entered));
            return false;
        }
        directory.path = entered.directory;
        return directory.isNew || ListExisting(folder, directory);
    }

    bool EnterParent(const std::string& path) {
        if (path.empty()) {
            return false;
        }
        if (here_ != path && EnterAgain(connection_, operation_, path)) {
            here_.clear();
            return false;
        }
        here_ = path;
        return true;
    }

    bool ListExisting(const LocalFolder& folder, Directory& directory) {
        ListResult listing = ListWhole(connection_);
        if (!listing.done) {
            TellFailed(operation_, folder.name,
                       "it can't be listed, so a file might be replaced unseen: " + listing.text);
            directory.path.clear();
            return false;
        }
        directory.entries = std::move(listing.entries);
        return true;
    }

    using Names = std::map<std::string, ListingEntry, std::less<>>;

    void SendFiles(const LocalFolder& folder, const Directory& directory) {
        Names there;
        for (const ListingEntry& entry : directory.entries) {
            there.emplace(NameOf(entry), entry);
        }
        for (const LocalEntry& file : folder.files) {
            if (MustEnd()) {
                return;
            }
            const std::string name = JoinPath(folder.name, file.name);
            if (operation_.entry) {
                operation_.entry(name);
            }
            TakeFile(folder, file, name, directory.isNew, there);
        }
    }

    /// What the server has under a name. One that was not listed is asked about, except in a
    /// directory that is new.
    std::optional<ExistingFile> Look(const std::string& wanted, const std::string& name, u64 size,
                                     bool isNew, const Names& there) {
        ExistingFile existing = {"", name, 0, size, false};
        const auto entry = there.find(wanted);
        if (entry != there.end()) {
            const bool isBlocked = entry->second.IsDirectory() && !entry->second.IsLink();
            existing.obstacle = isBlocked ? "the server has a directory of this name" : "";
            existing.size = entry->second.size;
            return existing;
        }
        if (isNew || operation_.existing.AlwaysOverwrites()) {
            return std::nullopt;
        }
        switch (connection_.PresenceOf(wanted, true)) {
            case Presence::missing:
                return std::nullopt;
            case Presence::there:
                break;
            case Presence::unknown:
                existing.obstacle = "the server does not tell whether it is there";
                break;
        }
        return existing;
    }

    void TakeFile(const LocalFolder& folder, const LocalEntry& file, const std::string& name,
                  bool isNew, const Names& there) {
        const u64 moved = operation_.transfer.record.bytesDone;
        std::string target = file.name;
        std::string obstacle;
        const ExistingAction action =
            operation_.existing.Decide(target, [&](const std::string& wanted) {
                auto existing = Look(wanted, name, file.size, isNew, there);
                obstacle = existing ? existing->obstacle : "";
                return existing;
            });
        if (action == ExistingAction::cancel) {
            cancelled_ = true;
        } else if (!obstacle.empty()) {
            TellFailed(operation_, name, obstacle);
        } else if (action == ExistingAction::skip) {
            TellLeftOut(operation_, name, "it is on the server");
        } else {
            Send(JoinPath(folder.path, file.name), name, target);
        }
        ++operation_.entriesDone;
        operation_.transfer.record.bytesDone = moved + file.size;
    }

    void Send(const std::string& path, const std::string& name, const std::string& target) {
        const auto result = RunRepairing<TransferResult>(connection_, operation_, [&] {
            return connection_.Upload({path, ServerPath(target)}, Listing(), operation_.transfer);
        });
        if (!result.Done() && !(operation_.cancelled && operation_.cancelled())) {
            TellFailed(operation_, name, CauseOf(result));
        }
    }

    Connection& connection_;
    TreeOperation& operation_;
    std::vector<Directory> directories_;
    std::string here_;        // where the session stands, as the server calls it
    bool cancelled_ = false;  // by the answer to a question
};

}  // namespace

TreeOutcome UploadTree(Connection& connection, const std::string& source, const std::string& target,
                       TreeOperation& operation) {
    return TreeUpload(connection, operation).Run(source, target);
}

}  // namespace hostkit
