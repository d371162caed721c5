#include "control/lifecycle.h"

#include "control/command.h"
#include "control/connect.h"
#include "control/exchange.h"
#include "control/login.h"
#include "control/message_wait.h"
#include "control/sockets.h"
#include "control/watchdog.h"
#include "control/worker.h"
#include "find/find_window.h"
#include "host/message.h"
#include "host/process_clock.h"
#include "host/services.h"
#include "listing/cache.h"
#include "sites/connect_dialog.h"

namespace quennet {

namespace {

constexpr u16 defaultPort = 21;
constexpr u32 defaultTimeoutSeconds = 30;

/// The block of a new connection, with all that does not depend on the dialog; null without memory.
Session* NewSession(WindowNumber console, u8 panelId, u32* wsaUseCount) {
    auto* handle = static_cast<FtpHandle*>(CoreAlloc(sizeof(FtpHandle) + sizeof(Session)));
    if (handle == nullptr) {
        return nullptr;
    }
    auto* session = reinterpret_cast<Session*>(handle + 1);
    handle->connectClock = ProcessClock();
    session->handle = handle;
    session->console = console;
    session->wsaUseCount = wsaUseCount;
    handle->tag = liveHandleTag;
    handle->panelId = panelId;
    handle->session = WordFromPointer(session);
    return session;
}

void PrintBanner(WindowNumber console) {
    char date[64] = "";
    char time[64] = "";
    SYSTEMTIME now{};
    GetLocalTime(&now);
    GetDateFormatA(LOCALE_USER_DEFAULT, DATE_SHORTDATE, &now, nullptr, date, sizeof date);
    GetTimeFormatA(LOCALE_USER_DEFAULT, TIME_NOSECONDS, &now, nullptr, time, sizeof time);
    CoreConsolePrint()(console, "------->   %s  %s", date, time);
}

void PrepareConnection(Session* session) {
    session->controlSocket = noSocket;
    session->dataSocket = noSocket;
    session->listenSocket = noSocket;
    session->serverType.Store(0);
    session->transferType = 'A';
    session->timeoutSeconds = defaultTimeoutSeconds;
    const u16 port = ParsePort(session->site.host);
    session->port = port != 0 ? port : defaultPort;
}

/// Starts the login. A thread that does not start leaves the connection as a failed one.
void StartConnecting(Session* session) {
    session->backgroundJobs.Add(1);
    session->users.Add(1);
    KeepExchange(session);
    if (!StartWorker(ConnectWorker, session)) {
        StoreText(session->replyBuffer, replyBufferSize, "No thread for the connection.");
        session->stopRetrying.Store(1);
        ConnectWorker(session);
    }
}

/// Waits until the holder is empty, and serves the messages of this thread meanwhile: the find
/// window of the connection that ends may live here.
void WaitForEnd(HostWord* holder) {
    constexpr u32 pauseMilliseconds = 10;
    MessageWait wait;
    while (HandleInHolder(holder) != nullptr) {
        wait.Pause(pauseMilliseconds);
    }
}

bool IsInUse(Session* session) {
    return session->backgroundJobs.IsSet() || session->busy.IsSet() || session->users.IsSet();
}

void CloseSockets(Session* session) {
    if (session->controlSocket != noSocket) {
        SendCommandText(session, "QUIT");
        session->controlSocket =
            CloseSocketGracefully(session, session->controlSocket, shutdownBoth);
    }
    session->dataSocket = CloseSocketGracefully(session, session->dataSocket, shutdownBoth);
    session->listenSocket = CloseSocketGracefully(session, session->listenSocket, shutdownBoth);
}

void EndSession(Session* session) {
    constexpr u32 pauseMilliseconds = 100;
    session->stopRetrying.Store(1);
    MessageWait wait;
    for (u32 waited = 0; IsInUse(session); waited += pauseMilliseconds) {
        PressFindRun(session, waited);
        wait.Pause(pauseMilliseconds);
    }
    CloseFindWindow(session);
    CloseSockets(session);
    ReleaseWinsock(session->wsaUseCount);
    LetGoOfWatchdogWindow(session);
}

/// Empties the holder, inside the lock under which the others look at the handle that it holds: who
/// frees the handle then does so behind them.
FtpHandle* TakeHandle(HostWord* holder) {
    const ListLock lock;
    return ExchangeHolder(holder, nullptr);
}

DWORD WINAPI DisconnectWorker(void* argument) {
    auto* holder = static_cast<HostWord*>(argument);
    FtpHandle* handle = HandleInHolder(holder);
    Session* session = SessionFromHandle(handle);
    if (session != nullptr) {
        EndSession(session);
    }
    if (handle != nullptr) {
        ShellPanelClosed(session, handle->panelId);
        if (session != nullptr) {
            FreeDirCache(session);
        }
        // Nobody finds a dead handle in the holder, and once that is empty it may be gone itself.
        ShellFreeHandle(TakeHandle(holder));
    }
    return 0;
}

/// Claims the end of the connection and starts its worker. Where no thread can be had, the calling
/// one is the worker if it need not wait for anybody: a callback of a message that is under way
/// would wait for itself. False when it would.
bool StartDisconnecting(HostWord* holder) {
    Session* session = nullptr;
    {
        const ListLock lock;
        FtpHandle* handle = HandleInHolder(holder);
        session = SessionFromHandle(handle);
        if (handle == nullptr || (session != nullptr && session->closing.Exchange(1) != 0)) {
            return true;
        }
    }
    if (StartWorker(DisconnectWorker, holder)) {
        return true;
    }
    if (session != nullptr && IsInUse(session)) {
        session->closing.Store(0);
        return false;
    }
    DisconnectWorker(holder);
    return true;
}

bool HoldsConnection(HostWord* holder) {
    const ListLock lock;
    return SessionFromHandle(HandleInHolder(holder)) != nullptr;
}

/// Ends what an earlier connection left in the holder.
void EmptyHolder(HostWord* holder) {
    if (HoldsConnection(holder)) {
        if (StartDisconnecting(holder)) {
            WaitForEnd(holder);
        } else {
            DisconnectWorker(holder);
        }
    }
    ShellFreeHandle(TakeHandle(holder));
}

}  // namespace

void ConnectRequest(HWND owner, HostWord* holder, WindowNumber console, u8 panelId,
                    u32* wsaUseCount, u16 cookie, ConnectParams* params) {
    if (holder == nullptr) {
        return;
    }
    EmptyHolder(holder);
    Session* session = NewSession(console, panelId, wsaUseCount);
    if (session == nullptr) {
        return;
    }
    if (AcquireWinsock(console, wsaUseCount) != 0) {
        ShellReportError(owner, winsockFailedText);
        ShellFreeHandle(session->handle);
        return;
    }
    params->site = WordFromPointer(&session->site);
    const INT_PTR accepted = DialogBoxParamA(PointerFromWord<HINSTANCE__>(params->instance),
                                             MAKEINTRESOURCEA(connectDialogTemplate), owner,
                                             ConnectDialogProc, reinterpret_cast<LPARAM>(params));
    if (accepted <= 0) {
        ShellFreeHandle(session->handle);
        ReleaseWinsock(wsaUseCount);
        return;
    }
    session->watchdogWindow = CreateWatchdogWindow(
        PointerFromWord<HINSTANCE__>(params->watchdogInstance), console, holder);
    PrintBanner(console);
    PrepareConnection(session);
    session->hostCookie = cookie;
    FtpHandle* handle = session->handle;
    StartConnecting(session);
    ExchangeHolder(holder, handle);
}

void DisconnectRequest(HostWord* holder) {
    if (holder != nullptr) {
        StartDisconnecting(holder);
    }
}

}  // namespace quennet
