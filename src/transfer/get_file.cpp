#include "transfer/get_file.h"

#include <cstdio>

#include "host/services.h"
#include "transfer/receive.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr u64 smallestResume = 1024;  // a file of this size or less is not resumed
constexpr u64 largestResume = 0xFFFFFFFF;

/// How much of the source the local file may hold already; 0 when it is to be made anew.
u32 ResumeOffset(const char* local, u64 sourceSize) {
    ShellFile file = 0;
    if (ShellOpenFile(local, &file, accessRead) != 0) {
        return 0;
    }
    u64 size = 0;
    const bool known = ShellQueryFileSize(&file, &size) == 0;
    ShellCloseFile(&file);
    const bool resumes =
        known && size > smallestResume && size < largestResume && size < sourceSize;
    return resumes ? static_cast<u32>(size) : 0;
}

void SetLocalFileTime(const TransferItem* item) {
    ShellFile file = 0;
    if (ShellOpenFile(item->destination, &file, accessWrite) == 0) {
        ShellSetFileTime(&file, item->sourceDate, item->sourceTime);
        ShellCloseFile(&file);
    }
}

/// Receives the item's file, once more from byte 0 when the first run was aborted. True when done.
bool Download(Session* session, const TransferItem* item, u32 resumeOffset) {
    constexpr int confirmed = 2;
    char command[sizeof item->source + 8];
    std::snprintf(command, sizeof command, "%s %s", "RETR", item->source);
    const char type = static_cast<char>(ShellGetTransferType(item->source));
    int result = ReceiveFile(session, command, item->destination, nullptr, resumeOffset, type);
    if (result != confirmed && session->abortFlag.IsSet()) {
        session->abortFlag.Store(0);
        session->busy.Store(0);
        result = ReceiveFile(session, command, item->destination, nullptr, 0, type);
    }
    return result == confirmed;
}

i32 GetConfirmedFile(Session* session, const TransferItem* item, u32 resumeOffset) {
    if (!Download(session, item, resumeOffset)) {
        SetErrorText(session, session->replyBuffer);
        return 1;
    }
    SetLocalFileTime(item);
    return 0;
}

}  // namespace

i32 GetFile(TransferItem* item, FtpHandle* handle, ConfirmCallback confirm) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session == nullptr) {
        return -1;
    }
    if (IsBusy(session, Exchange(session))) {
        return RefuseBusyTransfer(session);
    }
    // While the host asks, the connection is free.
    const bool exists = ShellFileCheck(item->destination) == 0;
    const u32 resumeOffset = exists ? ResumeOffset(item->destination, item->sourceSize) : 0;
    const bool leftOut = exists && !GoesOn(item, confirm, resumeOffset);
    // A transfer that is under way keeps its record, its reply buffer and its abort flag.
    const Exchange exchange(session);
    if (IsBusy(session, exchange)) {
        return RefuseBusyTransfer(session);
    }
    session->progress = PointerFromWord<TransferRecord>(item->record);
    const i32 result = leftOut ? 0 : GetConfirmedFile(session, item, resumeOffset);
    session->progress = nullptr;
    session->abortFlag.Store(0);
    return result;
}

void AbortCommand(FtpHandle* handle) {
    Session* session = SessionFromHandle(handle);
    const SessionUse use(session);
    if (session != nullptr && !session->abortFlag.IsSet()) {
        session->abortFlag.Store(1);
        session->stopRetrying.Add(1);
    }
}

}  // namespace quennet
