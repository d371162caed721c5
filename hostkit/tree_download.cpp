// A server's directory becomes a local folder.

#include <optional>
#include <system_error>

#include "hostkit/local_path.h"
#include "hostkit/remote_tree.h"

namespace hostkit {

namespace {

struct LocalState {
    bool exists = false;
    bool isFile = false;
    bool isLink = false;
    u64 size = 0;
    u16 date = 0;
    u16 time = 0;
};

LocalState StateOf(const std::string& path) {
    LocalState state;
    struct stat status;
    if (LookAtPath(path, status) != 0) {
        return state;
    }
    state.exists = true;
    state.isFile = S_ISREG(status.st_mode);
    state.isLink = S_ISLNK(status.st_mode);
    state.size = static_cast<u64>(status.st_size);
    ToDosTime(status.st_mtime, state.date, state.time);
    return state;
}

/// Why nothing can be written to what stands under a path, empty when it can.
std::string ObstacleIn(const LocalState& local) {
    return local.isLink                    ? "a link, which is not followed"
           : local.exists && !local.isFile ? "no regular file"
                                           : "";
}

/// Whether a file is one that was downloaded whole before.
bool IsComplete(const LocalState& local, const RemoteEntry& remote) {
    return remote.size != 0 && local.size == remote.size && local.date == remote.date &&
           local.time == remote.time;
}

/// The local folder of a directory: the root's bears the target's name, whatever its own is.
std::string FolderOf(const RemoteDirectory& directory, const RemoteDirectory& root,
                     const std::string& target) {
    return &directory == &root
               ? target
               : JoinPath(target, directory.name.substr(JoinPath(root.name, "").size()));
}

class TreeDownload {
  public:
    TreeDownload(Connection& connection, TreeOperation& operation)
        : connection_(connection), operation_(operation) {}

    TreeOutcome Run(const std::string& source, const std::string& target) {
        const auto tree = CollectTree(connection_, source, operation_);
        if (tree) {
            Count(*tree);
            TakeTree(*tree, target);
        }
        return cancelled_ ? TreeOutcome::cancelled : OutcomeOf(operation_);
    }

  private:
    void Count(const RemoteTree& tree) {
        for (const RemoteDirectory& directory : tree) {
            for (const RemoteEntry& entry : directory.entries) {
                if (!entry.isDirectory) {
                    ++operation_.entriesTotal;
                    operation_.transfer.record.bytesTotal += SizeOf(entry);
                }
            }
        }
    }

    /// 0 when unknown: a link's numbers are its own.
    u64 SizeOf(const RemoteEntry& entry) const {
        return operation_.listsBytes && !entry.IsLink() ? entry.size : 0;
    }

    bool MustEnd() const { return cancelled_ || hostkit::MustEnd(operation_); }

    /// The target may lead through links, what is below it may not.
    void TakeTree(const RemoteTree& tree, const std::string& target) {
        if (!MakeOrTell(tree.front(), target)) {
            return;
        }
        const FolderBounds bounds(target);
        if (bounds.Error() != 0) {
            TellNoFolder(tree.front(), target, bounds.Error());
            return;
        }
        std::string refused;
        for (const RemoteDirectory& directory : tree) {
            if (MustEnd()) {
                return;
            }
            if (!refused.empty() && directory.name.starts_with(refused)) {
                continue;  // told with the one that holds it
            }
            const std::string folder = FolderOf(directory, tree.front(), target);
            if (&directory == &tree.front() || MakeOrTell(directory, folder)) {
                TakeDirectory(directory, folder);
            } else {
                refused = JoinPath(directory.name, "");
            }
        }
    }

    bool MakeOrTell(const RemoteDirectory& directory, const std::string& folder) {
        const int code = MakeFolder(folder);
        if (code != 0) {
            TellNoFolder(directory, folder, code);
        }
        return code == 0;
    }

    void TellNoFolder(const RemoteDirectory& directory, const std::string& folder, int code) {
        const LocalState local = StateOf(folder);
        TellFailed(operation_, directory.name,
                   folder + (local.isLink   ? " is a link, which is not followed"
                             : local.exists ? " is no folder"
                                            : ": " + std::generic_category().message(code)));
    }

