#include "existing_question.h"

#include <cctype>

#include "failure.h"
#include "prompt.h"

namespace cli {

namespace {

using hostkit::ExistingAction;
using hostkit::ExistingAnswer;

char FirstLetter(const std::string& answer) {
    return answer.empty() ? '\0' : answer.front();
}

}  // namespace

ExistingAction ActionOf(ExistingFile existing) {
    switch (existing) {
        case ExistingFile::resume:
            return ExistingAction::resume;
        case ExistingFile::overwrite:
            return ExistingAction::overwrite;
        case ExistingFile::skip:
            return ExistingAction::skip;
        case ExistingFile::ask:
            break;
    }
    return ExistingAction::ask;
}

ExistingAction AskAboutFile(Status& status, const Watch& watch, const std::string& is,
                            const hostkit::ExistingFile& file) {
    const std::string question = is + (file.canResume ? ". Resume, overwrite or skip (r/o/s)? "
                                                      : ". Overwrite or skip (o/s)? ");
    while (const auto answer = AskLine(status, watch, question)) {
        switch (std::tolower(static_cast<unsigned char>(FirstLetter(*answer)))) {
            case 'r':
                if (file.canResume) {
                    return ExistingAction::resume;
                }
                break;
            case 'o':
                return ExistingAction::overwrite;
            case 's':
                return ExistingAction::skip;
            default:
                break;
        }
    }
    throw Failure(ExitStatus::failed,
                  watch.Ended() ? watch.Reason() : file.name + " was left alone");
}

bool MayReplaceThere(const Options& options, Status& status, const Watch& watch,
                     const std::string& is, const std::string& other,
                     const hostkit::ExistingFile& file) {
    ExistingAction action = ActionOf(options.existing);
    if (action == ExistingAction::ask && !CanAsk()) {
        throw Failure(ExitStatus::failed, is + "; --overwrite or --skip says what to do");
    }
    if (action == ExistingAction::ask) {
        action = AskAboutFile(status, watch, is + other, file);
    }
    return action == ExistingAction::overwrite;
}

ExistingAnswer AskAboutFileOfTree(Status& status, const Watch& watch,
                                  const hostkit::ExistingFile& file) {
    const std::string question = file.name + " is there with " + std::to_string(file.size) +
                                 " bytes, the source has " + std::to_string(file.sourceSize) +
                                 ". Overwrite, skip, " + (file.canResume ? "resume, " : "") +
                                 "rename or cancel (o/s/" + (file.canResume ? "r/" : "") +
                                 "n/c; O/S" + (file.canResume ? "/R" : "") + " for all)? ";
    while (const auto answer = AskLine(status, watch, question)) {
        const char letter = FirstLetter(*answer);
        const bool forAll = std::isupper(static_cast<unsigned char>(letter)) != 0;
        switch (std::tolower(static_cast<unsigned char>(letter))) {
            case 'o':
                return {ExistingAction::overwrite, forAll, {}};
            case 's':
                return {ExistingAction::skip, forAll, {}};
            case 'r':
                if (file.canResume) {
                    return {ExistingAction::resume, forAll, {}};
                }
                break;
            case 'n':
                if (const auto name = AskLine(status, watch, "New name: ")) {
                    return {ExistingAction::rename, false, *name};
                }
                break;
            case 'c':
                return {};
            default:
                break;
        }
    }
    return {};
}

}  // namespace cli
