#pragma once
// The control connection of one client: command lines in, replies out, both noted in the log, and
// the faults that concern replies.

#include <string>
#include <string_view>
#include <vector>

#include "fault.h"
#include "shared.h"
#include "socket.h"

namespace loopback {

enum class LineEnd { whole, tooLong, idle, lost };

class ControlChannel {
  public:
    ControlChannel(Descriptor socket, int client, Shared* shared, const StopSignal* stop);

    /// Reads one command line, without its line end and without the signals of the Telnet protocol
    /// that clients send in front of ABOR. Of a line longer than 4096 bytes nothing is kept.
    LineEnd ReadLine(Clock::time_point deadline, std::string* line);

    /// Takes what has arrived while a transfer runs. True when the next command is ABOR, which is
    /// then taken; any other command waits for its turn.
    bool TakeAbort();

    /// True when it makes sense to wait for this socket during a transfer.
    bool Watchable() const;

    /// The rules for the replies to the command that begins now.
    void BeginCommand(const std::vector<Fault>& faults);
    /// Says what the rules want behind the last reply.
    void EndCommand();

    /// Says one reply: a line, or several with LF between them. Nothing on a lost connection.
    void Reply(std::string_view text);

    void Close(bool withReset);

    /// Breaks this connection, as the break was chosen.
    void Break();
    /// Notes in the log where the client's connection breaks.
    void NoteBreak(std::string_view where);

    /// The connection has ended, from either side.
    bool Lost() const { return !socket_.Valid() || peerClosed_; }
    int Number() const { return socket_.Number(); }

  private:
    void Receive();
    bool TakeLine(std::string* line);
    void Say(std::string_view text);
    bool Send(std::string_view bytes);

    Descriptor socket_;
    int client_;
    LineLog* log_;
    Breaker* breaker_;
    const StopSignal* stop_;
    std::string incoming_;
    bool peerClosed_ = false;
    bool skipping_ = false;  // within a line that is too long
    std::vector<Fault> faults_;
    bool replied_ = false;
};

}  // namespace loopback
