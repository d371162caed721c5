// Echo requests on the system's datagram sockets for ICMP: they need no privilege, and show a
// program the answers to its own requests alone. The system sees to identifier and checksum.
//
// Each request has a socket of its own. So an answer that comes late is nobody's, and any number
// of threads may send requests.

#include "net/system.h"

#include "icmpapi.h"

#include <linux/errqueue.h>

#include <cstring>
#include <optional>

#include "base/before_wait.h"
#include "net/waiting.h"
#include "winbase.h"

using namespace quennet::net;

namespace {

using Clock = std::chrono::steady_clock;

/// The only handle: there is nothing that two of them would not share.
const HANDLE theFile = reinterpret_cast<HANDLE>(uintptr_t{4});

struct StatusRow {
    int type;
    int code;
    DWORD status;
};
constexpr StatusRow statusRows[] = {
    {ICMP_DEST_UNREACH, ICMP_NET_UNREACH, IP_DEST_NET_UNREACHABLE},
    {ICMP_DEST_UNREACH, ICMP_HOST_UNREACH, IP_DEST_HOST_UNREACHABLE},
    {ICMP_DEST_UNREACH, ICMP_PROT_UNREACH, IP_DEST_PROT_UNREACHABLE},
    {ICMP_DEST_UNREACH, ICMP_PORT_UNREACH, IP_DEST_PORT_UNREACHABLE},
    {ICMP_DEST_UNREACH, ICMP_FRAG_NEEDED, IP_PACKET_TOO_BIG},
    {ICMP_DEST_UNREACH, ICMP_SR_FAILED, IP_BAD_ROUTE},
    {ICMP_TIME_EXCEEDED, ICMP_EXC_TTL, IP_TTL_EXPIRED_TRANSIT},
    {ICMP_TIME_EXCEEDED, ICMP_EXC_FRAGTIME, IP_TTL_EXPIRED_REASSEM},
};

DWORD StatusOf(int type, int code) {
    for (const StatusRow& row : statusRows) {
        if (row.type == type && row.code == code) {
            return row.status;
        }
    }
    return type == ICMP_DEST_UNREACH    ? IP_DEST_HOST_UNREACHABLE
           : type == ICMP_PARAMETERPROB ? IP_PARAM_PROBLEM
                                        : IP_GENERAL_FAILURE;
}

/// Why a request did not leave.
DWORD StatusOfErrno() {
    switch (errno) {
        case ENETUNREACH:
            return IP_DEST_NET_UNREACHABLE;
        case EHOSTUNREACH:
            return IP_DEST_HOST_UNREACHABLE;
        case ENOBUFS:
        case ENOMEM:
        case EMFILE:
        case ENFILE:
            return IP_NO_RESOURCES;
        default:
            return IP_GENERAL_FAILURE;
    }
}

struct Answer {
    IPAddr address;
    DWORD status;
};

class EchoSocket {
  public:
    EchoSocket() : descriptor_(system::OpenSocket(AF_INET, SOCK_DGRAM, IPPROTO_ICMP)) {}
    ~EchoSocket() {
        if (IsOpen()) {
            ::close(descriptor_);
        }
    }
    EchoSocket(const EchoSocket&) = delete;
    EchoSocket& operator=(const EchoSocket&) = delete;

    bool IsOpen() const { return descriptor_ >= 0; }

    bool Send(IPAddr destination, const IP_OPTION_INFORMATION* options) const {
        SetNumber(IP_RECVERR, 1);  // routers are heard too
        if (options != nullptr && options->Ttl != 0) {
            SetNumber(IP_TTL, options->Ttl);
        }
        if (options != nullptr) {
            SetNumber(IP_TOS, options->Tos);
        }
        icmphdr request{};
        request.type = ICMP_ECHO;
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = destination;
        return system::SendTo(descriptor_, reinterpret_cast<const char*>(&request), sizeof request,
                              0, reinterpret_cast<const sockaddr*>(&address),
                              sizeof address) == sizeof request;
    }

