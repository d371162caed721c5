#pragma once
// What the lines of the ping tool come to.

#include <string>
#include <string_view>

namespace cli {

enum class PingLine {
    reply,    // an answer to a request of ours
    lost,     // a request's turn has ended without one
    remark,   // more follows
    trouble,  // no request is behind it: it tells why there are no more
};

class PingSummary {
  public:
    /// Counts a line of the module's in, and says what it is.
    PingLine Take(const std::string& line);

    unsigned Sent() const { return sent_; }
    unsigned Received() const { return received_; }

    /// «3 sent, 3 received, 0 lost; shortest 0 ms, mean 0.3 ms, longest 1 ms», without times when
    /// nothing was received.
    std::string Text() const;

  private:
    unsigned sent_ = 0;
    unsigned received_ = 0;
    long shortest_ = 0;
    long longest_ = 0;
    double total_ = 0;
};

}  // namespace cli
