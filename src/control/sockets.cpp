#include "control/sockets.h"

#include <cstdio>

#include "host/services.h"

namespace quennet {

namespace {

struct SocketError {
    int code;
    const char* text;
};

constexpr SocketError socketErrors[] = {
    {10004, "Blocking call cancelled"},
    {10022, "Version not supported by DLL"},
    {10024, "No file descriptors available"},
    {10035, "Socket marked as non-blocking and SO_LINGER set not 0"},
    {10036, "Blocking operation in progress"},
    {10038, ""},
    {10041, "Protocol wrong type for this socket"},
    {10043, "Protocol not supported"},
    {10044, "Socket type not supported for address family"},
    {10047, "Address family not supported"},
    {10048, "Address already in use"},
    {10049, "Address not available"},
    {10050, "Network subsystem failed"},
    {10053, "Connection aborted"},
    {10054, "Connection reset"},
    {10055, "No buffer space available"},
    {10057, "Not connected"},
    {10060, "Connection timed out"},
    {10061, "Connection refused"},
    {10064, "Host down"},
    {10065, "Host unreachable"},
    {10091, "WinSock not present or not responding"},
    {10092, "WinSock version not supported"},
    {10093, "WSA Startup not initialized"},
    {11001, "Authoritive: Host not found"},
    {11002, "Non-authoritive: host not found or server failure"},
    {11003, "Non-recoverable: refused or not implemented"},
    {11004, "Valid name, no data record for type"},
};

constexpr int interruptedCode = 10004;
constexpr int timedOutCode = 10060;
constexpr int wouldBlockCode = 10035;
constexpr int connectSeconds = 60;

enum class Direction { read, write };

int TestSocket(SocketNumber socket, Direction direction, int seconds) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(socket, &set);
    timeval timeout{};
    timeout.tv_sec = seconds;
    const bool reading = direction == Direction::read;
    // The first argument is not looked at on the module's home platform; elsewhere it may be.
    return select(static_cast<int>(socket) + 1, reading ? &set : nullptr, reading ? nullptr : &set,
                  nullptr, &timeout);
}

void SetBlocking(SocketNumber socket, bool blocking) {
    u_long nonBlocking = blocking ? 0 : 1;
    ioctlsocket(socket, static_cast<long>(FIONBIO), &nonBlocking);
}

int PendingError(SocketNumber socket) {
    int error = 0;
    int size = sizeof error;
    if (getsockopt(socket, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) != 0) {
        return WSAGetLastError();
    }
    return error;
}

/// The number of the error that ended a connect under way, 0 when it stands.
int AwaitConnection(SocketNumber socket, const SharedWord& abortFlag) {
    for (int second = 0; second < connectSeconds; ++second) {
        const int writable = SocketWritable(socket);
        if (writable < 0) {
            return WSAGetLastError();
        }
        const int error = PendingError(socket);
        if (error != 0 || writable > 0) {
            return error;
        }
        if (abortFlag.IsSet()) {
            return interruptedCode;
        }
    }
    return timedOutCode;
}

/// The number of the error that a connect ended with, 0 when it stands.
int ConnectError(SocketNumber socket, const sockaddr_in& address, const SharedWord& abortFlag) {
    SetBlocking(socket, false);
    int error = 0;
    if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        error = WSAGetLastError();
        if (error == wouldBlockCode) {
            error = AwaitConnection(socket, abortFlag);
        }
    }
    SetBlocking(socket, true);
    return error;
}

void CancelBlockingCall(Session* session) {
    if (WSAIsBlocking()) {
        WSACancelBlockingCall();
        session->abortFlag.Store(1);
    }
}

void DrainSocket(Session* session, SocketNumber socket) {
    constexpr u32 pauseMilliseconds = 10;
    while (!session->abortFlag.IsSet()) {
        if (WaitSocketReadable(socket, session->abortFlag) <= 0 ||
            recv(socket, session->replyBuffer, replyBufferSize, 0) <= 0) {
            return;
        }
        Sleep(pauseMilliseconds);
    }
}

}  // namespace

void SocketErrorText(char* buffer, u32 size) {
    buffer[0] = 0;
    const int code = WSAGetLastError();
    for (const SocketError& error : socketErrors) {
        if (error.code == code) {
            CoreCopyText(buffer, error.text, size);
            return;
        }
    }
    char number[32];
    std::snprintf(number, sizeof number, "Error %ld", static_cast<long>(code));
    CoreCopyText(buffer, number, size);
}

