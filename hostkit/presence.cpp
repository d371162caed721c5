// Whether a server has something that no listing shows.

#include <array>

#include "hostkit/connection_use.h"
#include "hostkit/remote_tree.h"
#include "hostkit/request_watch.h"

namespace hostkit {

namespace {

constexpr std::string_view notThere = "550";
/// A server that answers so does not know the command, whatever its argument.
constexpr std::array<std::string_view, 3> notKnown = {"500", "502", "504"};

/// Before a name that begins with a digit some servers take MDTM for a change of its date.
std::string AsArgument(const std::string& name) {
    const bool isNumber = !name.empty() && name[0] >= '0' && name[0] <= '9';
    return isNumber ? "./" + name : ServerPath(name);
}

bool IsListed(const Listing& entries, const std::string& name) {
    return std::ranges::any_of(entries,
                               [&](const ListingEntry& entry) { return NameOf(entry) == name; });
}

}  // namespace

std::string Connection::Ask(const std::string& line) {
    RequestWatch watch([this] { host_.Loop().Wake(); });
    if (!StartTypedLine(line)) {
        return {};
    }
    watch.Sent();
    host_.Loop().WaitUntil([&] { return watch.HasEnded(); });
    return LastReply();
}

/// By typed lines: the module's message goes on to delete what turns out to be a file or a link.
CommandResult Connection::RemoveEmptyDirectory(const std::string& name) {
    CommandResult result;
    std::string answer = Ask("RMD " + Named(name));
    if (answer.starts_with("500")) {
        answer = Ask("XRMD " + Named(name));
    }
    result.result = answer.starts_with('2') ? 0 : -1;
    if (!result.Done()) {
        ExplainFailure(result);
    }
    return result;
}

Presence Connection::PresenceOf(const std::string& name, bool isListed) {
    struct Question {
        const char* type;  // without which some servers tell nothing
        const char* verb;
        bool& isKnown;
    };
    bool isDoubtful = false;
    for (const Question& question :
         {Question{"", "MDTM ", knowsDates_}, Question{"TYPE I", "SIZE ", knowsSizes_}}) {
        if (!question.isKnown || (*question.type != 0 && !Ask(question.type).starts_with('2'))) {
            continue;
        }
        const std::string answer = Ask(question.verb + AsArgument(Named(name)));
        const std::string_view code = std::string_view(answer).substr(0, 3);
        if (answer.starts_with('2')) {
            return Presence::there;
        }
        if (code == notThere) {
            return Presence::missing;
        }
        question.isKnown = std::ranges::find(notKnown, code) == notKnown.end();
        if (answer.empty() || code == "421") {
            return Presence::unknown;
        }
        isDoubtful = isDoubtful || question.isKnown;
    }
    const Presence unlisted = isDoubtful ? Presence::unknown : Presence::missing;
    if (isListed) {
        return unlisted;
    }
    const ListResult whole = name.find('/') == name.npos ? ListHidden() : ListResult();
    if (!whole.done) {
        return Presence::unknown;
    }
    return IsListed(whole.entries, name) ? Presence::there : unlisted;
}

/// The session's directory with its hidden entries: not done unless the server takes the option.
/// One that takes it for a name lists nothing.
ListResult Connection::ListHidden() {
    InvalidateListing();
    ListResult whole = List(true);
    if (whole.done && whole.entries.Empty()) {
        InvalidateListing();
        const ListResult plain = List(false);
        whole.done = plain.done && plain.entries.Empty();
    }
    return whole;
}

}  // namespace hostkit
