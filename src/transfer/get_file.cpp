#include "transfer/get_file.h"

#include <cstdio>

#include "host/services.h"
#include "transfer/receive.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr u64 smallestResume = 1024;  // a file of this size or less is not resumed
constexpr u64 largestResume = ~HostWord{0};

/// How much of the source the local file may hold already; 0 when it is to be made anew.
HostWord ResumeOffset(const char* local, u64 sourceSize) {
    ShellFile file = 0;
    if (ShellOpenFile(local, &file, accessRead) != 0) {
        return 0;
    }
    u64 size = 0;
    const bool known = ShellQueryFileSize(file, &size) == 0;
    ShellCloseFile(file);
    const bool resumes =
        known && size > smallestResume && size < largestResume && size < sourceSize;
    return resumes ? static_cast<HostWord>(size) : 0;
}

void SetLocalFileTime(const TransferItem* item) {
    ShellFile file = 0;
    if (ShellOpenFile(item->destination, &file, accessWrite) == 0) {
        ShellSetFileTime(file, item->sourceDate, item->sourceTime);
        ShellCloseFile(file);
    }
}

/// Receives the item's file, once more from byte 0 when the first run was aborted, and gives it the
/// source's date. True when done.
bool Download(Session* session, const TransferItem* item, HostWord resumeOffset) {
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
    if (result == confirmed) {
        SetLocalFileTime(item);
    }
    return result == confirmed;
}

}  // namespace

i32 GetFile(TransferItem* item, FtpHandle* handle, ConfirmCallback confirm) {
    HostWord resumeOffset = 0;
    const auto goesOn = [&] {
        if (ShellFileCheck(item->destination) != 0) {
            return true;
        }
        resumeOffset = ResumeOffset(item->destination, item->sourceSize);
        return GoesOn(item, confirm, resumeOffset);
    };
    const auto moves = [&](Session* session) { return Download(session, item, resumeOffset); };
    return RunTransfer(item, handle, goesOn, moves);
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
