#pragma once
// Waiting on a thread that has windows.

#include "host/types.h"

namespace quennet {

/// Serves the messages of the calling thread while something is awaited: its windows may be what
/// others wait for. A WM_QUIT that comes meanwhile is posted again at the end.
class MessageWait {
  public:
    MessageWait() = default;
    ~MessageWait();
    MessageWait(const MessageWait&) = delete;
    MessageWait& operator=(const MessageWait&) = delete;

    /// Serves what there is, then sleeps.
    void Pause(u32 milliseconds);

  private:
    bool quits_ = false;
    WPARAM quitCode_ = 0;
};

}  // namespace quennet
