// How data comes in
// -----------------
//
//     TYPE if it changes -> data socket (PASV or PORT) -> REST -> RETR or LIST
//         -> connection -> the loop below -> close -> final reply
//
// The loop takes blocks of at most 4096 bytes into `replyBuffer`, which holds no reply meanwhile,
// and hands each to the host: to a file, or to a growing buffer. It waits in one-second steps and
// looks at `abortFlag` after each step and each block; nothing else bounds it.
//
// A resume begins 512 bytes before the end of the partial file. These bytes of the stream must
// equal the file's own, otherwise the file on the server is another one:
//
//     file     ................[ 512 ]          resumeOffset is its length
//     stream                   [ 512 ][ what is missing ...
//                              equal?
//
// When they differ, or the file's bytes can't be read, the data connection is closed first, hard:
// servers answer ABOR only when their own end has broken, and one that is shut down but full of
// unread bytes never breaks. ABOR goes out with `abortFlag` raised, which lets it pass while the
// loop is under way. The flag stays raised to tell the caller.
//
// Nothing local is opened before the server has announced the data and the connection stands.

#include "transfer/receive.h"

#include <cstring>

#include "control/command.h"
#include "control/reply.h"
#include "control/sockets.h"
#include "control/watchdog.h"
#include "host/services.h"
#include "transfer/data_connection.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr int blockSize = replyBufferSize;

/// Where the bytes of one transfer go: a file of the host, or a growing buffer.
class Target {
  public:
    Target(Session* session, GrowBuffer* buffer) : session_(session), buffer_(buffer) {}

    bool Open(const char* path, HostWord resumeOffset) {
        if (buffer_ != nullptr) {
            return true;
        }
        HWND console = WindowFromNumber(session_->console);
        const int failure = resumeOffset != 0
                                ? ShellOpenFileAt(console, path, &file_, accessReadWrite)
                                : ShellCreateFile(console, path, &file_);
        return Note(failure == 0, LocalFailure::open);
    }

    bool Seek(HostWord offset) {
        return Note(ShellSeekFile(file_, offset) == 0, LocalFailure::seek);
    }

    bool Write(const char* data, int length) {
        if (buffer_ != nullptr) {
            return Append(data, static_cast<u32>(length));
        }
        const int failure =
            ShellWriteFile(hostTables.mainWindow, file_, data, static_cast<u32>(length));
        return Note(failure == 0, LocalFailure::write);
    }

    /// A buffer ends with a NUL, so that it can be walked as a text.
    void Close() {
        if (buffer_ != nullptr) {
            Write("", 1);
        } else {
            Note(ShellCloseFile(file_) == 0, LocalFailure::close);
        }
    }

    bool IsFile() const { return buffer_ == nullptr; }
    ShellFile file() const { return file_; }

  private:
    bool Append(const char* data, u32 length) {
        constexpr u32 longest = u32{1} << 30;
        return Note(buffer_->used + length <= longest, LocalFailure::tooLong) &&
               Note(ShellBufferAppend(buffer_, data, length), LocalFailure::memory);
    }

    bool Note(bool done, LocalFailure failure) {
        if (!done) {
            NoteLocalFailure(session_, failure);
        }
        return done;
    }

    Session* session_;
    GrowBuffer* buffer_;
    ShellFile file_ = 0;
};

/// Waits for bytes and takes at most `size` of them into `replyBuffer`: their number, 0 at the end
/// of the data or when aborted, below 0 after a failure.
int ReceiveBlock(Session* session, int size) {
    const int readable = WaitSocketReadable(session->dataSocket, session->abortFlag);
    if (readable <= 0) {
        return readable;
    }
    return static_cast<int>(recv(session->dataSocket, session->replyBuffer, size, 0));
}

/// Compares the stream with the last bytes of the partial file. False when they differ; a stream
/// that ends before is no difference.
bool OverlapIsEqual(Session* session, Target* target, TransferClock* progress) {
    char local[resumeOverlap];
    if (ShellReadFile(target->file(), local, resumeOverlap) != 0) {
        return false;
    }
    int compared = 0;
    while (compared < static_cast<int>(resumeOverlap) && !session->abortFlag.IsSet()) {
        const int block = ReceiveBlock(session, static_cast<int>(resumeOverlap) - compared);
        if (block <= 0) {
            break;
        }
        if (std::memcmp(session->replyBuffer, local + compared, static_cast<std::size_t>(block)) !=
            0) {
            return false;
        }
        compared += block;
        progress->Add(static_cast<u32>(block));
        progress->ReportProgress(static_cast<u32>(block));
    }
    return true;
}

void AbortDifferentFile(Session* session, FinalReply* finalReply) {
    CoreConsolePrintText(session->console, "Not the same file!");
    session->dataSocket = CloseSocketGracefully(session, session->dataSocket, shutdownBoth);
    session->abortFlag.Add(1);
    SendCommandText(session, "ABOR");
    finalReply->SetDoubtful();
    // Reading the reply has cleared the flag, which the caller looks for.
    session->abortFlag.Store(1);
}

