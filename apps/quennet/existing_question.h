#pragma once
// What a person wants done with a file that exists at the target.

#include <string>

#include "hostkit/existing_files.h"
#include "options.h"
#include "status.h"
#include "watch.h"

namespace cli {

/// What the options say, `ask` when they say nothing.
hostkit::ExistingAction ActionOf(ExistingFile existing);

/// Asks about one file: overwrite, skip, and resume where that is possible. Throws a Failure when
/// there is no answer. `is` says what is there: «x is there with 12 bytes, the server's file has
/// 34».
hostkit::ExistingAction AskAboutFile(Status& status, const Watch& watch, const std::string& is,
                                     const hostkit::ExistingFile& file);

/// Whether a file that a server has may be replaced, as the options say or the person at the
/// terminal. `is` says what is there, `other` what the new one is. Throws a Failure without an
/// answer.
bool MayReplaceThere(const Options& options, Status& status, const Watch& watch,
                     const std::string& is, const std::string& other,
                     const hostkit::ExistingFile& file);

/// Asks about one file of many: also for all, under another name, and for the end of the whole.
/// Without an answer it is the end.
hostkit::ExistingAnswer AskAboutFileOfTree(Status& status, const Watch& watch,
                                           const hostkit::ExistingFile& file);

}  // namespace cli
