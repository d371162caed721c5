#include "transfer/data_connection.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "control/command.h"
#include "control/sockets.h"
#include "control/watchdog.h"

namespace quennet {

namespace {

constexpr int codeNotUnderstood = 500;
constexpr int interruptedCode = 10004;
constexpr int connectionAbortedCode = 10053;
constexpr int hostAddressNumbers = 6;

bool ReadSixNumbers(const char* text, u32* numbers) {
    text += std::strcspn(text, "0123456789");
    for (int index = 0; index < hostAddressNumbers; ++index) {
        if (index > 0 && *text++ != ',') {
            return false;
        }
        char* end = nullptr;
        numbers[index] = static_cast<u32>(std::strtol(text, &end, 10));
        if (end == text) {
            return false;
        }
        text = end;
    }
    return true;
}

SocketNumber NewDataSocket(Session* session) {
    const auto data = static_cast<SocketNumber>(socket(AF_INET, SOCK_STREAM, session->protocol));
    if (data == noSocket) {
        ReportSocketError(session->console);
    } else {
        KeepSocketAlive(data);
    }
    return data;
}

bool AllowReuse(Session* session, SocketNumber data) {
    const int on = 1;
    if (setsockopt(data, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&on), sizeof on) ==
        0) {
        return true;
    }
    ReportSocketError(session->console);
    closesocket(data);
    return false;
}

bool SocketName(SocketNumber socket, sockaddr_in* address) {
    int size = sizeof *address;
    return getsockname(socket, reinterpret_cast<sockaddr*>(address), &size) == 0;
}

/// Lets a socket listen on a free port. Fills in the port to tell the server, with the address that
/// the control connection has on this side.
bool ListenForServer(Session* session, SocketNumber data, sockaddr_in* told) {
    sockaddr_in any{};
    any.sin_family = AF_INET;
    sockaddr_in bound{};
    if (bind(data, reinterpret_cast<const sockaddr*>(&any), sizeof any) != 0 ||
        !SocketName(data, &bound) || listen(data, 1) != 0 ||
        !SocketName(session->controlSocket, told)) {
        ReportSocketError(session->console);
        return false;
    }
    told->sin_port = bound.sin_port;
    return true;
}

/// True when the server has closed or reset a connection and all that it sent has been taken.
bool HasEnded(SocketNumber socket) {
    char next = 0;
    return SocketReadableNow(socket) != 0 && recv(socket, &next, sizeof next, MSG_PEEK) <= 0;
}

/// Waits until the server's data connection can be accepted. False, with the error set, when the
/// wait is aborted, and when the control connection has ended: nobody would connect any more.
bool WaitForServer(Session* session) {
    for (;;) {
        const bool ended = HasEnded(session->controlSocket);
        const int readable = ended ? SocketReadableNow(session->listenSocket)
                                   : SocketReadable(session->listenSocket);
        if (readable != 0) {
            return readable > 0;
        }
        if (ended || session->abortFlag.IsSet()) {
            WSASetLastError(ended ? connectionAbortedCode : interruptedCode);
            return false;
        }
    }
}

SocketNumber AcceptData(Session* session) {
    const WatchdogArmed armed(session);
    if (!WaitForServer(session)) {
        return noSocket;
    }
    int size = sizeof session->controlAddress;
    return static_cast<SocketNumber>(accept(
        session->listenSocket, reinterpret_cast<sockaddr*>(&session->controlAddress), &size));
}

}  // namespace

int SendPortCommand(Session* session, const u8* addressBytes, const u8* portBytes) {
    char command[64];
    std::snprintf(command, sizeof command, "%s %d,%d,%d,%d,%d,%d", "PORT", addressBytes[0],
                  addressBytes[1], addressBytes[2], addressBytes[3], portBytes[0], portBytes[1]);
    const int result = SendCommandText(session, command);
    if (result == 2 || result == -1 || session->firstCode == codeNotUnderstood) {
        return result;
    }
    return SendCommandText(session, command);
}