void ReportSocketError(WindowNumber console) {
    char text[256];
    SocketErrorText(text, sizeof text);
    if (text[0] != 0) {
        CoreConsolePrintText(console, text);
    }
}

void ReportSocketErrorCode(WindowNumber console, const char* format) {
    CoreConsolePrint()(console, format, WSAGetLastError());
}

void ReportTextId(WindowNumber console, u32 textId) {
    char text[256] = "";
    CoreLoadText(textId, text, sizeof text);
    CoreConsolePrintText(console, text);
}

int SocketReadable(SocketNumber socket) {
    return TestSocket(socket, Direction::read, 1);
}

int SocketWritable(SocketNumber socket) {
    return TestSocket(socket, Direction::write, 1);
}

int SocketReadableNow(SocketNumber socket) {
    return TestSocket(socket, Direction::read, 0);
}

bool PeerHasClosed(SocketNumber socket) {
    char next = 0;
    return socket != noSocket && SocketReadableNow(socket) > 0 &&
           recv(socket, &next, sizeof next, MSG_PEEK) == 0;
}

int WaitSocketReadable(SocketNumber socket, const SharedWord& abortFlag) {
    for (;;) {
        const int readable = SocketReadable(socket);
        if (readable != 0) {
            return readable;
        }
        if (abortFlag.IsSet()) {
            return 0;
        }
    }
}

int WaitSocketWritable(WindowNumber console, SocketNumber socket, const SharedWord* abortFlag) {
    constexpr int tests = 10;
    constexpr u32 pauseMilliseconds = 100;
    for (int test = 0; test < tests; ++test) {
        if (test > 0) {
            Sleep(pauseMilliseconds);
        }
        const bool aborted = abortFlag != nullptr && abortFlag->IsSet();
        const int writable = aborted ? 0 : SocketWritable(socket);
        if (writable > 0 || aborted) {
            return 0;
        }
        if (writable < 0) {
            ReportSocketError(console);
            return writable;
        }
    }
    return 0;
}

bool ConnectSocket(Session* session, SocketNumber socket, const sockaddr_in& address,
                   const char* hostText) {
    session->abortFlag.Store(0);
    const int error = ConnectError(socket, address, session->abortFlag);
    if (error == 0) {
        return true;
    }
    std::snprintf(session->replyBuffer, replyBufferSize, "Can't connect to %s %s service port %u.",
                  hostText, "ftp", static_cast<unsigned>(ntohs(address.sin_port)));
    CoreConsolePrintText(session->console, session->replyBuffer);
    WSASetLastError(error);
    ReportSocketError(session->console);
    closesocket(socket);
    return false;
}

void KeepSocketAlive(SocketNumber socket) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, reinterpret_cast<const char*>(&on), sizeof on);
}

int AcquireWinsock(WindowNumber console, u32* useCount) {
    constexpr u16 version = 0x0101;
    std::atomic_ref<u32> uses(*useCount);
    if (uses.fetch_add(1) != 0) {
        return 0;
    }
    WSADATA data;
    const int code = WSAStartup(version, &data);
    if (code != 0) {
        uses.fetch_sub(1);
        if (console != 0) {
            CoreShowMessage(console, winsockFailedText);
        }
    }
    return code;
}

void ReleaseWinsock(u32* useCount) {
    if (useCount == nullptr) {
        return;
    }
    std::atomic_ref<u32> uses(*useCount);
    u32 count = uses.load();
    do {
        if (count == 0) {
            return;
        }
    } while (!uses.compare_exchange_weak(count, count - 1));
    if (count == 1) {
        if (WSAIsBlocking()) {
            WSACancelBlockingCall();
        }
        WSACleanup();
    }
}

SocketNumber CloseSocketGracefully(Session* session, SocketNumber socket, int how) {
    if (socket == noSocket) {
        return noSocket;
    }
    CancelBlockingCall(session);
    shutdown(socket, how);
    if (how == shutdownSend) {
        DrainSocket(session, socket);
    }
    linger immediate{};
    immediate.l_onoff = 1;
    immediate.l_linger = 0;
    setsockopt(socket, SOL_SOCKET, SO_LINGER, reinterpret_cast<const char*>(&immediate),
               sizeof immediate);
    if (closesocket(socket) != 0) {
        ReportSocketError(session->console);
        return socket;
    }
    return noSocket;
}

}  // namespace quennet
