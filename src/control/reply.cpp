// How a reply is read
// -------------------
//
// Two layers. ReadLine takes one line off the socket and not a byte more, so that a reply that the
// server sends early stays where the next read looks for it:
//
//     peek 82 bytes        220-Welcome to the machine\r\n220 Ready\r\n
//     take up to the LF    ^^^^^^^^^^^^^^^^^^^^^^^^^^^^    the rest stays on the socket
//
// A line that is longer than the peek is completed byte by byte until its LF or 4000 bytes. The
// watchdog runs from the first wait to the end of the line, so a server that sends a byte now and
// then gains nothing by it.
//
// ReadReply reads lines until the reply is complete. The first line with a valid code decides, and
// the reply ends with a line of that code without a '-' behind it; lines between may begin with
// anything:
//
//     150-x       firstCode = 150, more to come
//     text        no code: a line between
//     226 y       another code: a line between
//     150 z       the end
//
// A first line with a number that no reply can have is passed over as text; a first line without
// any number ends the reply at once, without a result. Four things end a reply early: the
// watchdog or an abort (code 421), the end of the connection (the class of its first code), and
// 10,000 lines or ten times the time-out, 5 minutes, from its first line on (a failed read). The
// welcome has twice the time-out, a minute, with all preliminary replies before it.
//
// Staying in step
// ---------------
//
// A command that gave up waiting leaves its reply behind: it will come, and the next command would
// take it for its own. So the session counts what the server owes. An aborted wait for a reply owes
// one; so does a transfer that was announced and ended without its final reply. After ABOR most
// servers send two replies and some send one, so the second is in doubt. A new connection owes
// nothing. SettleOwedReplies takes the debts off the socket before the next command goes out; when
// one does not come that must come, the connection is made anew, since a reply that is on its way
// would be taken for another.

#include "control/reply.h"

#include <cstdlib>
#include <cstring>

#include "control/server_family.h"
#include "control/sockets.h"
#include "control/watchdog.h"
#include "host/process_clock.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr int peekBytes = 82;
constexpr int lineBytes = 4000;
constexpr int replyLines = 10000;
constexpr int codeOfAbort = 421;
constexpr int preliminary = 1;   // the class of a reply that another one follows
constexpr int mostReplies = 16;  // read in a row for what is over

constexpr u32 defaultTimeoutSeconds = 30;  // where the session has none
constexpr u32 timeoutsOfReply = 10;
constexpr u32 timeoutsOfWelcome = 2;

/// The time that a reply may take, in time-outs of the session.
class Patience {
  public:
    Patience(const Session* session, u32 timeouts)
        : milliseconds_(
              timeouts * 1000 *
              (session->timeoutSeconds != 0 ? session->timeoutSeconds : defaultTimeoutSeconds)) {}

    /// Begins to count; a second call changes nothing.
    void Begin() {
        if (!begun_) {
            begun_ = true;
            start_ = ProcessClock();
        }
    }

    bool IsOver() const { return begun_ && ProcessClock() - start_ >= milliseconds_; }

  private:
    u32 milliseconds_;
    u32 start_ = 0;
    bool begun_ = false;
};

enum class LineEnd { line, aborted, closed, failed };

struct Line {
    LineEnd end;
    int code;
};

bool IsReplyCode(int code) {
    return code >= 100 && code <= 599;
}

/// Waits for the first byte of a line and peeks at it. Gives the number of bytes seen.
int PeekLine(Session* session, LineEnd* end) {
    const int readable = WaitSocketReadable(session->controlSocket, session->abortFlag);
    if (readable == 0) {
        *end = LineEnd::aborted;
        return 0;
    }
    const int seen = readable < 0
                         ? -1
                         : static_cast<int>(recv(session->controlSocket, session->replyBuffer,
                                                 peekBytes, MSG_PEEK));
    if (seen < 0) {
        ReportSocketError(session->console);
        *end = LineEnd::failed;
        return 0;
    }
    *end = seen == 0 ? LineEnd::closed : LineEnd::line;
    return seen;
}

/// How many of the `seen` bytes belong to the line.
int BytesOfLine(const char* text, int seen, bool endsWithReturn) {
    int count = seen;
    for (int index = 0; index < count; ++index) {
        if (text[index] == 0 || text[index] == '\n') {
            count = index + 1;
        }
    }
    if (endsWithReturn && count > 80) {
        const void* found = std::memchr(text, '\r', static_cast<std::size_t>(count));
        if (found != nullptr) {
            count = static_cast<int>(static_cast<const char*>(found) - text) + 2;
        }
    }
    return count;
}

/// Takes the line off the socket whose first `seen` bytes stand in the buffer already.
void TakeLine(Session* session, int seen) {
    const bool endsWithReturn = session->serverType.Load() == static_cast<u32>(ServerFamily::exos);
    char* end = session->replyBuffer;
    int count = BytesOfLine(end, seen, endsWithReturn);
    for (int total = 0; total < lineBytes; count = 1) {
        if (total > 0 && WaitSocketReadable(session->controlSocket, session->abortFlag) <= 0) {
            break;
        }
        const int taken = static_cast<int>(recv(session->controlSocket, end, count, 0));
        if (taken <= 0) {
            break;
        }
        total += taken;
        end += taken;
        if (end[-1] == '\n') {
            break;
        }
    }
    std::memset(end, 0, static_cast<std::size_t>(session->replyBuffer + replyBufferSize - end));
}

int CodeOfLine(const char* text) {
    char digits[4] = {};
    std::memcpy(digits, text, 3);
    return std::atoi(digits);
}

void TrimTail(char* text) {
    constexpr std::size_t untrimmed = 2;
    std::size_t length = std::strlen(text);
    while (length > untrimmed && std::strchr("\n\r ", text[length - 1]) != nullptr) {
        text[--length] = 0;
    }
}

