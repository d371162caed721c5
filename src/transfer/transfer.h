#pragma once
// What the receive loop and the send loop share.

#include "control/exchange.h"
#include "control/session.h"

namespace quennet {

/// Counts the bytes and the time of one data loop.
class TransferClock {
  public:
    /// Starts now, and tells the host's record when.
    explicit TransferClock(Session* session);

    /// Adds a block to the byte count.
    void Add(u32 bytes) { bytes_ += bytes; }

    /// Adds a block to the host's progress, if there is one.
    void ReportProgress(u32 bytes) const;

    u64 bytes() const { return bytes_; }

    /// Prints "`beginning` `verb` in ... seconds", unless the loop took no time. One of the two
    /// texts stands in front of the count, the other behind it.
    void PrintSpeed(const char* beforeCount, const char* behindCount) const;

  private:
    Session* session_;
    u32 start_;
    u64 bytes_ = 0;
};

/// True, with a line on the console, when `exchange` was not granted, and while a command or a
/// transfer is under way that the same thread has begun.
bool IsBusy(Session* session, const Exchange& exchange);

/// True when no transfer may start: without a control connection, when busy, and when the session
/// can't get back into its directory.
bool IsOccupied(Session* session, const Exchange& exchange);

/// Refuses a line that can't be sent as it is, before anything goes out for it: says why on the
/// console and in `replyBuffer`.
bool RefusesToSend(Session* session, const char* line);

/// Notes what failed locally. The first failure of a transfer stays.
void NoteLocalFailure(Session* session, LocalFailure failure);

/// The transfer's end: what failed locally makes it a failure whatever the server said. Leaves a
/// text of what failed in `replyBuffer` and returns true in that case.
bool FailedLocally(Session* session);

/// Puts a text of the module into `replyBuffer`, where the host's error text comes from.
void SetFailureText(Session* session, const char* text);

/// Tells the host that something else is under way. Gives the result of its message.
i32 RefuseBusyTransfer(Session* session);

/// Tells the host why a transfer failed: `errorText` of the session's handle, cut to its size. An
/// empty text is the reply that never came.
void SetErrorText(Session* session, const char* text);

/// Asks the host about a target that exists. False when the file is to be left out.
bool GoesOn(TransferItem* item, ConfirmCallback confirm, u32 resumeOffset);

}  // namespace quennet
