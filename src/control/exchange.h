#pragma once
// One thread at a time talks to the server.

#include "control/session.h"

namespace quennet {

/// Told to whoever wants the connection while an exchange is under way.
constexpr char commandInProgress[] = "Command in progress, ignored.";

/// Claims the connection for the calling thread while it stands: from the first command of what
/// belongs together to the last reply, so that no other thread slips between two of its commands.
/// A claim inside a claim of the same thread is granted and ends nothing. A null session is never
/// granted.
class Exchange {
  public:
    explicit Exchange(Session* session);
    ~Exchange();
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    /// True, with a line on the console, when another thread holds the connection.
    bool IsRefused() const;

  private:
    Session* session_;
    bool outermost_;
    bool granted_;
};

}  // namespace quennet
