// Start and stop of the socket library, and what a thread asks about itself.

#include <algorithm>
#include <atomic>
#include <string_view>

#include "net/errors.h"
#include "net/socket.h"
#include "winbase.h"

namespace {

constexpr WORD offeredVersion = MAKEWORD(1, 1);
constexpr std::string_view description = "Quennet sockets";

std::atomic<int> users{0};

/// The minor version is the high byte.
bool IsOlderThanOffered(WORD version) {
    const int major = version & 0xff;
    const int minor = version >> 8;
    return major < 1 || (major == 1 && minor < 1);
}

/// Lowers the count unless it is 0 already; the count before.
int TakeOneUser() {
    int count = users.load();
    while (count > 0 && !users.compare_exchange_weak(count, count - 1)) {
    }
    return count;
}

}  // namespace

bool quennet::net::Started() {
    if (users.load(std::memory_order_relaxed) > 0) {
        return true;
    }
    Fail(WSANOTINITIALISED);
    return false;
}

int WINAPI WSAStartup(WORD version, LPWSADATA data) {
    if (data == nullptr) {
        return WSAEFAULT;
    }
    *data = {};
    data->wVersion = offeredVersion;
    data->wHighVersion = offeredVersion;
    std::copy(description.begin(), description.end(), data->szDescription);
    data->iMaxSockets = 0xffff;
    if (IsOlderThanOffered(version)) {
        return WSAVERNOTSUPPORTED;
    }
    users.fetch_add(1);
    return 0;
}

int WINAPI WSACleanup() {
    const int before = TakeOneUser();
    if (before == 0) {
        return quennet::net::Fail(WSANOTINITIALISED);
    }
    if (before == 1) {
        quennet::net::ResetAllSockets();
    }
    return 0;
}

int WINAPI WSAGetLastError() {
    return static_cast<int>(GetLastError());
}

void WINAPI WSASetLastError(int error) {
    SetLastError(static_cast<DWORD>(error));
}

BOOL WINAPI WSAIsBlocking() {
    // A thread inside a blocking call is not here, and no other thread is asked about.
    return FALSE;
}

int WINAPI WSACancelBlockingCall() {
    return quennet::net::Fail(WSAEINVAL);
}
