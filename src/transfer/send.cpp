// How data goes out
// -----------------
//
//     TYPE if it changes -> data socket (PASV or PORT) -> STOR
//         -> connection -> the loop below -> half close -> final reply
//
// The loop reads blocks of at most 4096 bytes from the host's file into `replyBuffer` and sends
// each in the pieces of SendBlock. The half close lets the peer read to the end before the socket
// goes; what the peer still says on it is read and dropped.

#include "transfer/send.h"

#include "control/command.h"
#include "control/reply.h"
#include "control/sockets.h"
#include "host/services.h"
#include "transfer/data_connection.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr u32 blockSize = replyBufferSize;

/// A reply that never came is a failure too: 0 would say that the file was stored.
int FailureOf(int replyClass) {
    return replyClass != 0 ? replyClass : -1;
}

/// Reads a block and sends it: 0, else the failure value of what failed.
int SendFileBlock(Session* session, ShellFile file, u32 size) {
    const int failure = ShellReadFile(file, session->replyBuffer, size);
    if (failure != 0) {
        NoteLocalFailure(session, LocalFailure::read);
        return failure;
    }
    const int sent = SendBlock(session->console, session->dataSocket, session->replyBuffer,
                               static_cast<int>(size), &session->abortFlag);
    return sent == static_cast<int>(size) ? 0 : -1;
}

/// Sends the blocks of an open file: 0, else the failure value that ended it.
int SendBlocks(Session* session, ShellFile file, TransferClock* progress) {
    u64 rest = 0;
    int result = ShellQueryFileSize(file, &rest);
    if (result != 0) {
        NoteLocalFailure(session, LocalFailure::read);
    }
    while (rest > 0 && result == 0 && !session->abortFlag.IsSet()) {
        const u32 size = rest < blockSize ? static_cast<u32>(rest) : blockSize;
        rest -= size;
        result = SendFileBlock(session, file, size);
        progress->ReportProgress(size);
        if (result == 0) {
            result = WaitSocketWritable(session->console, session->dataSocket, &session->abortFlag);
        }
        progress->Add(size);
    }
    return result;
}

/// The send loop: 0 when the whole file went out, else a failure value.
int SendData(Session* session, const char* path) {
    const BusyMark busy(session);
    session->abortFlag.Store(0);
    ShellFile file = 0;
    const int failure =
        ShellOpenFileAt(WindowFromNumber(session->console), path, &file, accessRead);
    if (failure != 0) {
        NoteLocalFailure(session, LocalFailure::open);
        return failure;
    }
    TransferClock progress(session);
    const int result = SendBlocks(session, file, &progress);
    if (ShellCloseFile(file) != 0) {
        NoteLocalFailure(session, LocalFailure::close);
    }
    WaitSocketWritable(session->console, session->dataSocket, &session->abortFlag);
    progress.PrintSpeed("Transmitted ", "");
    return result;
}

/// Reads the final reply and weighs it against what failed on this side. After an abort nobody
/// waits longer than a moment for it: then it is owed.
int EndOfSend(Session* session, FinalReply* finalReply, int sendResult) {
    constexpr int confirmed = 2;
    const bool aborted = session->abortFlag.IsSet();
    const bool answered = !aborted || SocketReadable(session->controlSocket) != 0;
    const int result = answered ? finalReply->Read() : -1;
    if (FailedLocally(session)) {
        return -1;
    }
    if (aborted && (result == confirmed || !answered)) {
        SetFailureText(session, "The transfer was aborted.");
        return -1;
    }
    if (result == confirmed && sendResult != 0) {
        SetFailureText(session, "The data connection was lost.");
        return -1;
    }
    return result == confirmed ? 0 : FailureOf(result);
}

}  // namespace

int SendFile(Session* session, const char* command, const char* path, char type) {
    constexpr int dataFollows = 1;
    // The exchange that occupies the connection goes on with what the session holds.
    const Exchange exchange(session);
    if (IsOccupied(session, exchange) || RefusesToSend(session, command)) {
        return -1;
    }
    session->firstCode = 0;
    session->localFailure = LocalFailure::none;
    if (!ForgetTypedRestart(session, type) || !SetUpTransfer(session, type)) {
        return -1;
    }
    const int answer = SendTransferCommand(session, command);
    if (answer != dataFollows) {
        AbandonDataSocket(session);
        return FailureOf(answer);
    }
    FinalReply finalReply(session);
    if (AwaitDataConnection(session) != dataConnected) {
        return -1;
    }
    const int sent = SendData(session, path);
    session->dataSocket = CloseSocketGracefully(session, session->dataSocket, shutdownSend);
    return EndOfSend(session, &finalReply, sent);
}

}  // namespace quennet
