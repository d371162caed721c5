#include "hostkit/failure_cause.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "hostkit/console.h"

namespace hostkit {

namespace {

constexpr std::size_t codeLength = 3;

/// Remarks of the module that tell of no failure.
constexpr std::string_view reports[] = {
    "Connecting to ", "Connected to ", "Already connected",
    "Transmitted ",   "------->",      "Not the same file!",
};
constexpr std::string_view connecting = "Connecting to ";
constexpr std::string_view connected = "Connected to ";
constexpr std::string_view unconnected = "Can't connect to ";
constexpr std::string_view connectionFailed = "Connection to ";
constexpr std::string_view hiddenPassword = "***";

bool IsReport(std::string_view line) {
    const auto begins = [&](std::string_view report) { return line.starts_with(report); };
    return std::any_of(std::begin(reports), std::end(reports), begins) ||
           line.find(" bytes received in ") != line.npos;
}

/// The verb of a command as the log shows it, empty for any other line.
std::string VerbOf(std::string_view line) {
    if (line == hiddenPassword) {
        return "PASS";
    }
    const std::string_view verb = line.substr(0, line.find(' '));
    const bool fits = verb.size() >= 3 && verb.size() <= 4 &&
                      std::all_of(verb.begin(), verb.end(),
                                  [](char letter) { return letter >= 'A' && letter <= 'Z'; });
    return fits ? std::string(verb) : std::string();
}

bool IsRefusal(std::string_view reply) {
    return reply.starts_with('4') || reply.starts_with('5');
}

}  // namespace

void FailureCause::Take(const std::string& line) {
    const std::string verb = VerbOf(line);
    const bool beginsAnew = line.starts_with(connecting);
    if (!openCode_.empty() && !line.starts_with(openCode_) && !beginsAnew) {
        return;  // text within a reply
    }
    if (IsReply(line)) {
        TakeReply(line);
    } else if (!verb.empty()) {
        TakeCommand(verb);
    } else {
        TakeRemark(line);
    }
}

void FailureCause::TakeCommand(const std::string& verb) {
    // What can't be removed as a directory is tried as a file; the first refusal counts.
    keepsRefusal_ = verb == "DELE" && verb_.ends_with("RMD") && !refusal_.empty();
    if (!keepsRefusal_) {
        refusal_.clear();
    }
    verb_ = verb;
    answer_ = Answer::none;
    reply_.clear();
}

void FailureCause::TakeReply(const std::string& line) {
    const bool goesOn = line.size() > codeLength && line[codeLength] == '-';
    openCode_ = goesOn ? line.substr(0, codeLength) : "";
    if (goesOn) {
        return;
    }
    const bool connectionEnds = line.starts_with("421");
    answer_ = line.starts_with('1') ? Answer::preliminary
              : connectionEnds      ? Answer::none
                                    : Answer::final;
    reply_ = line;
    if (IsRefusal(line) && !keepsRefusal_) {
        refusal_ = line;
    }
}

void FailureCause::TakeRemark(const std::string& line) {
    if (line.starts_with(connecting)) {
        triedToConnect_ = true;
        isOldRemark_ = true;
        openCode_.clear();
    }
    if (line.starts_with(connected)) {
        remark_.clear();  // what was lost has come back
    }
    if (IsReport(line)) {
        return;
    }
    if (line.starts_with(unconnected)) {
        unconnected_ = line.substr(0, line.find_last_not_of('.') + 1);
        remark_ = line;
    } else if (!unconnected_.empty()) {
        remark_ = std::exchange(unconnected_, {}) + ": " + line;
        isOldRemark_ = false;
    } else if (line.starts_with(connectionFailed) && line.ends_with(" failed.")) {
        // The last line of several; alone it is that of a host without an address.
        remark_ = !remark_.empty() || triedToConnect_ ? remark_ : "the host name is not known";
    } else if (remark_.empty() || isOldRemark_) {
        remark_ = line;
        isOldRemark_ = false;
    }
}

std::string FailureCause::Text() const {
    if (!refusal_.empty()) {
        return refusal_;
    }
    if (!remark_.empty()) {
        return remark_;
    }
    const std::string to = verb_.empty() ? "" : " to " + verb_;
    if (!openCode_.empty()) {
        return "the answer" + to + " did not end";
    }
    if (answer_ == Answer::final) {
        return "unexpected answer" + to + ": " + reply_;
    }
    if (verb_.empty() && !triedToConnect_) {
        return "";
    }
    return (answer_ == Answer::preliminary ? "no final answer" : "no answer") + to;
}

}  // namespace hostkit