int SendPasvCommand(Session* session, u8* numbers, u16* port) {
    constexpr int codeLength = 3;
    u32 read[hostAddressNumbers];
    if (SendCommandText(session, "PASV") == 2 &&
        ReadSixNumbers(session->replyBuffer + codeLength, read)) {
        for (int index = 0; numbers != nullptr && index < hostAddressNumbers; ++index) {
            numbers[index] = static_cast<u8>(read[index]);
        }
        if (port != nullptr) {
            *port = static_cast<u16>(read[4] * 256 + read[5]);
        }
    }
    return session->firstCode / 100;
}

SocketNumber OpenPassiveData(Session* session) {
    const SocketNumber data = NewDataSocket(session);
    if (data == noSocket || !AllowReuse(session, data)) {
        return noSocket;
    }
    u16 port = 0;
    if (SendPasvCommand(session, nullptr, &port) != 2 || port == 0) {
        closesocket(data);
        return noSocket;
    }
    session->dataAddress = session->controlAddress;
    session->dataAddress.sin_port = htons(port);
    if (!ConnectSocket(session, data, session->dataAddress, session->site.host)) {
        return noSocket;
    }
    return data;
}

SocketNumber OpenActiveData(Session* session) {
    const SocketNumber data = NewDataSocket(session);
    if (data == noSocket) {
        return noSocket;
    }
    sockaddr_in told{};
    if (!ListenForServer(session, data, &told)) {
        closesocket(data);
        return noSocket;
    }
    u8 address[4];
    u8 port[2];
    std::memcpy(address, &told.sin_addr, sizeof address);
    std::memcpy(port, &told.sin_port, sizeof port);
    if (SendPortCommand(session, address, port) != 2) {
        closesocket(data);
        return noSocket;
    }
    return data;
}

bool TellType(Session* session, char type) {
    if (session->transferType == type) {
        return true;
    }
    if (SendCommand(session, "%s %c", "TYPE", type) == -1) {
        return false;
    }
    session->transferType = type;
    return true;
}

// Servers keep a restart through all other commands, and some refuse another one while the type is
// 'A'. A new connection has none.
bool ForgetTypedRestart(Session* session, char type) {
    constexpr int done = 2;
    constexpr int waitsForTransfer = 3;
    if (session->restartTyped == 0) {
        return true;
    }
    const bool isForgotten =
        TellType(session, type) && (SendCommandText(session, "REST 0") == waitsForTransfer ||
                                    SendCommandText(session, "") == done);
    session->restartTyped = isForgotten ? 0 : session->restartTyped;
    return isForgotten;
}

bool SetUpTransfer(Session* session, char type) {
    if (!TellType(session, type)) {
        return false;
    }
    const bool passive = (session->site.siteOptions & SiteOptionPassive) != 0;
    session->listenSocket = passive ? OpenPassiveData(session) : OpenActiveData(session);
    if (session->listenSocket == noSocket) {
        return false;
    }
    // A repair during the set-up put the server back to its first type.
    if (TellType(session, type)) {
        return true;
    }
    AbandonDataSocket(session);
    return false;
}

int AwaitDataConnection(Session* session) {
    if ((session->site.siteOptions & SiteOptionPassive) != 0) {
        session->dataSocket = session->listenSocket;
        session->listenSocket = noSocket;
        return dataConnected;
    }
    session->dataSocket = AcceptData(session);
    if (session->dataSocket == noSocket) {
        ReportSocketError(session->console);
        AbandonDataSocket(session);
        return dataNotConnected;
    }
    KeepSocketAlive(session->dataSocket);
    if (!AllowReuse(session, session->dataSocket)) {
        session->dataSocket = noSocket;
        AbandonDataSocket(session);
        return dataOptionRefused;
    }
    AbandonDataSocket(session);
    return dataConnected;
}

void AbandonDataSocket(Session* session) {
    session->listenSocket = CloseSocketGracefully(session, session->listenSocket, shutdownBoth);
}

}  // namespace quennet