/// Proves that the partial file is a part of the one on the server. False when nothing may be
/// written to it.
bool CheckResume(Session* session, Target* target, HostWord resumeOffset, TransferClock* progress,
                 FinalReply* finalReply) {
    if (!session->abortFlag.IsSet() && !OverlapIsEqual(session, target, progress)) {
        AbortDifferentFile(session, finalReply);
    }
    if (session->progress != nullptr) {
        const HostWord skipped = resumeOffset - resumeOverlap;
        session->progress->bytesDone += skipped;
        if (session->progress->bytesTotal >= skipped) {
            session->progress->bytesTotal -= skipped;
        }
    }
    return target->Seek(resumeOffset);
}

/// Moves the data: the result of the last receive.
int ReceiveBlocks(Session* session, Target* target, TransferClock* progress) {
    int block = 0;
    while (!session->abortFlag.IsSet()) {
        block = ReceiveBlock(session, blockSize);
        if (block <= 0 || !target->Write(session->replyBuffer, block)) {
            break;
        }
        progress->Add(static_cast<u32>(block));
        if (target->IsFile()) {
            progress->ReportProgress(static_cast<u32>(block));
        }
    }
    return block;
}

/// The receive loop. False when the data connection failed on the way.
bool ReceiveData(Session* session, const char* path, GrowBuffer* buffer, HostWord resumeOffset,
                 FinalReply* finalReply) {
    const BusyMark busy(session);
    DisarmWatchdog(session);
    session->abortFlag.Store(0);
    Target target(session, buffer);
    if (!target.Open(path, resumeOffset)) {
        return true;
    }
    TransferClock progress(session);
    int lastBlock = 0;
    if (resumeOffset == 0 || (target.Seek(resumeOffset - resumeOverlap) &&
                              CheckResume(session, &target, resumeOffset, &progress, finalReply))) {
        lastBlock = ReceiveBlocks(session, &target, &progress);
    }
    const int error = WSAGetLastError();
    target.Close();
    if (session->abortFlag.IsSet()) {
        return true;
    }
    if (lastBlock < 0) {
        WSASetLastError(error);
        ReportSocketError(session->console);
    }
    if (lastBlock >= 0 || progress.bytes() > 0) {
        progress.PrintSpeed("", " received");
    }
    return lastBlock >= 0;
}

/// Asks the server to begin where the comparison begins. A server that can't begins with byte 0.
/// False when the connection was lost on the way, and the session is not what it was.
bool TellRestart(Session* session, HostWord* resumeOffset) {
    constexpr int waitsForTransfer = 3;
    if (*resumeOffset == 0) {
        return true;
    }
    const int result = SendCommand(session, "%s %llu", "REST",
                                   static_cast<unsigned long long>(*resumeOffset - resumeOverlap));
    if (result != waitsForTransfer) {
        *resumeOffset = 0;
    }
    return result != -1;
}

/// Reads the final reply and weighs it against what failed on this side.
int EndOfReceive(Session* session, FinalReply* finalReply, bool connectionHeld) {
    constexpr int confirmed = 2;
    const int result = finalReply->Read();
    if (FailedLocally(session)) {
        if (session->localFailure == LocalFailure::tooLong) {
            // A listing has no error text.
            CoreConsolePrintText(session->console, session->replyBuffer);
        }
        return 0;
    }
    if (result == confirmed && !connectionHeld) {
        SetFailureText(session, "The data connection was lost.");
        return 0;
    }
    return result;
}

}  // namespace

int ReceiveFile(Session* session, const char* command, const char* path, GrowBuffer* buffer,
                HostWord resumeOffset, char type) {
    constexpr int dataFollows = 1;
    constexpr int aborted = 5;
    // The exchange that occupies the connection goes on with what the session holds.
    const Exchange exchange(session);
    if (IsOccupied(session, exchange) || RefusesToSend(session, command)) {
        return 0;
    }
    session->firstCode = 0;
    session->replyDepth = 0;
    session->localFailure = LocalFailure::none;
    if ((buffer == nullptr && !ForgetTypedRestart(session, type)) ||
        !SetUpTransfer(session, type)) {
        return 0;
    }
    const bool restartTold = TellRestart(session, &resumeOffset);
    const u32 login = session->logins;
    if (!restartTold || SendTransferCommand(session, command) != dataFollows) {
        AbandonDataSocket(session);
        return 0;
    }
    FinalReply finalReply(session);
    if (resumeOffset != 0 && session->logins != login) {
        // The new session knows of no restart, and would send the file from its first byte.
        AbandonDataSocket(session);
        SetFailureText(session, "The connection was lost before the transfer.");
        return 0;
    }
    const int connected = AwaitDataConnection(session);
    if (connected != dataConnected) {
        return connected;
    }
    const bool connectionHeld = ReceiveData(session, path, buffer, resumeOffset, &finalReply);
    if (session->dataSocket != noSocket && shutdown(session->dataSocket, shutdownBoth) != 0) {
        ReportSocketError(session->console);
    }
    session->dataSocket = CloseSocketGracefully(session, session->dataSocket, shutdownBoth);
    if (session->abortFlag.IsSet()) {
        SetFailureText(session, "The transfer was aborted.");
        return aborted;
    }
    return EndOfReceive(session, &finalReply, connectionHeld);
}

}  // namespace quennet
