#pragma once
// A server's tree, listed whole before anything is done with it.

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/connection.h"
#include "hostkit/listing.h"
#include "hostkit/trees.h"

namespace hostkit {

struct RemoteEntry {
    std::string name;
    u16 date = 0;
    u16 time = 0;
    u16 attributes = 0;
    u64 size = 0;
    bool isDirectory = false;  // one of the tree's, and no link

    bool IsLink() const { return (attributes & ListingEntry::linkBits) == ListingEntry::linkBits; }
};

struct RemoteDirectory {
    std::string path;  // as the server calls it
    std::string name;  // relative to the folder that holds the tree
    std::vector<RemoteEntry> entries;
};

/// Directories, each before those below it.
using RemoteTree = std::vector<RemoteDirectory>;

/// How to go on with a directory that can't be entered; the session stands in the one that holds
/// it. True when it may be tried once more.
using EnterHelp = std::function<bool(const RemoteEntry& entry)>;

/// Lists the tree below the directory `root`. What can't be entered or listed is told as failed.
/// Nothing when the root itself can't be entered, or after a cancel or the loss of the connection.
std::optional<RemoteTree> CollectTree(Connection& connection, const std::string& root,
                                      TreeOperation& operation, const EnterHelp& help = {});

/// Makes a directory of the tree the session's own again. The server's words when it can't, or when
/// it is not the one that was listed.
std::optional<std::string> EnterAgain(Connection& connection, TreeOperation& operation,
                                      const std::string& path);

/// Makes a directory the session's own, a name in the one where it stands, or a path.
DirectoryResult Enter(Connection& connection, TreeOperation& operation, const std::string& path);

/// Whether a directory lies below another one, by the names that the server gives. Where its paths
/// are of another kind nothing can be said against it.
bool LiesBelow(const std::string& path, const std::string& root);

/// All entries of the session's directory, hidden ones too where the server shows them.
ListResult ListWhole(Connection& connection);

/// Whether the operation must end here: cancelled, or the connection lost.
bool MustEnd(const TreeOperation& operation);
TreeOutcome OutcomeOf(const TreeOperation& operation);

/// Whether it is known why a transfer or command failed: by the server's word, or on this side.
bool HasAnswer(const TransferResult& result);
bool HasAnswer(const CommandResult& result);

/// Brings a connection that broke back to the directory that it stood in. False when it did not.
bool Repair(Connection& connection, TreeOperation& operation);

/// Runs an operation, and once more when the connection broke before the server had answered.
template <typename Result, typename Work>
Result RunRepairing(Connection& connection, TreeOperation& operation, const Work& work) {
    const Result result = work();
    return result.Done() || HasAnswer(result) || !Repair(connection, operation) ? result : work();
}

/// Tells what failed, and counts it.
void TellFailed(TreeOperation& operation, const std::string& path, const std::string& cause);
void TellLeftOut(TreeOperation& operation, const std::string& path, const std::string& why);

/// The cause of a failed transfer or command, for a person.
std::string CauseOf(const TransferResult& result);
std::string CauseOf(const CommandResult& result);

/// «folder/name».
std::string JoinPath(const std::string& folder, const std::string& name);

}  // namespace hostkit
