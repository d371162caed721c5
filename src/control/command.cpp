#include "control/command.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "control/exchange.h"
#include "control/reconnect.h"
#include "control/reply.h"
#include "control/sockets.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr u32 lineSize = 4096;
constexpr u32 lineEndSize = 2;  // CR LF
constexpr int codeServiceClosing = 421;
constexpr int codeNotUnderstood = 500;

bool StartsWith(const char* text, const char* beginning) {
    return std::strncmp(text, beginning, std::strlen(beginning)) == 0;
}

bool RefusesLine(Session* session, const char* line) {
    const char* objection = ObjectionTo(line);
    if (objection != nullptr) {
        CoreConsolePrintText(session->console, objection);
    }
    return objection != nullptr;
}

/// Waits until the peer takes something: 1, 0 when aborted, below 0 after a failure.
int WaitUntilTaken(WindowNumber console, SocketNumber socket, const SharedWord* abortFlag) {
    while (!abortFlag->IsSet()) {
        const int writable = SocketWritable(socket);
        if (writable < 0) {
            ReportSocketError(console);
        }
        if (writable != 0) {
            return writable;
        }
    }
    return 0;
}

/// How one command is treated.
struct Manner {
    bool isRepaired;        // when it finds the connection lost
    bool takesPreliminary;  // as its reply: data follows on it
};

constexpr Manner ordinary = {true, false};
constexpr Manner ofTransfer = {true, true};
constexpr Manner ofLogin = {false, false};

/// Sends a line and reads the reply that is wanted: -1 when the connection is lost.
int SendAndRead(Session* session, const char* line, Manner manner) {
    session->firstCode = 0;  // other codes say nothing of this line
    if (SendLine(session, line) == -1) {
        return -1;
    }
    return manner.takesPreliminary ? ReadReply(session) : ReadFinalReply(session);
}

/// The same on the connection that stands, once it is in step.
int Converse(Session* session, const char* line, Manner manner) {
    if (session->controlSocket == noSocket || line[0] == 0 ||
        PeerHasClosed(session->controlSocket)) {
        return -1;
    }
    if (!session->busy.IsSet() && !SettleOwedReplies(session)) {
        return -1;
    }
    return SendAndRead(session, line, manner);
}

/// Logs in again and sends the line once more, if the session stands where it stood.
int RepairAndResend(Session* session, const char* line, Manner manner) {
    constexpr int done = 2;
    const bool isBack = Reconnect(session);
    if (isBack && line[0] == 0) {
        return done;
    }
    session->firstCode = 0;
    return isBack ? SendAndRead(session, line, manner) : -1;
}

int SendText(Session* session, const char* line, Manner manner) {
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return -1;
    }
    session->firstCode = 0;
    if (RefusesLine(session, line)) {
        return -1;
    }
    const bool isPassword = StartsWith(line, "PASS ");
    CoreConsolePrintText(session->console, isPassword ? "***" : line);
    const int result = Converse(session, line, manner);
    const bool isClosing = result == 4 && session->firstCode == codeServiceClosing;
    const bool decidesOnClosing = isPassword || StartsWith(line, "USER ");
    const bool isLost = result == -1 || (isClosing && !decidesOnClosing);
    return isLost && manner.isRepaired ? RepairAndResend(session, line, manner) : result;
}

}  // namespace

const char* ObjectionTo(const char* line) {
    if (std::strlen(line) + lineEndSize >= lineSize) {
        return "Line too long, not sent.";
    }
    if (std::strpbrk(line, "\r\n") != nullptr) {
        return "Line holds a line end, not sent.";
    }
    return nullptr;
}

int SendBlock(WindowNumber console, SocketNumber socket, const char* data, int length,
              const SharedWord* abortFlag) {
    constexpr int pieceSize = 1024;
    int sent = 0;
    while (sent < length) {
        if (abortFlag != nullptr) {
            const int taken = WaitUntilTaken(console, socket, abortFlag);
            if (taken <= 0) {
                return taken;
            }
        }
        const int rest = length - sent;
        const int piece =
            static_cast<int>(send(socket, data + sent, rest < pieceSize ? rest : pieceSize, 0));
        if (piece <= 0) {
            ReportSocketError(console);
            return piece;
        }
        sent += piece;
        const int waited = WaitSocketWritable(console, socket, abortFlag);
        if (waited < 0) {
            return waited;
        }
    }
    return sent;
}

int SendLine(Session* session, const char* text) {
    if (session->controlSocket == noSocket) {
        return -1;
    }
    if (session->busy.IsSet() && !session->abortFlag.IsSet()) {
        CoreConsolePrintText(session->console, commandInProgress);
        return -1;
    }
    if (RefusesLine(session, text)) {
        return -1;
    }
    const BusyMark busy(session);
    if (SocketWritable(session->controlSocket) == 0) {
        // Sending would wait for a server that has long stopped reading, and nothing could end it.
        CoreConsolePrintText(session->console, "The server takes no commands.");
        return -1;
    }
    char line[lineSize] = "";
    ShellAppendText(line, text, lineSize);
    ShellAppendText(line, "\r\n", lineSize);
    return SendBlock(session->console, session->controlSocket, line,
                     static_cast<int>(std::strlen(line)), nullptr);
}

int SendCommandText(Session* session, const char* line) {
    return SendText(session, line, ordinary);
}

int SendTransferCommand(Session* session, const char* line) {
    return SendText(session, line, ofTransfer);
}

int SendLoginLine(Session* session, const char* line) {
    const int result = SendText(session, line, ofLogin);
    if (result == -1) {
        session->replyBuffer[0] = 0;  // the answer to the line before says nothing of this one
    }
    return result;
}

int SendCommand(Session* session, const char* format, ...) {
    char line[lineSize];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(line, sizeof line, format, values);
    va_end(values);
    if (length < 0 || static_cast<u32>(length) >= lineSize) {
        session->firstCode = 0;
        CoreConsolePrintText(session->console, "Line too long, not sent.");
        return -1;
    }
    return SendCommandText(session, line);
}

int SendCommandAlt(Session* session, const char* command, const char* alternative) {
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return 0;
    }
    const int result = SendCommandText(session, command);
    if (result == 5 && session->firstCode == codeNotUnderstood && alternative != nullptr) {
        SendCommandText(session, alternative);
    }
    return session->firstCode / 100;
}

int SendCommandAltArg(Session* session, const char* verb, const char* alternativeVerb,
                      const char* argument) {
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return 0;
    }
    const int result = SendCommand(session, "%s %s", verb, argument);
    if (result == 5 && session->firstCode == codeNotUnderstood && alternativeVerb != nullptr) {
        SendCommand(session, "%s %s", alternativeVerb, argument);
    }
    return session->firstCode / 100;
}

}  // namespace quennet
