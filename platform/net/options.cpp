// Options and addresses of sockets.

#include <algorithm>
#include <cstring>

#include "net/errors.h"
#include "net/socket.h"

using namespace quennet::net;

namespace {

/// An option of a socket whose value is a number, here and there.
struct NumberOption {
    int option;
    int systemOption;
};

constexpr NumberOption numberOptions[] = {
    {SO_KEEPALIVE, system::optionKeepAlive},
    {SO_OOBINLINE, system::optionOobInline},
    {SO_REUSEADDR, system::optionReuseAddress},
};

int SetLinger(SocketUse* use, const linger& value) {
    if (system::SetOption(use->Descriptor(), system::socketLevel, system::optionLinger, &value,
                          sizeof value) != 0) {
        return FailFromSystem();
    }
    (*use)->resetAtClose = value.l_onoff != 0 && value.l_linger == 0;
    return 0;
}

int Deliver(int result, char* value, int* size) {
    if (*size < static_cast<int>(sizeof result)) {
        return Fail(WSAEFAULT);
    }
    std::memcpy(value, &result, sizeof result);
    *size = static_cast<int>(sizeof result);
    return 0;
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
    if (level == SOL_SOCKET && (option == SO_RCVTIMEO || option == SO_SNDTIMEO)) {
        int64_t& timeout = option == SO_RCVTIMEO ? use->receiveTimeout : use->sendTimeout;
        timeout = number == 0 ? -1 : static_cast<DWORD>(number);
        return 0;
    }
    const auto* const known = std::ranges::find(numberOptions, option, &NumberOption::option);
    if (level != SOL_SOCKET || known == std::end(numberOptions)) {
        return Fail(WSAENOPROTOOPT);
    }
    const int result = system::SetOption(use.Descriptor(), system::socketLevel, known->systemOption,
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
    return Fail(WSAENOPROTOOPT);
}

int quennet_getsockname(SOCKET socket, sockaddr* address, int* size) {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    auto room = static_cast<socklen_t>(*size);
    if (system::OwnName(use.Descriptor(), address, &room) != 0) {
        return FailFromSystem();
    }
    *size = static_cast<int>(room);
    return 0;
}
