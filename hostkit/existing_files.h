#pragma once
// What becomes of files that exist at the target of a copy: asked once for each, or once for all.

#include <functional>
#include <optional>
#include <string>

#include "hostkit/types.h"

namespace hostkit {

enum class ExistingAction {
    ask,
    overwrite,  // the target is made anew
    resume,     // goes on with a partial file; one that is complete stays, any other is made anew
    skip,
    rename,  // under another name
    cancel,  // ends the whole operation
};

/// Both sides of the question.
struct ExistingFile {
    std::string obstacle;    // why it can't be written to at all, else empty
    std::string name;        // of the target, for a person
    u64 size = 0;            // of the target
    u64 sourceSize = 0;      // 0 when unknown
    bool canResume = false;  // a download of which the target may be the beginning
};

struct ExistingAnswer {
    ExistingAction action = ExistingAction::cancel;
    bool forAll = false;  // overwrite, resume and skip: never asked again
    std::string newName;  // rename: the last component
};

/// Called on the thread of the operation. Must not answer `ask`.
using ExistingFunction = std::function<ExistingAnswer(const ExistingFile& file)>;

class ExistingFilePolicy {
  public:
    /// `always` is taken without a question unless it is `ask`. Without a function to ask files are
    /// skipped.
    explicit ExistingFilePolicy(ExistingFunction ask, ExistingAction always = ExistingAction::ask);

    ExistingAnswer Decide(const ExistingFile& file);

    /// Whether files are overwritten, whatever is there.
    bool AlwaysOverwrites() const { return always_ == ExistingAction::overwrite; }

    /// What is at a target, if there is something.
    using Look = std::function<std::optional<ExistingFile>(const std::string& target)>;

    /// Decides about a target, with the answer `overwrite` for one where nothing is, and under a
    /// new name as often as one is given: `target` is the last one then. An obstacle is a skip.
    ExistingAction Decide(std::string& target, const Look& look);

  private:
    ExistingFunction ask_;
    ExistingAction always_;
};

/// Whether a name may become a file in a folder, and may go to a server: not empty, not «.» or
/// «..», without '/', line end and NUL.
bool IsSafeName(const std::string& name);

}  // namespace hostkit
