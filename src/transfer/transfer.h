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

    /// Prints how many bytes took how long, unless the loop took no time. The texts stand in front
    /// of «1234 bytes» and behind it.
    void PrintSpeed(const char* beforeCount, const char* behindCount) const;

  private:
    Session* session_;
    u32 start_;
    u64 bytes_ = 0;
};

/// Whether nothing else is under way on the connection: `exchange` was granted, and the same thread
/// has begun no command and no transfer.
bool IsFree(const Session* session, const Exchange& exchange);

/// True, with a line on the console, when the connection is not free.
bool IsBusy(Session* session, const Exchange& exchange);

/// Makes a transfer possible where an earlier repair failed: tries it again, and the way back into
/// the directory. False when either fails. For a connection that is not busy.
bool IsConnected(Session* session);

/// True when no transfer may start: when busy, or not connected.
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

/// Tells the host why a transfer failed: `errorText` of the session's handle, cut to its size. An
/// empty text is the reply that never came.
void SetErrorText(Session* session, const char* text);

/// Asks the host about a target that exists. False when the file is to be left out.
bool GoesOn(TransferItem* item, ConfirmCallback confirm, HostWord resumeOffset);

/// Results of messages 39 and 40.
constexpr i32 transferDone = 0;  // or left out
constexpr i32 transferFailed = 1;

/// Tells the user and the host that something else is under way. Gives transferFailed.
i32 RefuseTransfer(Session* session);

/// Moves one file for the host: `goesOn()` asks whether it is wanted, while the connection is free;
/// `moves(session)` moves it and says whether all went well. What else is under way on the
/// connection keeps its record, its reply buffer and its abort flag: the file is not moved then.
///
/// Returns one of the results above, transferFailed with `errorText` set; -1 without a session.
template <typename Question, typename Transfer>
i32 RunTransfer(const TransferItem* item, FtpHandle* handle, Question goesOn, Transfer moves) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return -1;
    }
    if (!IsFree(session, Exchange(session))) {
        return RefuseTransfer(session);
    }
    const bool wanted = goesOn();
    const Exchange exchange(session);
    if (!IsFree(session, exchange)) {
        return wanted ? RefuseTransfer(session) : transferDone;
    }
    session->progress = PointerFromWord<TransferRecord>(item->record);
    const bool done = !wanted || moves(session);
    if (!done) {
        SetErrorText(session, session->replyBuffer);
    }
    session->progress = nullptr;
    session->abortFlag.Store(0);
    return done ? transferDone : transferFailed;
}

}  // namespace quennet
