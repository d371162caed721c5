#pragma once
// What a search passes over without a word, read off the conversation with the server.

#include <cstddef>
#include <string>

#include "hostkit/failure_cause.h"

namespace cli {

class Omissions {
  public:
    /// Takes a line of the console.
    void TakeLine(const std::string& line);

    /// A command was left without a reply, and not sent again.
    bool AnyUnanswered() const { return anyUnanswered_; }

    /// What was left out because its path has more than 519 bytes, which a search has no room for;
    /// empty for nothing.
    std::string TooLong() const;

    /// Throws Failure when directories could not be listed, or were left out.
    void Check() const;

  private:
    void TakeCommand(const std::string& line);
    void TakeReply(const std::string& line);
    void EndListing(bool listed, const std::string& words);
    void NoteUnlisted(const std::string& words);

    bool isOpen_ = false;         // a command without a reply
    bool awaitsListing_ = false;  // the data connection for one is being made
    bool isListing_ = false;      // a listing without its end
    bool isUnlisted_ = false;     // the directory entered last has failed, so far
    bool anyUnanswered_ = false;
    std::size_t unlisted_ = 0;  // directories before that
    std::size_t tooLong_ = 0;
    std::string words_;  // of the first that was not listed
    hostkit::FailureCause cause_;
};

}  // namespace cli