    void TakeDirectory(const RemoteDirectory& directory, const std::string& folder) {
        bool entered = false;
        for (const RemoteEntry& entry : directory.entries) {
            if (MustEnd()) {
                return;
            }
            if (entry.isDirectory) {
                continue;
            }
            if (!entered) {
                if (const auto words = EnterAgain(connection_, operation_, directory.path)) {
                    TellFailed(operation_, directory.name, *words);
                    return;
                }
                entered = true;
            }
            TakeFile(entry, JoinPath(directory.name, entry.name), JoinPath(folder, entry.name));
        }
    }

    void TakeFile(const RemoteEntry& entry, const std::string& name, std::string target) {
        if (operation_.entry) {
            operation_.entry(name);
        }
        const u64 moved = operation_.transfer.record.bytesDone;
        LocalState local;
        const ExistingAction action =
            operation_.existing.Decide(target, [&](const std::string& path) {
                local = StateOf(path);
                return QuestionAbout(local, path, entry);
            });
        if (action == ExistingAction::cancel) {
            cancelled_ = true;
        } else if (const std::string obstacle = ObstacleIn(local); !obstacle.empty()) {
            TellFailed(operation_, name, target + " is " + obstacle);
        } else if (action == ExistingAction::skip) {
            TellLeftOut(operation_, name, target + " is there");
        } else if (action == ExistingAction::resume && IsComplete(local, entry)) {
            TellLeftOut(operation_, name, "it is complete");
        } else {
            if (const std::string objection = ObjectionToResume(local.size, SizeOf(entry));
                action == ExistingAction::resume && !objection.empty() && operation_.noted) {
                operation_.noted(name, objection);
            }
            // A size of 0 says that nothing is to be resumed.
            const bool isNew = !local.exists || action == ExistingAction::resume;
            Fetch(entry, name, target, isNew ? SizeOf(entry) : 0);
        }
        ++operation_.entriesDone;
        // Whatever was moved or left out, this file is dealt with.
        operation_.transfer.record.bytesDone = moved + SizeOf(entry);
    }

    std::optional<ExistingFile> QuestionAbout(const LocalState& local, const std::string& path,
                                              const RemoteEntry& entry) const {
        if (!local.exists) {
            return std::nullopt;
        }
        const bool canResume = CanResume(local.size, SizeOf(entry));
        return ExistingFile{ObstacleIn(local), path, local.size, SizeOf(entry), canResume};
    }

    void Fetch(const RemoteEntry& entry, const std::string& name, const std::string& target,
               u64 statedSize) {
        DownloadRequest request = {ServerPath(entry.name), target, statedSize, 0, 0};
        if (!entry.IsLink()) {
            request.date = entry.date;
            request.time = entry.time;
        }
        const auto result = RunRepairing<TransferResult>(connection_, operation_, [&] {
            return connection_.Download(request, operation_.transfer);
        });
        if (operation_.cancelled && operation_.cancelled()) {
            return;
        }
        if (result.Done()) {
            CompareSizes(entry, name, target);
        } else if (entry.IsLink() && result.text.starts_with("550")) {
            TellLeftOut(operation_, name, "a link to no file");
        } else {
            TellFailed(operation_, name,
                       result.outcome == TransferOutcome::leftOut
                           ? target + " has appeared meanwhile"
                           : CauseOf(result));
        }
    }

    /// Only a file that is too short is one: it may have grown since it was listed.
    void CompareSizes(const RemoteEntry& entry, const std::string& name,
                      const std::string& target) {
        const u64 arrived = StateOf(target).size;
        if (arrived < SizeOf(entry)) {
            TellFailed(operation_, name,
                       std::to_string(arrived) + " bytes have come, " + std::to_string(entry.size) +
                           " were listed");
        }
    }

    Connection& connection_;
    TreeOperation& operation_;
    bool cancelled_ = false;  // by the answer to a question
};

}  // namespace

TreeOutcome DownloadTree(Connection& connection, const std::string& source,
                         const std::string& target, TreeOperation& operation) {
    // What is there has been asked about already.
    operation.transfer.confirm = [](const quennet::TransferItem&, u32) {
        return ConfirmAnswer::goOn;
    };
    return TreeDownload(connection, operation).Run(source, target);
}

}  // namespace hostkit
