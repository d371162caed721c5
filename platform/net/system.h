#pragma once
// The system's own sockets, under names that winsock.h does not take. Whoever needs both includes
// this header first; it brings in winsock.h when the system's values are safe.

#ifdef INVALID_SOCKET
#error "net/system.h comes before winsock.h"
#endif

#include <errno.h>
#include <linux/icmp.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quennet::net::system {

constexpr int socketLevel = SOL_SOCKET;
constexpr int optionError = SO_ERROR;
constexpr int optionKeepAlive = SO_KEEPALIVE;
constexpr int optionLinger = SO_LINGER;
constexpr int optionOobInline = SO_OOBINLINE;
constexpr int optionReuseAddress = SO_REUSEADDR;
constexpr unsigned long ioctlReadable = FIONREAD;

/// Every descriptor of the layer is non-blocking; blocking is what the layer makes of it.
inline int OpenSocket(int family, int type, int protocol) {
    return ::socket(family, type | SOCK_NONBLOCK | SOCK_CLOEXEC, protocol);
}

/// The requests that the system answers itself are none of a socket's business; on the way to an
/// address of the own machine it would see its own one before the answer.
inline void LeaveOutRequests(int descriptor) {
    const icmp_filter filter = {1u << ICMP_ECHO | 1u << ICMP_TIMESTAMP | 1u << ICMP_ADDRESS};
    ::setsockopt(descriptor, SOL_RAW, ICMP_FILTER, &filter, sizeof filter);
}

inline int Accept(int descriptor, sockaddr* address, socklen_t* size) {
    return ::accept4(descriptor, address, size, SOCK_NONBLOCK | SOCK_CLOEXEC);
}

inline int Bind(int descriptor, const sockaddr* address, socklen_t size) {
    return ::bind(descriptor, address, size);
}

inline int Listen(int descriptor, int backlog) {
    return ::listen(descriptor, backlog);
}

inline int Connect(int descriptor, const sockaddr* address, socklen_t size) {
    return ::connect(descriptor, address, size);
}

inline ssize_t Send(int descriptor, const char* data, size_t length, int flags) {
    return ::send(descriptor, data, length, flags | MSG_NOSIGNAL);
}

inline ssize_t SendTo(int descriptor, const char* data, size_t length, int flags,
                      const sockaddr* address, socklen_t size) {
    return ::sendto(descriptor, data, length, flags | MSG_NOSIGNAL, address, size);
}

inline ssize_t Receive(int descriptor, char* buffer, size_t length, int flags) {
    return ::recv(descriptor, buffer, length, flags);
}

inline ssize_t ReceiveFrom(int descriptor, char* buffer, size_t length, int flags,
                           sockaddr* address, socklen_t* size) {
    return ::recvfrom(descriptor, buffer, length, flags, address, size);
}

inline int Shutdown(int descriptor, int how) {
    return ::shutdown(descriptor, how);
}

inline int SetOption(int descriptor, int level, int option, const void* value, socklen_t size) {
    return ::setsockopt(descriptor, level, option, value, size);
}

inline int GetOption(int descriptor, int level, int option, void* value, socklen_t* size) {
    return ::getsockopt(descriptor, level, option, value, size);
}

inline int OwnName(int descriptor, sockaddr* address, socklen_t* size) {
    return ::getsockname(descriptor, address, size);
}

}  // namespace quennet::net::system

#include "winsock.h"