    /// Nothing when none has come in time.
    std::optional<Answer> Await(const Deadline& deadline) const {
        for (;;) {
            pollfd polled{descriptor_, POLLIN, 0};
            ::poll(&polled, 1, deadline.RestForPoll());
            std::optional<Answer> answer = TakeError();
            if (!answer) {
                answer = TakeEcho();
            }
            if (answer || deadline.RestForPoll() == 0) {
                return answer;
            }
        }
    }

  private:
    void SetNumber(int option, int number) const {
        system::SetOption(descriptor_, IPPROTO_IP, option, &number, sizeof number);
    }

    std::optional<Answer> TakeEcho() const {
        icmphdr echo{};
        sockaddr_in from{};
        socklen_t size = sizeof from;
        const ssize_t received =
            system::ReceiveFrom(descriptor_, reinterpret_cast<char*>(&echo), sizeof echo, 0,
                                reinterpret_cast<sockaddr*>(&from), &size);
        if (received != sizeof echo || echo.type != ICMP_ECHOREPLY) {
            return std::nullopt;
        }
        return Answer{from.sin_addr.s_addr, IP_SUCCESS};
    }

    std::optional<Answer> TakeError() const {
        alignas(cmsghdr) char control[256];
        char request[sizeof(icmphdr)];
        iovec data{request, sizeof request};
        msghdr message{};
        message.msg_iov = &data;
        message.msg_iovlen = 1;
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        if (::recvmsg(descriptor_, &message, MSG_ERRQUEUE) < 0) {
            return std::nullopt;
        }
        const cmsghdr* const part = CMSG_FIRSTHDR(&message);
        if (part == nullptr || part->cmsg_level != IPPROTO_IP || part->cmsg_type != IP_RECVERR) {
            return std::nullopt;
        }
        struct {
            sock_extended_err error;
            sockaddr_in from;
        } told{};
        std::memcpy(&told, CMSG_DATA(part), sizeof told);
        if (told.error.ee_origin != SO_EE_ORIGIN_ICMP) {
            return Answer{0, IP_GENERAL_FAILURE};
        }
        return Answer{told.from.sin_addr.s_addr, StatusOf(told.error.ee_type, told.error.ee_code)};
    }

    int descriptor_;
};

DWORD FailEcho(DWORD error) {
    SetLastError(error);
    return 0;
}

}  // namespace

HANDLE WINAPI IcmpCreateFile() {
    if (!EchoSocket().IsOpen()) {
        SetLastError(errno == EACCES || errno == EPERM ? ERROR_ACCESS_DENIED : StatusOfErrno());
        return INVALID_HANDLE_VALUE;
    }
    return theFile;
}

BOOL WINAPI IcmpCloseHandle(HANDLE file) {
    if (file != theFile) {
        SetLastError(ERROR_INVALID_HANDLE);
    }
    return file == theFile;
}

DWORD WINAPI IcmpSendEcho(HANDLE file, IPAddr destination, LPVOID, WORD dataSize,
                          PIP_OPTION_INFORMATION options, LPVOID reply, DWORD replySize,
                          DWORD milliseconds) {
    if (file != theFile) {
        return FailEcho(ERROR_INVALID_HANDLE);
    }
    if (dataSize != 0) {
        return FailEcho(ERROR_INVALID_PARAMETER);
    }
    if (reply == nullptr || replySize < sizeof(ICMP_ECHO_REPLY)) {
        return FailEcho(IP_BUF_TOO_SMALL);
    }
    quennet::BeforeWait();
    const EchoSocket socket;
    const Clock::time_point sent = Clock::now();
    if (!socket.IsOpen() || !socket.Send(destination, options)) {
        return FailEcho(StatusOfErrno());
    }
    const std::optional<Answer> answer = socket.Await(Deadline::After(milliseconds));
    if (!answer) {
        return FailEcho(IP_REQ_TIMED_OUT);
    }
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - sent);
    ICMP_ECHO_REPLY record{};
    record.Address = answer->address;
    record.Status = answer->status;
    record.RoundTripTime = static_cast<ULONG>(time.count());
    std::memcpy(reply, &record, sizeof record);
    return 1;
}
