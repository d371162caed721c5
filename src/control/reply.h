#pragma once
// Replies of the server, read off the control channel.

#include "control/session.h"

namespace quennet {

/// Marks an exchange on the control channel, or a data loop, while it stands. The innermost mark
/// that ends clears it for all: `busy` is in effect a flag.
class BusyMark {
  public:
    explicit BusyMark(Session* session) : session_(session) { session_->busy.Add(1); }
    ~BusyMark() { session_->busy.Store(0); }
    BusyMark(const BusyMark&) = delete;
    BusyMark& operator=(const BusyMark&) = delete;

  private:
    Session* session_;
};

/// Reads exactly one line and leaves what lies behind it on the socket.
///
/// Returns the line's code (its first three characters as a number); 421 when the wait was ended by
/// the watchdog or an abort; 0 without a line or a number; -1 after a socket failure, which is
/// printed. The line stands in `replyBuffer` without its end; of a longer one the first 4000 bytes,
/// and the next read takes the rest as a line of its own.
int ReadReplyLine(Session* session);

/// Reads one reply to its end, however many lines it has, and prints its lines.
///
/// Returns the class of the reply, 1 to 5; 0 without a valid reply; -1 after a socket failure, or
/// after a reply without an end, which goes on for 10,000 lines or ten times the session's
/// time-out. The last line stays in `replyBuffer`, the deciding code in `firstCode`. An abort or a
/// time-out counts as code 421. Format: RFC 959, section 4.2.
int ReadReply(Session* session);

/// Reads the welcome, and before it the preliminary replies, which may name the server's family, in
/// twice the session's time-out.
int ReadWelcome(Session* session);

/// The same for the reply that ends an exchange: the preliminary ones before it, 16 at most, are
/// read and printed too. One more of them is the result, and the final reply is owed.
int ReadFinalReply(Session* session);

/// Reads what follows on a first line that ReadReplyLine took, to the final reply, and prints it.
/// Reads nothing where that line says that nothing follows. `replyBuffer` must still hold it.
void ReadRestOfReply(Session* session);

/// True when the server's next byte comes within two seconds, or is there already.
bool ReplyComesSoon(Session* session);

/// Brings the session in step with the server before the next command: waits up to two seconds for
/// each reply that is still owed for what is over, takes what else already stands on the socket,
/// and prints it all. Does nothing, and reads nothing, when no reply is owed. False when one is
/// missing that the server was bound to send: only a new connection is in step then.
bool SettleOwedReplies(Session* session);

/// The final reply of a transfer: owed from the moment that the server announced data, until the
/// transfer reads it or the connection is replaced.
class FinalReply {
  public:
    explicit FinalReply(Session* session) : session_(session), logins_(session->logins) {}
    ~FinalReply();
    FinalReply(const FinalReply&) = delete;
    FinalReply& operator=(const FinalReply&) = delete;

    /// Reads it, with the results of ReadFinalReply.
    int Read();

    /// Says that ABOR was sent and one reply read since: whether a second one comes is the server's
    /// affair.
    void SetDoubtful() { doubtful_ = true; }

  private:
    Session* session_;
    u32 logins_;
    bool read_ = false;
    bool doubtful_ = false;
};

}  // namespace quennet
