// How a file goes from server to server
// -------------------------------------
//
//     source                         destination
//     TYPE if it changes             TYPE if it changes
//     PASV        -- six numbers --> PORT
//                                    STOR     first, so that it is ready when the data comes
//     RETR  ======== data =========>
//                                    226      the destination's last word is read first
//     226
//
// While one side is waited for, the other one is marked as busy: a command of another message would
// take its last word for its own. What a server still has to say when the copy is given up is owed,
// and taken before its next command.

#include "transfer/server_to_server.h"

#include <cstdio>

#include "control/command.h"
#include "control/reply.h"
#include "control/sockets.h"
#include "control/working_directory.h"
#include "host/services.h"
#include "transfer/data_connection.h"
#include "transfer/transfer.h"

namespace quennet {

namespace {

constexpr int dataFollows = 1;
constexpr int done = 2;

/// Takes the time limit off the replies of a session while it stands.
class NoTimeLimit {
  public:
    explicit NoTimeLimit(Session* session)
        : session_(session), timeoutSeconds_(session->timeoutSeconds) {
        session_->timeoutSeconds = 0;
    }
    ~NoTimeLimit() { session_->timeoutSeconds = timeoutSeconds_; }
    NoTimeLimit(const NoTimeLimit&) = delete;
    NoTimeLimit& operator=(const NoTimeLimit&) = delete;

  private:
    Session* session_;
    u32 timeoutSeconds_;
};

/// The last words of both sides, 0 for one that was not reached.
struct Outcome {
    int source = 0;
    int destination = 0;
};

/// Tells the destination where the source listens.
bool JoinServers(Session* source, Session* destination, char type) {
    constexpr std::size_t addressBytes = 4;
    u8 numbers[6] = {};
    u16 port = 0;
    if (SendPasvCommand(source, numbers, &port) != done || port == 0 ||
        SendPortCommand(destination, numbers, numbers + addressBytes) != done) {
        return false;
    }
    // A repair during the set-up put the server back to its first type.
    return TellType(source, type) && TellType(destination, type);
}

/// Sends a transfer command. False unless data follows.
bool Begins(Session* session, const char* verb, const char* name) {
    const u32 login = session->logins;
    char line[pathSize + 8];
    std::snprintf(line, sizeof line, "%s %s", verb, name);
    if (SendTransferCommand(session, line) != dataFollows) {
        return false;
    }
    if (session->logins == login) {
        return true;
    }
    // The new session knows nothing of the other server.
    const FinalReply owed(session);
    SetFailureText(session, "The connection was lost before the transfer.");
    return false;
}

/// Calls the destination back: its data will not come. Some servers read no command before the
/// other one has let go of them, which may take minutes. Such a one owes its replies.
void AbortStore(Session* destination, FinalReply* finalReply) {
    constexpr char abort[] = "ABOR";
    CoreConsolePrintText(destination->console, abort);
    destination->abortFlag.Add(1);
    const bool sent = SendLine(destination, abort) != -1;
    destination->abortFlag.Store(0);
    FinalReply answer(destination);
    if (sent && ReplyComesSoon(destination) && answer.Read() > 0) {
        finalReply->SetDoubtful();
    } else {
        answer.SetDoubtful();
    }
}

/// Reads the last word of one side, however long it takes. An abort of this side that came while
/// the other one was waited for counts.
int LastWord(Session* session, Session* other, FinalReply* finalReply) {
    const bool abandoned =
        session->abortFlag.IsSet() && SocketReadableNow(session->controlSocket) <= 0;
    int result = 0;
    if (!abandoned) {
        const BusyMark otherIsTaken(other);
        const NoTimeLimit patience(session);
        result = finalReply->Read();
    }
    if (abandoned || session->abortFlag.IsSet()) {
        SetFailureText(session, "The transfer was aborted.");
    }
    return result;
}

Outcome Copy(Session* source, Session* destination, const TransferItem* item, char type) {
    const char* from = item->source + ShellNameOffset(item->source);
    const char* to = item->destination + ShellNameOffset(item->destination);
    if (RefusesToSend(source, from) || RefusesToSend(destination, to) || !IsConnected(source) ||
        !IsConnected(destination)) {
        return {};
    }
    if (!ForgetTypedRestart(source, type) || !ForgetTypedRestart(destination, type) ||
        !TellType(source, type) || !TellType(destination, type) ||
        !JoinServers(source, destination, type) || !Begins(destination, "STOR", to)) {
        return {};
    }
    FinalReply destinationReply(destination);
    if (!Begins(source, "RETR", from)) {
        AbortStore(destination, &destinationReply);
        return {};
    }
    FinalReply sourceReply(source);
    Outcome outcome;
    outcome.destination = LastWord(destination, source, &destinationReply);
    outcome.source = LastWord(source, destination, &sourceReply);
    return outcome;
}

bool IsConfirmed(Session* session, int lastWord) {
    if (lastWord != done) {
        SetErrorText(session, session->replyBuffer);
    }
    return lastWord == done;
}

i32 ServerToServer(Session* source, Session* destination, const TransferItem* item, char type) {
    source->firstCode = 0;
    destination->firstCode = 0;
    const Outcome outcome = Copy(source, destination, item, type);
    const bool sent = IsConfirmed(source, outcome.source);
    const bool stored = IsConfirmed(destination, outcome.destination);
    return sent && stored ? 0 : -1;
}

bool AreDistinct(Session* source, const Session* destination) {
    constexpr char sameHosts[] = "FxP between same hosts not supported.";
    const SocketNumber socket = source->controlSocket;
    const bool sharesSocket = socket != noSocket && socket == destination->controlSocket;
    if (source != destination && !sharesSocket) {
        return true;
    }
    CoreConsolePrintText(source->console, sameHosts);
    SetErrorText(source, sameHosts);
    return false;
}

}  // namespace

i32 CopyBetweenServers(TransferItem* item, FtpHandle* sourceHandle, FtpHandle* destinationHandle) {
    Session* source = SessionFromHandle(sourceHandle);
    Session* destination = SessionFromHandle(destinationHandle);
    const SessionUse useOfSource(source);
    const SessionUse useOfDestination(destination);
    const Exchange onSource(source);
    const Exchange onDestination(destination);
    if (source == nullptr || destination == nullptr || !AreDistinct(source, destination)) {
        return -1;
    }
    // What is under way on one of them keeps its record, its reply buffer and its abort flag.
    if (!IsFree(source, onSource) || !IsFree(destination, onDestination)) {
        CoreConsolePrintText(source->console, commandInProgress);
        return -1;
    }
    Session* const sides[] = {source, destination};
    for (Session* side : sides) {
        side->progress = PointerFromWord<TransferRecord>(item->record);
        side->abortFlag.Store(0);
    }
    const char type = static_cast<char>(ShellGetTransferType(item->source));
    const i32 result = ServerToServer(source, destination, item, type);
    for (Session* side : sides) {
        side->progress = nullptr;
        side->abortFlag.Store(0);
    }
    return result;
}

}  // namespace quennet
