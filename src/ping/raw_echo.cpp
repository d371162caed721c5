#include "ping/raw_echo.h"

#include <cstring>

#include "control/sockets.h"
#include "host/services.h"
#include "ping/echo_packet.h"
#include "ping/echo_report.h"

namespace quennet {

namespace {

constexpr int limitMilliseconds = 1000;
constexpr u32 pauseMilliseconds = 1000;
constexpr int timedOutCode = 10060;
constexpr u32 unknownHostText = 6002;

void PrintUnknownHost(WindowNumber console, const char* target) {
    char format[256] = "";
    CoreLoadText(unknownHostText, format, sizeof format);
    CoreConsolePrint()(console, format, target);
}

}  // namespace

RawEcho::RawEcho(WindowNumber console)
    : console_(console),
      socket_(static_cast<SocketNumber>(socket(AF_INET, SOCK_RAW, IPPROTO_ICMP))) {}

RawEcho::~RawEcho() {
    if (HasSocket()) {
        closesocket(socket_);
    }
}

bool RawEcho::Open(const char* target) {
    if (!LimitTime(SO_RCVTIMEO, "Failed to set recv timeout: %d") ||
        !LimitTime(SO_SNDTIMEO, "Failed to set send timeout: %d")) {
        return false;
    }
    if (!Resolve(target)) {
        PrintUnknownHost(console_, target);
        return false;
    }
    return true;
}

bool RawEcho::LimitTime(int option, const char* complaint) const {
    if (setsockopt(socket_, SOL_SOCKET, option, reinterpret_cast<const char*>(&limitMilliseconds),
                   sizeof limitMilliseconds) == 0) {
        return true;
    }
    ReportSocketErrorCode(console_, complaint);
    return false;
}

bool RawEcho::Resolve(const char* target) {
    const hostent* host = gethostbyname(target);
    if (host != nullptr && host->h_addr_list[0] != nullptr) {
        destination_.sin_family = static_cast<u16>(host->h_addrtype);
        std::memcpy(&destination_.sin_addr, host->h_addr_list[0], sizeof destination_.sin_addr);
        return true;
    }
    destination_.sin_family = AF_INET;
    destination_.sin_addr.s_addr = inet_addr(target);
    return destination_.sin_addr.s_addr != INADDR_NONE;
}

bool RawEcho::RunCycle(PingState* state) {
    Outcome outcome = Send(state);
    if (outcome == Outcome::done) {
        outcome = Receive(state);
    }
    if (outcome == Outcome::timedOut) {
        PrintTimeOut(console_);
    } else if (outcome == Outcome::done && !state->stopRequests.IsSet()) {
        Sleep(pauseMilliseconds);
    }
    return outcome != Outcome::failed;
}

RawEcho::Outcome RawEcho::OutcomeOfError() const {
    return WSAGetLastError() == timedOutCode ? Outcome::timedOut : Outcome::failed;
}

RawEcho::Outcome RawEcho::Send(PingState* state) {
    StampEchoRequest(state->request, sequence_++);
    const int sent =
        sendto(socket_, reinterpret_cast<const char*>(state->request), echoRequestSize, 0,
               reinterpret_cast<const sockaddr*>(&destination_), sizeof destination_);
    if (sent < 0) {
        const Outcome outcome = OutcomeOfError();
        if (outcome == Outcome::failed) {
            const int error = WSAGetLastError();
            ReportSocketError(console_);
            WSASetLastError(error);  // printing may have changed it
            ReportSocketErrorCode(console_, "Sendto failed: %d");
        }
        return outcome;
    }
    if (sent < static_cast<int>(echoRequestSize)) {
        CoreConsolePrint()(console_, "Wrote %d bytes", sent);
    }
    return Outcome::done;
}

RawEcho::Outcome RawEcho::Receive(PingState* state) const {
    std::memset(state->reply, 0, sizeof state->reply);  // what does not arrive is nobody's
    sockaddr_in from{};
    int size = sizeof from;
    const int received = recvfrom(socket_, reinterpret_cast<char*>(state->reply), pingPacketSize, 0,
                                  reinterpret_cast<sockaddr*>(&from), &size);
    if (received < 0) {
        const Outcome outcome = OutcomeOfError();
        if (outcome == Outcome::failed) {
            ReportSocketErrorCode(console_, "Recvfrom failed: %d");
        }
        return outcome;
    }
    PrintEchoReply(console_, state->reply, received, from);
    return Outcome::done;
}

}  // namespace quennet
