#include "control/login.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "control/command.h"
#include "control/exchange.h"
#include "control/firewall.h"
#include "control/reply.h"
#include "control/server_family.h"
#include "control/sockets.h"
#include "host/services.h"

namespace quennet {

namespace {

constexpr u32 passwordQuestionSize = 80;

/// The address of a host name or of dotted numbers.
bool FindAddress(const char* hostText, in_addr* address) {
    const hostent* host = gethostbyname(hostText);
    if (host != nullptr && host->h_addr_list[0] != nullptr &&
        host->h_length == static_cast<short>(sizeof *address)) {
        std::memcpy(address, host->h_addr_list[0], sizeof *address);
        return true;
    }
    address->s_addr = inet_addr(hostText);
    return address->s_addr != INADDR_NONE;
}

void PrintConnecting(Session* session, const char* dotted) {
    if (dotted[0] != 0 && std::strcmp(dotted, session->site.name) != 0) {
        CoreConsolePrint()(session->console, "Connecting to %s:%u (%s) ...", dotted,
                           static_cast<unsigned>(session->port), session->site.name);
    } else {
        CoreConsolePrint()(session->console, "Connecting to %s ...", session->site.name);
    }
}

/// A new socket for the control connection, or noSocket after printing what failed.
SocketNumber MakeControlSocket(Session* session) {
    const SocketNumber control =
        static_cast<SocketNumber>(socket(AF_INET, SOCK_STREAM, session->protocol));
    if (control == noSocket) {
        ReportSocketError(session->console);
        return noSocket;
    }
    const int on = 1;
    if (setsockopt(control, SOL_SOCKET, SO_REUSEADDR, reinterpret_cast<const char*>(&on),
                   sizeof on) != 0) {
        ReportSocketError(session->console);
        closesocket(control);
        return noSocket;
    }
    KeepSocketAlive(control);
    return control;
}

/// Puts the text of a failed connection where it is missing, and on the console.
void ReportFailedConnection(Session* session, const char* hostText) {
    char text[128];
    std::snprintf(text, sizeof text, "Connection to %s failed.", hostText);
    if (session->replyBuffer[0] == 0) {
        StoreText(session->replyBuffer, replyBufferSize, text);
    }
    CoreConsolePrintText(session->console, text);
}

int FailLogin(Session* session, int result) {
    session->controlSocket = CloseSocketGracefully(session, session->controlSocket, shutdownBoth);
    session->stopRetrying.Store(1);
    return result;
}

/// Opens the connection and reads the welcome to its end. False when that failed.
bool OpenConnection(Session* session) {
    const BusyMark busy(session);
    const SiteRecord& site = session->site;
    const bool throughFirewall = (site.siteOptions & SiteOptionFirewall) != 0;
    char hostText[sizeof site.host];
    std::memcpy(hostText, throughFirewall ? site.firewallHost : site.host, sizeof hostText);
    session->owedReplies = 0;
    session->doubtfulReplies = 0;
    ++session->logins;
    session->transferType = 'A';
    session->restartTyped = 0;
    session->controlSocket = OpenControlSocket(session, hostText);
    if (session->controlSocket == noSocket) {
        ReportFailedConnection(session, hostText);
        return false;
    }
    sockaddr_in own{};
    int size = sizeof own;
    if (getsockname(session->controlSocket, reinterpret_cast<sockaddr*>(&own), &size) != 0) {
        ReportSocketError(session->console);
        return false;
    }
    constexpr int ready = 2;
    if (ReadWelcome(session) != ready) {
        return false;
    }
    NoteServerBanner(session);
    const int on = 1;
    if (setsockopt(session->controlSocket, SOL_SOCKET, SO_OOBINLINE,
                   reinterpret_cast<const char*>(&on), sizeof on) != 0) {
        ReportSocketError(session->console);
    }
    return true;
}

bool AskForPassword(SiteRecord* site) {
    PasswordQuestion question{WordFromPointer(site->password), passwordQuestionSize,
                              WordFromPointer(site->host)};
    return ShellAskPassword(hostTables.mainWindow, &question) != 0;
}

int SendLoginCommand(Session* session, const char* verb, const char* argument) {
    char line[sizeof(SiteRecord::user) + 8];
    std::snprintf(line, sizeof line, "%s %s", verb, argument);
    return SendLoginLine(session, line);
}

/// The login without a firewall: the class that decides, or loginCancelled.
int LoginDirectly(Session* session) {
    SiteRecord& site = session->site;
    int result = SendLoginCommand(session, "USER", site.user);
    if (result != 3) {
        return result;
    }
    if (site.password[0] == 0 && !AskForPassword(&site)) {
        return loginCancelled;
    }
    result = SendLoginCommand(session, "PASS", site.password);
    if (result != 3) {
        return result;
    }
    return SendLoginCommand(session, "ACCT", site.user);
}

}  // namespace

u16 ParsePort(char* text) {
    char* colon = std::strchr(text, ':');
    if (colon == nullptr) {
        return 0;
    }
    *colon = 0;
    const long port = std::strtol(colon + 1, nullptr, 10);
    return port >= 1 && port <= 65535 ? static_cast<u16>(port) : u16{0};
}

SocketNumber OpenControlSocket(Session* session, char* hostText) {
    std::memset(&session->controlAddress, 0, sizeof session->controlAddress);
    session->controlAddress.sin_family = AF_INET;
    const u16 port = ParsePort(hostText);
    if (port != 0) {
        session->port = port;
    }
    session->controlAddress.sin_port = htons(session->port);
    if (!FindAddress(hostText, &session->controlAddress.sin_addr)) {
        return noSocket;
    }
    const protoent* protocol = getprotobyname("tcp");
    constexpr i16 tcpProtocol = 6;
    session->protocol = protocol != nullptr ? static_cast<i16>(protocol->p_proto) : tcpProtocol;
    const SocketNumber control = MakeControlSocket(session);
    if (control == noSocket) {
        return noSocket;
    }
    char dotted[32] = "";
    const char* text = inet_ntoa(session->controlAddress.sin_addr);
    if (text != nullptr) {
        StoreText(dotted, sizeof dotted, text);
    }
    PrintConnecting(session, dotted);
    if (!ConnectSocket(session, control, session->controlAddress, hostText)) {
        return noSocket;
    }
    CoreConsolePrint()(session->console, "Connected to %s:%u", dotted,
                       static_cast<unsigned>(session->port));
    return control;
}

int LoginSession(Session* session) {
    const Exchange exchange(session);
    if (exchange.IsRefused()) {
        return loginFailed;
    }
    if (session->controlSocket != noSocket) {
        CoreConsolePrintText(session->console, "Already connected");
        return loginDone;
    }
    if (!OpenConnection(session)) {
        return FailLogin(session, loginFailed);
    }
    const bool throughFirewall = (session->site.siteOptions & SiteOptionFirewall) != 0;
    const int result = throughFirewall ? LoginThroughFirewall(session) : LoginDirectly(session);
    if (result == 2) {
        return loginDone;
    }
    return FailLogin(session, result == loginCancelled ? loginCancelled : loginFailed);
}

}  // namespace quennet
