#include "transfer/transfer.h"

#include <cstdio>

#include "control/command.h"
#include "control/reconnect.h"
#include "control/working_directory.h"
#include "host/process_clock.h"
#include "host/services.h"

namespace quennet {

namespace {

struct LocalFailureText {
    LocalFailure failure;
    const char* text;
};

constexpr LocalFailureText localFailureTexts[] = {
    {LocalFailure::open, "The local file could not be opened."},
    {LocalFailure::seek, "The local file could not be positioned."},
    {LocalFailure::read, "The local file could not be read."},
    {LocalFailure::write, "The local file could not be written."},
    {LocalFailure::close, "The local file could not be closed."},
    {LocalFailure::memory, "Out of memory."},
    {LocalFailure::tooLong, "The listing is longer than 1 GiB."},
};

}  // namespace

TransferClock::TransferClock(Session* session) : session_(session), start_(ProcessClock()) {
    if (session_->progress != nullptr) {
        session_->progress->startClock = start_;
    }
}

void TransferClock::ReportProgress(u32 bytes) const {
    if (session_->progress != nullptr) {
        ShellAddProgress(session_->progress, bytes);
        session_->progress->bytesDone += bytes;
    }
}

void TransferClock::PrintSpeed(const char* beforeCount, const char* behindCount) const {
    constexpr double secondsOfMillisecond = 0.001;
    constexpr double kilobytesOfBytesPerMillisecond = 0.9765625;  // 1000 / 1024
    const u32 elapsed = ProcessClock() - start_;
    if (elapsed == 0) {
        return;
    }
    char text[128];
    std::snprintf(text, sizeof text, "%s%llu bytes%s in %.2f seconds, (%.2f KB/s)", beforeCount,
                  static_cast<unsigned long long>(bytes_), behindCount,
                  elapsed * secondsOfMillisecond,
                  static_cast<double>(bytes_) / elapsed * kilobytesOfBytesPerMillisecond);
    CoreConsolePrintText(session_->console, text);
}

bool IsFree(const Session* session, const Exchange& exchange) {
    return exchange.IsGranted() && !session->busy.IsSet();
}

bool IsBusy(Session* session, const Exchange& exchange) {
    const bool isBusy = !IsFree(session, exchange);
    if (isBusy) {
        CoreConsolePrintText(session->console, commandInProgress);
    }
    return isBusy;
}

bool IsConnected(Session* session) {
    const bool isThere = session->controlSocket != noSocket || Reconnect(session);
    return isThere && ReturnToDirectory(session);
}

bool IsOccupied(Session* session, const Exchange& exchange) {
    return IsBusy(session, exchange) || !IsConnected(session);
}

bool RefusesToSend(Session* session, const char* line) {
    const char* objection = ObjectionTo(line);
    if (objection != nullptr) {
        CoreConsolePrintText(session->console, objection);
        SetFailureText(session, objection);
    }
    return objection != nullptr;
}

i32 RefuseTransfer(Session* session) {
    CoreConsolePrintText(session->console, commandInProgress);
    SetErrorText(session, commandInProgress);
    return transferFailed;
}

void NoteLocalFailure(Session* session, LocalFailure failure) {
    if (session->localFailure == LocalFailure::none) {
        session->localFailure = failure;
    }
}

bool FailedLocally(Session* session) {
    for (const LocalFailureText& entry : localFailureTexts) {
        if (entry.failure == session->localFailure) {
            SetFailureText(session, entry.text);
            return true;
        }
    }
    return false;
}

void SetFailureText(Session* session, const char* text) {
    StoreText(session->replyBuffer, replyBufferSize, text);
}

void SetErrorText(Session* session, const char* text) {
    FtpHandle* handle = session->handle;
    handle->errorText[0] = 0;
    ShellAppendText(handle->errorText, text[0] != 0 ? text : "The server did not answer.",
                    sizeof handle->errorText);
}

bool GoesOn(TransferItem* item, ConfirmCallback confirm, HostWord resumeOffset) {
    confirm(item, resumeOffset);
    const u32 status = PointerFromWord<const TransferRecord>(item->record)->status;
    return status == transferGoesOn || status == transferGoesOnToo;
}

}  // namespace quennet
