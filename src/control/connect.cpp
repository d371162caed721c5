#include "control/connect.h"

#include <cstdio>
#include <cstring>

#include "control/command.h"
#include "control/exchange.h"
#include "control/login.h"
#include "control/reconnect.h"
#include "control/reply.h"
#include "control/server_family.h"
#include "control/sockets.h"
#include "control/working_directory.h"
#include "host/message.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr int done = 2;
constexpr u32 reconnectFailedText = 6005;

/// False when the host's main window is gone.
bool Notify(Notification notification, LPARAM lParam) {
    return PostMessageA(hostTables.mainWindow, notifyMessage, static_cast<WPARAM>(notification),
                        lParam) != FALSE;
}

i8 SignedPanelId(const Session* session) {
    return static_cast<i8>(session->handle->panelId);
}

/// A login that ended by time-out, abort or close has left no text of its own.
void CompleteFailureText(Session* session) {
    if (session->replyBuffer[0] != 0) {
        return;
    }
    const SiteRecord& site = session->site;
    const bool throughFirewall = (site.siteOptions & SiteOptionFirewall) != 0;
    char host[sizeof site.host];
    std::memcpy(host, throughFirewall ? site.firewallHost : site.host, sizeof host);
    ParsePort(host);
    std::snprintf(session->replyBuffer, replyBufferSize, "Connection to %s failed.", host);
}

void NotifyReconnectFailed(const Session* session) {
    Notify(Notification::reconnectFailed, SignedPanelId(session));
}

/// Posts the text of a failed connection; the block becomes the host's. Without memory for it the
/// host hears what needs none, and does not wait for ever.
void NotifyConnectFailed(Session* session) {
    CompleteFailureText(session);
    void* block = CoreAlloc(1 + replyBufferSize);
    if (block == nullptr) {
        NotifyReconnectFailed(session);
        return;
    }
    auto* text = static_cast<char*>(block);
    text[0] = static_cast<char>(session->handle->panelId);
    StoreText(text + 1, replyBufferSize, session->replyBuffer);
    if (!Notify(Notification::connectFailed, reinterpret_cast<LPARAM>(text))) {
        CoreFree(&block);
    }
}

/// Asks for the server's system. The first line of the reply tells it.
void AskForSystem(Session* session) {
    constexpr char command[] = "SYST";
    if (SendLine(session, command) <= 0) {
        return;
    }
    CoreConsolePrintText(session->console, command);
    ReadReplyLine(session);
    CoreConsolePrintText(session->console, session->replyBuffer);
    ClassifySystem(session);
    if (session->abortFlag.IsSet()) {
        ++session->owedReplies;
    } else {
        ReadRestOfReply(session);
    }
}

/// Logs in and learns what the server is and where it put the session. False when the login failed.
bool LogInAndLook(Session* session) {
    ConnectWithRetries(session);
    if (session->controlSocket == noSocket) {
        return false;
    }
    AskForSystem(session);
    if (session->site.directory[0] != 0) {
        ChangeDir(session, session->site.directory);
    }
    char directory[pathSize];
    if (StoreWorkingDir(session, directory) == done) {
        SetSessionDir(session, directory);
    }
    return true;
}

void Connect(Session* session) {
    bool isLoggedIn = false;
    {
        const Exchange exchange(session, Exchange::Kept{});
        if (session->controlSocket != noSocket) {
            CoreConsolePrintText(session->console, "Already connected");
            return;
        }
        isLoggedIn = LogInAndLook(session);
    }
    if (!isLoggedIn) {
        NotifyConnectFailed(session);
    } else if (session->controlSocket != noSocket) {
        NotifyConnected(session);
    }
}

}  // namespace

void ConnectWithRetries(Session* session) {
    if (!session->stopRetrying.IsSet()) {
        LoginSession(session);
    }
    if (session->stopRetrying.IsSet() && session->controlSocket != noSocket) {
        session->controlSocket =
            CloseSocketGracefully(session, session->controlSocket, shutdownBoth);
    }
}

void NotifyConnected(Session* session) {
    ShellPanelConnected(session->handle->panelId, &session->site);
    Notify(Notification::connectionStands, 0);
    const i32 panelAndCookie = session->handle->panelId | (session->hostCookie << 8);
    Notify(Notification::connected, panelAndCookie);
}

DWORD WINAPI ConnectWorker(void* argument) {
    auto* session = static_cast<Session*>(argument);
    Connect(session);
    session->backgroundJobs.Store(0);
    session->users.Subtract(1);
    return 0;
}

bool Reconnect(Session* session) {
    if (session->reconnecting.Exchange(1) != 0) {
        return session->controlSocket != noSocket;
    }
    bool isBack = true;
    session->backgroundJobs.Store(0);
    session->controlSocket = CloseSocketGracefully(session, session->controlSocket, shutdownBoth);
    if (LoginSession(session) == loginDone) {
        isBack = RestoreDirectory(session);
    } else {
        session->backgroundJobs.Store(0);
        ShellReportError(hostTables.mainWindow, reconnectFailedText);
        NotifyReconnectFailed(session);
    }
    session->reconnecting.Subtract(1);
    return isBack && session->controlSocket != noSocket;
}

}  // namespace quennet
