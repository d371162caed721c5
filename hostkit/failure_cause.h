#pragma once
// Why a step of a connection failed, from the lines of its log.
//
// The module tells a host that a message failed, and often leaves in its buffer what came last: a
// reply of success, when it was the data connection that could not be made. The log has all that
// happened: commands as they go out, replies, texts of socket errors and the module's own remarks.
// A cause is a refusal (4xx, 5xx) or such a text; what the server agreed to never is.

#include <string>

namespace hostkit {

class FailureCause {
  public:
    /// A step begins.
    void Begin() { *this = {}; }

    /// A line of the log.
    void Take(const std::string& line);

    /// The cause, should the step have failed; empty when the log tells nothing.
    std::string Text() const;

    /// The last reply, whatever it says; empty without one.
    const std::string& LastReply() const { return reply_; }

    /// The last command has its final reply, so the connection was not lost over it.
    bool Answered() const { return answer_ == Answer::final; }

  private:
    enum class Answer { none, preliminary, final };

    void TakeCommand(const std::string& verb);
    void TakeReply(const std::string& line);
    void TakeRemark(const std::string& line);

    std::string verb_;      // of the last command
    std::string openCode_;  // of a reply whose last line has not come
    Answer answer_ = Answer::none;
    std::string reply_;    // the last one
    std::string refusal_;  // of the last command
    bool keepsRefusal_ = false;
    std::string remark_;       // of the module: what went wrong first, mostly with a socket
    std::string unconnected_;  // to where no connection could be made, until the socket's error
    bool triedToConnect_ = false;
    bool isOldRemark_ = false;  // of a connection that is being made again
};

}  // namespace hostkit
