#include "fuzz/fed_session.h"

#include <winsock.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>

#include "control/server_family.h"
#include "fuzz/expect.h"
#include "host/services.h"
#include "hostkit/services.h"

using namespace quennet;

namespace {

constexpr SocketNumber controlNumber = 7;
constexpr SocketNumber dataNumber = 8;
constexpr char transferType = 'A';
constexpr u16 portOfSite = 21;

struct Feed {
    ServerText server;
    Session* session;
    std::size_t arrived;
    std::size_t taken;
    std::string heard;
    std::vector<std::string> lines;
    u16 dataPort;

    /// One second, or a look, at whether there is something to take.
    int Readable(bool waits) {
        if (taken < arrived) {
            return 1;
        }
        if (arrived < server.text.size()) {
            // Nothing yet: what comes next is there at the next look.
            arrived += waits ? std::min(server.piece, server.text.size() - arrived) : 0;
            return 0;
        }
        if (server.end != TextEnd::silence) {
            return 1;
        }
        if (waits) {
            session->abortFlag.Store(1);
        }
        return 0;
    }

    int Take(char* buffer, int length, bool peeks) {
        // A call that would wait has no end.
        Expect(length > 0 && Readable(false) == 1);
        const std::size_t count = std::min(static_cast<std::size_t>(length), arrived - taken);
        if (count == 0 && server.end == TextEnd::reset) {
            WSASetLastError(WSAECONNRESET);
            return SOCKET_ERROR;
        }
        std::memcpy(buffer, server.text.data() + taken, count);
        taken += peeks ? 0 : count;
        return static_cast<int>(count);
    }
};
Feed feed;

extern "C" void TakeLine(WindowNumber, const char* format, ...) {
    // A server's words are never a format.
    Expect(std::strcmp(format, "%s") == 0);
    va_list values;
    va_start(values, format);
    feed.lines.emplace_back(va_arg(values, const char*));
    va_end(values);
}

struct FedHost {
    CoreServices core = {};
    ShellServices shell = {};

    FedHost() {
        hostkit::FillMemoryServices(core, shell);
        hostkit::Put<CoreConsolePrintFunction>(core, CoreService::consolePrint, TakeLine);
        hostTables.core = &core;
        hostTables.shell = &shell;
    }
};

}  // namespace

// --- The socket interface -------------------------------------------------------------------

int quennet_select(int, quennet_fd_set* readers, quennet_fd_set* writers, quennet_fd_set*,
                   const timeval* timeout) {
    Expect((readers != nullptr) != (writers != nullptr) && timeout != nullptr);
    const quennet_fd_set& set = readers != nullptr ? *readers : *writers;
    Expect(set.fd_count == 1 && (set.fd_array[0] == controlNumber || writers != nullptr));
    return writers != nullptr ? 1 : feed.Readable(timeout->tv_sec > 0);
}

int quennet_recv(SOCKET socket, char* buffer, int length, int flags) {
    Expect(socket == controlNumber);
    return feed.Take(buffer, length, (flags & MSG_PEEK) != 0);
}

int quennet_send(SOCKET socket, const char* data, int length, int) {
    Expect(socket == controlNumber && length > 0);
    feed.heard.append(data, static_cast<std::size_t>(length));
    return length;
}

SOCKET quennet_socket(int, int, int) {
    return dataNumber;
}

int quennet_connect(SOCKET socket, const sockaddr* address, int) {
    sockaddr_in peer;
    std::memcpy(&peer, address, sizeof peer);
    Expect(socket == dataNumber && peer.sin_addr.s_addr == htonl(serverAddress));
    feed.dataPort = ntohs(peer.sin_port);
    return 0;
}

int quennet_setsockopt(SOCKET, int, int, const char*, int) {
    return 0;
}

int ioctlsocket(SOCKET, long, u_long*) {
    return 0;
}

int closesocket(SOCKET socket) {
    Expect(socket == dataNumber);
    return 0;
}

// --- The session ----------------------------------------------------------------------------

ServerText ServerText::FromInput(std::string_view input) {
    constexpr std::size_t whole = 1 << 20;
    constexpr std::size_t pieces[] = {whole, whole, whole, 90, 81, 40, 3, 1};
    // '@' to 'G', 'P' to 'W', ' ' to ''', '0' to '7'
    constexpr TextEnd ends[] = {TextEnd::reset, TextEnd::closed, TextEnd::silence, TextEnd::closed};
    const auto choice = static_cast<unsigned char>(input[0]);
    return {input.substr(1), pieces[choice % 8], ends[choice / 16 % 4]};
}

FedSession::FedSession(const ServerText& server, ServerFamily family) {
    static const FedHost host;
    alignas(8) static char memory[sessionOffset + sizeof(Session)];
    std::memset(memory, 0, sizeof memory);
    session_ = reinterpret_cast<Session*>(memory + sessionOffset);
    session_->serverType.Store(static_cast<u32>(family));
    session_->transferType = transferType;
    session_->port = portOfSite;
    // A lost connection is not repaired: the command goes out once more on the one that stands.
    session_->reconnecting.Store(1);
    session_->controlSocket = controlNumber;
    session_->controlAddress.sin_family = AF_INET;
    session_->controlAddress.sin_addr.s_addr = htonl(serverAddress);
    feed.server = server;
    feed.session = session_;
    feed.arrived = std::min(server.piece, server.text.size());
    feed.taken = 0;
    feed.heard.clear();
    feed.lines.clear();
    feed.dataPort = 0;
}

const std::vector<std::string>& FedSession::Lines() const {
    return feed.lines;
}

const std::string& FedSession::Heard() const {
    return feed.heard;
}

std::size_t FedSession::Taken() const {
    return feed.taken;
}

void FedSession::ExpectCommands(const std::vector<std::string>& commands) const {
    std::string_view rest = feed.heard;
    while (!rest.empty()) {
        const std::size_t end = rest.find("\r\n");
        Expect(end != rest.npos && std::ranges::count(commands, rest.substr(0, end)) == 1);
        rest.remove_prefix(end + 2);
    }
}

void FedSession::ExpectInOrder() const {
    Expect(session_->replyDepth == 0 && !session_->busy.IsSet() &&
           !session_->exchangeThread.IsSet());
    Expect(session_->firstCode == 0 || (session_->firstCode >= 100 && session_->firstCode <= 599));
    Expect(std::memchr(session_->replyBuffer, 0, replyBufferSize) != nullptr);
    Expect(session_->transferType == transferType && session_->port == portOfSite);
    Expect(session_->controlSocket == controlNumber);
}

u16 PortOfDataConnection() {
    return feed.dataPort;
}
