#include "hostkit/existing_files.h"

#include <string_view>
#include <utility>

namespace hostkit {

ExistingFilePolicy::ExistingFilePolicy(ExistingFunction ask, ExistingAction always)
    : ask_(std::move(ask)), always_(always) {}

ExistingAnswer ExistingFilePolicy::Decide(const ExistingFile& file) {
    if (always_ != ExistingAction::ask) {
        return {always_, true, {}};
    }
    if (!ask_) {
        return {ExistingAction::skip, true, {}};
    }
    const ExistingAnswer answer = ask_(file);
    const bool canStandForAll = answer.action == ExistingAction::overwrite ||
                                answer.action == ExistingAction::resume ||
                                answer.action == ExistingAction::skip;
    if (answer.forAll && canStandForAll) {
        always_ = answer.action;
    }
    return answer;
}

ExistingAction ExistingFilePolicy::Decide(std::string& target, const Look& look) {
    for (;;) {
        const std::optional<ExistingFile> existing = look(target);
        if (!existing) {
            return ExistingAction::overwrite;
        }
        if (!existing->obstacle.empty()) {
            return ExistingAction::skip;
        }
        const ExistingAnswer answer = Decide(*existing);
        if (answer.action != ExistingAction::rename) {
            return answer.action == ExistingAction::ask ? ExistingAction::cancel : answer.action;
        }
        if (IsSafeName(answer.newName)) {
            target = target.substr(0, target.rfind('/') + 1) + answer.newName;
        }
    }
}

bool IsSafeName(const std::string& name) {
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of(std::string_view("/\r\n\0", 4)) == name.npos;
}

}  // namespace hostkit
