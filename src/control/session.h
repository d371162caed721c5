#pragma once
// One connection to one server: the session, which lies right behind its FtpHandle in one block.

#include <winsock.h>

#include "control/shared_word.h"
#include "host/grow_buffer.h"
#include "host/records.h"

namespace quennet {

/// A socket as records hold it; `noSocket` when closed.
using SocketNumber = u32;
constexpr SocketNumber noSocket = 0xFFFFFFFF;

constexpr u32 replyBufferSize = 4096;
constexpr u32 pathSize = 260;  // of every text field that holds a directory or a path

/// What failed on the local side of a transfer; the server's word does not count then.
enum class LocalFailure : u32 { none, open, seek, read, write, close, memory, tooLong };

#pragma pack(push, 1)

/// The module's own record of a connection. The host passes its address back in messages 21, 22
/// and 46. The handle in front of it ends on an odd byte, so the first bytes bring the words to
/// 4-byte boundaries; words that threads share must stay on them.
struct Session {
    u8 alignment1[3];
    FtpHandle* handle;
    WindowNumber console;         // first argument of every CoreConsolePrint
    WindowNumber watchdogWindow;  // 0 when there is none
    u32 timeoutSeconds;           // the watchdog's time, 0 for none
    u32* wsaUseCount;             // use counter of the socket library, the host's
    SiteRecord site;
    u8 alignment2[2];
    i32 firstCode;   // first valid code of the reply being read, 0 before a reply
    i32 replyDepth;  // lines read of the current reply, 0 between replies
    char replyBuffer[replyBufferSize];
    char transferType;  // representation type last set on the server
    u8 alignment3[3];
    u16 port;      // control port in host byte order
    i16 protocol;  // protocol number of "tcp"
    SocketNumber controlSocket;
    SocketNumber dataSocket;    // the connected data socket
    SocketNumber listenSocket;  // made by the data set-up: the listener, or the passive connection
    sockaddr_in controlAddress;
    sockaddr_in dataAddress;
    SharedWord serverType;      // a ServerFamily
    SharedWord busy;            // an exchange on the control channel or a data loop is under way
    SharedWord reconnecting;    // a lost connection is being repaired
    SharedWord backgroundJobs;  // a worker uses the connection
    SharedWord abortFlag;       // the wait or loop in progress ends at its next look
    SharedWord stopRetrying;    // no further login of a first connection
    TransferRecord* progress;   // the running transfer's record, null when nothing is reported
    char hostText[pathSize];    // a text that the host keeps here
    void* findWindow;
    u16 hostCookie;
    char listingDir[pathSize];  // directory whose listing is being fetched, else empty
    u8 alignment4[sizeof(HostWord) == 8 ? 6 : 2];
    GrowBuffer cacheBlock;  // the DirCache
    u32 currentCacheIndex;  // 1-based entry of the current directory, 0 for none

    // The module's bookkeeping beside the fields above.
    SharedWord users;           // messages and workers that work on this session
    SharedWord exchangeThread;  // id of the thread whose exchange it is, 0 for none
    SharedWord exchangeLender;  // id of the thread that lends its exchange to listings, 0 for none
    SharedWord closing;         // the end of the connection has been claimed
    u32 logins;                 // control connections made so far
    u32 doubtfulReplies;        // those that some servers leave out
    u32 owedReplies;            // replies that the server still has to send for what is over
    u32 displaced;              // 1 when a repair could not go back to where the server stood
    u32 restartTyped;           // 1 when a person has told the server where to begin
    LocalFailure localFailure;  // what failed on the local side of the transfer
    char visitedDir[pathSize];  // where message 30 took the server; empty for the session's own
};

#pragma pack(pop)

// The block comes from the host's allocator on a boundary of at least 8 bytes.
constexpr std::size_t sessionOffset = sizeof(FtpHandle);
#define QUENNET_ON_WORD_BOUNDARY(field) \
    static_assert((sessionOffset + offsetof(Session, field)) % 4 == 0, #field)
QUENNET_ON_WORD_BOUNDARY(watchdogWindow);
QUENNET_ON_WORD_BOUNDARY(serverType);
QUENNET_ON_WORD_BOUNDARY(busy);
QUENNET_ON_WORD_BOUNDARY(reconnecting);
QUENNET_ON_WORD_BOUNDARY(backgroundJobs);
QUENNET_ON_WORD_BOUNDARY(abortFlag);
QUENNET_ON_WORD_BOUNDARY(stopRetrying);
QUENNET_ON_WORD_BOUNDARY(users);
QUENNET_ON_WORD_BOUNDARY(exchangeThread);
QUENNET_ON_WORD_BOUNDARY(exchangeLender);
QUENNET_ON_WORD_BOUNDARY(closing);
QUENNET_ON_WORD_BOUNDARY(controlAddress);
#undef QUENNET_ON_WORD_BOUNDARY
// The host appends to it as to any record of its own.
static_assert((sessionOffset + offsetof(Session, cacheBlock)) % alignof(GrowBuffer) == 0);

/// The session of a live handle; null for a null handle or one whose tag is not live.
Session* SessionFromHandle(FtpHandle* handle);

/// Counts the calling message or worker among the session's users while it stands, so that the
/// end of the connection waits for it. A null session is allowed.
class SessionUse {
  public:
    explicit SessionUse(Session* session) : session_(session) {
        if (session_ != nullptr) {
            session_->users.Add(1);
        }
    }
    ~SessionUse() {
        if (session_ != nullptr) {
            session_->users.Subtract(1);
        }
    }
    SessionUse(const SessionUse&) = delete;
    SessionUse& operator=(const SessionUse&) = delete;

  private:
    Session* session_;
};

/// Copies a text into a field of `size` bytes. A text that does not fit leaves the field as it is
/// and gives false: nothing is ever cut.
bool StoreText(char* field, u32 size, const char* text);

}  // namespace quennet