Line ReadLine(Session* session) {
    if (session->controlSocket == noSocket) {
        return {LineEnd::closed, 0};
    }
    const BusyMark busy(session);
    session->abortFlag.Store(0);
    std::memset(session->replyBuffer, 0, replyBufferSize);
    const WatchdogArmed armed(session);
    LineEnd end = LineEnd::line;
    const int seen = PeekLine(session, &end);
    if (end == LineEnd::failed || end == LineEnd::aborted) {
        return {end, end == LineEnd::failed ? -1 : codeOfAbort};
    }
    if (seen > 0) {
        TakeLine(session, seen);
    }
    const int code = session->abortFlag.IsSet() ? codeOfAbort : CodeOfLine(session->replyBuffer);
    TrimTail(session->replyBuffer);
    return {end, code};
}

/// One line of a reply, printed, with what it does to `firstCode`. True when more lines belong to
/// the reply.
bool TakeReplyLine(Session* session, const Line& line) {
    int code = line.code;
    bool more = (code >= 1 && code <= 99) || code > 599 || session->replyBuffer[3] == '-';
    if (session->replyBuffer[0] != 0) {
        CoreConsolePrintText(session->console, session->replyBuffer);
    }
    if (session->abortFlag.IsSet()) {
        code = codeOfAbort;
        more = false;
        session->firstCode = codeOfAbort;
        ++session->owedReplies;
    }
    const bool isFirstLine = session->replyDepth == 1;
    if ((isFirstLine || session->firstCode == 0) && IsReplyCode(code)) {
        session->firstCode = code;
    }
    return more || (session->firstCode > 0 && !isFirstLine && code != session->firstCode);
}

/// The lines of a reply behind the `replyDepth` that are read already, to its end. The results of
/// ReadReply.
int ReadLines(Session* session, Patience patience) {
    for (bool more = true; more; patience.Begin()) {
        if (++session->replyDepth > replyLines || patience.IsOver()) {
            CoreConsolePrintText(session->console, "Reply without an end.");
            session->firstCode = 0;
            session->replyDepth = 0;
            ++session->owedReplies;  // its rest stands on the socket
            return -1;
        }
        const Line line = ReadLine(session);
        if (line.end == LineEnd::failed && session->replyDepth == 1) {
            session->replyDepth = 0;
            return -1;
        }
        if (line.end == LineEnd::failed || line.end == LineEnd::closed) {
            break;
        }
        more = TakeReplyLine(session, line);
    }
    session->replyDepth = 0;
    return IsReplyCode(session->firstCode) ? session->firstCode / 100 : 0;
}

int ReadReplyWithin(Session* session, Patience patience) {
    if (session->controlSocket == noSocket) {
        return 0;
    }
    session->firstCode = 0;
    session->replyDepth = 0;
    return ReadLines(session, patience);
}

}  // namespace

int ReadReplyLine(Session* session) {
    return ReadLine(session).code;
}

int ReadReply(Session* session) {
    return ReadReplyWithin(session, Patience(session, timeoutsOfReply));
}

int ReadWelcome(Session* session) {
    Patience patience(session, timeoutsOfWelcome);
    patience.Begin();
    int result = ReadReplyWithin(session, patience);
    while (result == preliminary && !session->abortFlag.IsSet()) {
        NoteServerBanner(session);
        result = ReadReplyWithin(session, patience);
    }
    return result;
}

int ReadFinalReply(Session* session) {
    int result = preliminary;
    for (int reply = 0; reply < mostReplies && result == preliminary; ++reply) {
        result = ReadReply(session);
    }
    session->owedReplies += result == preliminary ? 1 : 0;
    return result;
}

void ReadRestOfReply(Session* session) {
    const int code = CodeOfLine(session->replyBuffer);
    session->firstCode = IsReplyCode(code) ? code : 0;
    session->replyDepth = 1;
    const bool goesOn = session->replyBuffer[3] == '-';
    const int result =
        goesOn ? ReadLines(session, Patience(session, timeoutsOfReply)) : session->firstCode / 100;
    session->replyDepth = 0;
    if (result == preliminary) {
        ReadFinalReply(session);
    }
}

bool ReplyComesSoon(Session* session) {
    for (int second = 0; second < 2; ++second) {
        const int readable = SocketReadable(session->controlSocket);
        if (readable != 0) {
            return readable > 0;
        }
        if (session->abortFlag.IsSet()) {
            return false;
        }
    }
    return false;
}

bool SettleOwedReplies(Session* session) {
    u32 awaited = session->owedReplies + session->doubtfulReplies;
    if (awaited == 0) {
        return true;
    }
    // A flag that is still set belongs to what is over.
    session->abortFlag.Store(0);
    u32 missing = session->owedReplies;
    session->owedReplies = 0;
    session->doubtfulReplies = 0;
    for (int reply = 0; reply < mostReplies; ++reply) {
        const bool comes =
            awaited > 0 ? ReplyComesSoon(session) : SocketReadableNow(session->controlSocket) > 0;
        const int result = comes ? ReadReply(session) : 0;
        // A reply whose rest did not come is owed as before.
        if (result <= 0 || session->owedReplies > 0) {
            break;
        }
        if (result != preliminary) {
            awaited -= awaited > 0 ? 1 : 0;
            missing -= missing > 0 ? 1 : 0;
        }
    }
    return missing == 0 && session->owedReplies == 0;
}

FinalReply::~FinalReply() {
    if (!read_ && session_->logins == logins_) {
        ++(doubtful_ ? session_->doubtfulReplies : session_->owedReplies);
    }
}

int FinalReply::Read() {
    read_ = true;  // one that does not come is owed already
    return ReadFinalReply(session_);
}

}  // namespace quennet
