#pragma once
// Operations on whole trees, through one connection. Walking is the host's work: the module sees
// one entry at a time.
//
//     collect the tree  ->  totals are known  ->  work through it, directory by directory
//
// A link is never walked into, nor a directory that the server places outside the tree's own root
// or that is on the path already. What fails is told and the rest goes on, until the connection is
// lost or the operation is cancelled.
//
// Like the connection's own operations these block, and run on a job's thread. A host that cancels
// also aborts the connection, until the operation has returned.

#include <functional>
#include <optional>
#include <string>

#include "hostkit/connection.h"
#include "hostkit/existing_files.h"
#include "hostkit/masks.h"
#include "hostkit/transfer.h"

namespace hostkit {

/// What a host gets to know of an operation on a tree, and what it decides. All functions may be
/// empty; they are called on the operation's thread.
struct TreeOperation {
    /// Progress of the whole: its record counts the bytes of all files, `bytesTotal` is the sum of
    /// those that are known.
    TransferOperation transfer;

    /// Work on an entry begins. The path is relative to the folder that holds the tree.
    std::function<void(const std::string& path)> entry;
    std::function<void(const std::string& path, const std::string& cause)> failed;
    /// An entry was left out on purpose.
    std::function<void(const std::string& path, const std::string& why)> leftOut;
    /// Something that a person should know of an entry that is worked on all the same.
    std::function<void(const std::string& path, const std::string& what)> noted;
    std::function<bool()> cancelled;

    ExistingFilePolicy existing{{}};

    /// Sizes that the server lists count bytes.
    bool listsBytes = true;

    // Counts, which other threads may read.
    std::atomic<u64> entriesTotal = 0;  // of files; of all entries where all are worked on
    std::atomic<u64> entriesDone = 0;   // with those that failed
    std::atomic<u64> failures = 0;

    bool lost = false;  // the connection broke, and did not come back
};

enum class TreeOutcome {
    done,       // all that was not left out
    failures,   // what failed has been told
    cancelled,  // by the host
    lost,       // the connection; told as a failure
};

/// Downloads the directory `source`, a name in the session's directory or a path, as the local
/// folder `target`, which is made if it is not there; the folder that holds it must be there. Links
/// lead to `target` at most: what would be written through one below it has failed. Dates are those
/// of the listing.
TreeOutcome DownloadTree(Connection& connection, const std::string& source,
                         const std::string& target, TreeOperation& operation);

/// Uploads the local folder `source` as the directory `target` of the session's directory. A link
/// to a file goes up as a file.
TreeOutcome UploadTree(Connection& connection, const std::string& source, const std::string& target,
                       TreeOperation& operation);

/// Deletes a file, a link or a whole directory by its name in the session's directory.
TreeOutcome RemoveTree(Connection& connection, const std::string& name, TreeOperation& operation);

/// Attribute bits to give and to take away.
struct PermissionChange {
    u16 set = 0;
    u16 clear = 0;
    bool recursive = false;  // a directory with all that it holds, but no link

    /// Entries that do not pass it keep their permissions; a directory is walked all the same.
    std::optional<FilterRecord> filter = std::nullopt;
};

/// Changes the permissions of a name in the session's directory. What is in a directory comes
/// before the directory itself, unless it can't be entered before.
TreeOutcome ChangeTreePermissions(Connection& connection, const std::string& name,
                                  const PermissionChange& change, TreeOperation& operation);

/// A path as the server is to be told: one that begins with a blank or a tilde, which servers drop
/// or take for a home directory, gets «./» in front.
std::string ServerPath(const std::string& path);

}  // namespace hostkit
