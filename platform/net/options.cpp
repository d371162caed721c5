// Options and addresses of sockets.

#include <algorithm>
#include <cstring>

#include "net/errors.h"
#include "net/socket.h"

using namespace quennet::net;

namespace {

/// An option whose value is a number, here and there.
struct NumberOption {
    int level;
    int option;
    int systemLevel;
    int systemOption;
};

constexpr NumberOption numberOptions[] = {
    {SOL_SOCKET, SO_ACCEPTCONN, system::socketLevel, system::optionAcceptConn},
    {SOL_SOCKET, SO_BROADCAST, system::socketLevel, system::optionBroadcast},
    {SOL_SOCKET, SO_DONTROUTE, system::socketLevel, system::optionDontRoute},
    {SOL_SOCKET, SO_KEEPALIVE, system::socketLevel, system::optionKeepAlive},
    {SOL_SOCKET, SO_OOBINLINE, system::socketLevel, system::optionOobInline},
    {SOL_SOCKET, SO_RCVBUF, system::socketLevel, system::optionReceiveBuffer},
    {SOL_SOCKET, SO_REUSEADDR, system::socketLevel, system::optionReuseAddress},
    {SOL_SOCKET, SO_SNDBUF, system::socketLevel, system::optionSendBuffer},
    {SOL_SOCKET, SO_TYPE, system::socketLevel, system::optionType},
    {IPPROTO_TCP, TCP_NODELAY, IPPROTO_TCP, TCP_NODELAY},
};

const NumberOption* FindNumberOption(int level, int option) {
    const auto* const found = std::find_if(
        std::begin(numberOptions), std::end(numberOptions),
        [&](const NumberOption& known) { return known.level == level && known.option == option; });
    return found != std::end(numberOptions) ? found : nullptr;
}

int SetLinger(SocketUse* use, const linger& value) {
    if (system::SetOption(use->Descriptor(), system::socketLevel, system::optionLinger, &value,
                          sizeof value) != 0) {
        return FailFromSystem();
    }
    (*use)->resetAtClose = value.l_onoff != 0 && value.l_linger == 0;
    return 0;
}

template <typename Value>
int Deliver(const Value& result, char* value, int* size) {
    if (*size < static_cast<int>(sizeof result)) {
        return Fail(WSAEFAULT);
    }
    std::memcpy(value, &result, sizeof result);
    *size = static_cast<int>(sizeof result);
    return 0;
}

template <typename Value>
int GetAndDeliver(SocketUse* use, int level, int option, char* value, int* size) {
    Value result{};
    socklen_t resultSize = sizeof result;
    if (system::GetOption(use->Descriptor(), level, option, &result, &resultSize) != 0) {
        return FailFromSystem();
    }
    return Deliver(result, value, size);
}

/// The error found beside the calls, else what the system has kept.
int TakeError(SocketUse* use) {
    SettleConnect(&**use, use->Descriptor());
    int error = (*use)->error;
    (*use)->error = 0;
    if (error == 0) {
        int systemError = 0;
        socklen_t size = sizeof systemError;
        system::GetOption(use->Descriptor(), system::socketLevel, system::optionError, &systemError,
                          &size);
        error = systemError != 0 ? PlatformError(systemError) : 0;
    }
    return error;
}

using NameCall = int (*)(int descriptor, sockaddr* address, socklen_t* size);

int GetName(SOCKET socket, NameCall call, sockaddr* address, int* size) {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    auto room = static_cast<socklen_t>(*size);
    if (call(use.Descriptor(), address, &room) != 0) {
        return FailFromSystem();
    }
    *size = static_cast<int>(room);
    return 0;
}

}  // namespace

int quennet_setsockopt(SOCKET socket, int level, int option, const char* value, int size) {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    const auto given = static_cast<std::size_t>(std::max(size, 0));
    if (level == SOL_SOCKET && option == SO_LINGER) {
        linger setting{};
        if (given < sizeof setting) {
            return Fail(WSAEFAULT);
        }
        std::memcpy(&setting, value, sizeof setting);
        return SetLinger(&use, setting);
    }
    int number = 0;
    if (given < sizeof number) {
        return Fail(WSAEFAULT);
    }
    std::memcpy(&number, value, sizeof number);
    if (level == SOL_SOCKET && option == SO_DONTLINGER) {
        return SetLinger(&use, {number == 0, 0});
    }
    if (level == SOL_SOCKET && (option == SO_RCVTIMEO || option == SO_SNDTIMEO)) {
        int64_t& timeout = option == SO_RCVTIMEO ? use->receiveTimeout : use->sendTimeout;
        timeout = number == 0 ? -1 : static_cast<DWORD>(number);
        return 0;
    }
    const NumberOption* const known = FindNumberOption(level, option);
    if (known == nullptr) {
        return Fail(WSAENOPROTOOPT);
    }
    const int result = system::SetOption(use.Descriptor(), known->systemLevel, known->systemOption,
                                         &number, sizeof number);
    return result == 0 ? 0 : FailFromSystem();
}

int quennet_getsockopt(SOCKET socket, int level, int option, char* value, int* size) {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (level == SOL_SOCKET && option == SO_ERROR) {
        return Deliver(TakeError(&use), value, size);
    }
    if (level == SOL_SOCKET && option == SO_LINGER) {
        return GetAndDeliver<linger>(&use, system::socketLevel, system::optionLinger, value, size);
    }
    const NumberOption* const known = FindNumberOption(level, option);
    if (known == nullptr) {
        return Fail(WSAENOPROTOOPT);
    }
    return GetAndDeliver<int>(&use, known->systemLevel, known->systemOption, value, size);
}

int quennet_getsockname(SOCKET socket, sockaddr* address, int* size) {
    return GetName(socket, system::OwnName, address, size);
}

int quennet_getpeername(SOCKET socket, sockaddr* address, int* size) {
    return GetName(socket, system::PeerName, address, size);
}
