#pragma once
// One thread at a time talks to the server.

#include "control/session.h"

namespace quennet {

/// Told to whoever wants the connection while an exchange is under way.
constexpr char commandInProgress[] = "Command in progress, ignored.";

/// Keeps the connection of a session that no other thread knows yet for the worker that is to be
/// started: whoever wants it before the worker is refused.
void KeepExchange(Session* session);

/// Claims the connection for the calling thread while it stands: from the first command of what
/// belongs together to the last reply, so that no other thread slips between two of its commands.
/// A claim inside a claim of the same thread is granted and ends nothing. A null session is never
/// granted.
class Exchange {
  public:
    explicit Exchange(Session* session);
    /// Takes over what KeepExchange has kept.
    struct Kept {};
    Exchange(Session* session, Kept);
    /// Borrows what LentExchange lends; granted on no other terms.
    struct Lent {};
    Exchange(Session* session, Lent);
    ~Exchange();
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    /// Whether the connection is the calling thread's.
    bool IsGranted() const { return granted_; }

    /// True, with a line on the console, when another thread holds the connection.
    bool IsRefused() const;

  private:
    bool Claim(u32 from);

    Session* session_;
    bool outermost_ = false;
    bool granted_ = false;
    u32 before_ = 0;  // what stood in the session's word
};

/// Lends the calling thread's exchange to listings while it stands: the host may read a directory,
/// on behalf of this thread, by messages from another one. The calling thread's own claims are
/// granted as ever, and all others refused. Waits at its end for a listing that is under way.
class LentExchange {
  public:
    explicit LentExchange(Session* session);
    ~LentExchange();
    LentExchange(const LentExchange&) = delete;
    LentExchange& operator=(const LentExchange&) = delete;

  private:
    Session* session_;
    bool lent_;
};

/// Whether that thread holds the connection, or lends it at the moment.
bool HoldsExchange(const Session* session, u32 thread);

}  // namespace quennet
