// Bytes out and in.
//
// Small sends are combined: the first one after the caller has received or waited leaves at once,
// those at its heels are gathered until the buffer is full, until something is awaited, or until
// a send comes late enough to show that the caller is not in a hurry. So a command is on the wire
// before its reply is awaited, a slow source is not held back, and a fast one costs one system
// call for many blocks.

#include <time.h>

#include <algorithm>
#include <new>

#include "net/errors.h"
#include "net/socket.h"
#include "net/waiting.h"

using namespace quennet::net;

namespace {

/// A caller that pauses longer between two sends does not send in bulk.
constexpr int64_t bulkPauseMilliseconds = 8;

int64_t CoarseMilliseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

/// Whether this send leaves at once. Notes that it happened.
bool OpensBurst(SocketState* state) {
    const int64_t now = CoarseMilliseconds();
    const bool late = now - state->lastSendMilliseconds > bulkPauseMilliseconds;
    const bool first = !state->sentSinceWait;
    state->lastSendMilliseconds = now;
    state->sentSinceWait = true;
    return first || late;
}

/// Connected, or the reason why not is set.
bool IsConnected(SocketUse* use) {
    SocketState& state = **use;
    if (state.link == Link::pending) {
        SettleConnect(&state, use->Descriptor());
    }
    if (state.link == Link::connected) {
        return true;
    }
    if (state.error == 0) {
        state.error = WSAENOTCONN;
    }
    FailWithFoundError(&state);
    return false;
}

/// Sleeps until one of the poll events has come. False, with the last error set, when the deadline
/// is over or the socket was closed meanwhile.
bool AwaitInTime(SocketUse* use, short events, const Deadline& deadline) {
    const int rest = deadline.RestForPoll();
    if (rest == 0) {
        Fail(WSAETIMEDOUT);
        return false;
    }
    return use->Await(events, rest);
}

std::size_t SendThrough(SocketUse* use, const char* data, std::size_t length) {
    std::size_t taken = 0;
    const int error = (*use)->unsent.SendThrough(use->Descriptor(), data, length, &taken);
    if (error != 0) {
        (*use)->error = PlatformError(error);
    }
    return taken;
}

/// Takes what can be taken without waiting. An error is left in the state.
std::size_t Offer(SocketUse* use, const char* data, std::size_t length, bool atOnce) {
    SocketState& state = **use;
    const bool direct = atOnce || length >= SendBuffer::capacity;
    std::size_t taken = 0;
    if (direct && state.unsent.Empty()) {
        taken = SendThrough(use, data, length);
    }
    if (state.error != 0 || taken == length) {
        return taken;
    }
    taken += state.unsent.Append(data + taken, length - taken);
    if (state.unsent.Empty()) {
        return taken + SendThrough(use, data + taken, length - taken);  // no memory
    }
    if (state.unsent.Full() || (atOnce && !state.unsent.Stalled())) {
        PushUnsent(&state, use->Descriptor());
    }
    return taken;
}

int SendStream(SocketUse* use, const char* data, std::size_t length) {
    if (!IsConnected(use)) {
        return SOCKET_ERROR;
    }
    SocketState& state = **use;
    if (state.sendShut) {
        return Fail(WSAESHUTDOWN);
    }
    const bool atOnce = OpensBurst(&state);
    const Deadline deadline = Deadline::After(state.sendTimeout);
    std::size_t taken = 0;
    for (;;) {
        if (state.error == 0) {
            taken += Offer(use, data + taken, length - taken, atOnce);
        }
        if (state.error != 0) {
            return FailWithFoundError(&state);
        }
        if (taken == length || (state.nonBlocking && taken > 0)) {
            break;
        }
        if (state.nonBlocking) {
            return Fail(WSAEWOULDBLOCK);
        }
        if (!AwaitInTime(use, POLLOUT, deadline)) {
            return SOCKET_ERROR;
        }
        PushUnsent(&state, use->Descriptor());
    }
    if (!state.unsent.Empty()) {
        NoteUnsent(use->Reference());
    }
    return static_cast<int>(taken);
}

/// Datagrams go straight to the system.
int SendDatagram(SocketUse* use, const char* data, std::size_t length, int flags,
                 const sockaddr* address, int size) {
    const Deadline deadline = Deadline::After((*use)->sendTimeout);
    for (;;) {
        const ssize_t sent = system::SendTo(use->Descriptor(), data, length, flags, address,
                                            static_cast<socklen_t>(size));
        if (sent >= 0) {
            return static_cast<int>(sent);
        }
        if (errno != EAGAIN && errno != EINTR) {
            return FailFromSystem();
        }
        if ((*use)->nonBlocking) {
            return Fail(WSAEWOULDBLOCK);
        }
        if (!AwaitInTime(use, POLLOUT, deadline)) {
            return SOCKET_ERROR;
        }
    }
}

/// Waits until there are bytes to read: 1; 0 at the end of the stream; SOCKET_ERROR. Bytes that
/// came before an error are delivered before it.
int AwaitBytes(SocketUse* use) {
    SocketState& state = **use;
    const Deadline deadline = Deadline::After(state.receiveTimeout);
    while (state.received.Size() == 0) {
        const ReadAhead::Fill fill = ReceiveAhead(&state, use->Reference());
        if (fill == ReadAhead::Fill::received) {
            return 1;
        }
        if (state.error != 0) {
            return FailWithFoundError(&state);
        }
        if (fill == ReadAhead::Fill::ended) {
            return 0;
        }
        if (state.nonBlocking) {
            return Fail(WSAEWOULDBLOCK);
        }
        if (!AwaitInTime(use, POLLIN, deadline)) {
            return SOCKET_ERROR;
        }
    }
    return 1;
}

int ReceiveStream(SocketUse* use, char* buffer, std::size_t length, bool peek) {
    if ((*use)->link != Link::connected && !IsConnected(use)) {
        return SOCKET_ERROR;
    }
    SocketState& state = **use;
    if (state.receiveShut) {
        return Fail(WSAESHUTDOWN);
    }
    if (length == 0) {
        return 0;
    }
    state.sentSinceWait = false;
    const int outcome = AwaitBytes(use);
    if (outcome <= 0) {
        return outcome;
    }
    if (!peek) {
        return static_cast<int>(state.received.Take(buffer, length));
    }
    if (state.received.AllSeen() && state.received.Size() < length) {
        // Whoever peeks again without taking hopes for more. An end or an error shows later.
        ReceiveAhead(&state, use->Reference());
    }
    return static_cast<int>(state.received.Peek(buffer, length));
}

/// Datagrams come straight from the system; one that does not fit is a failure.
int ReceiveDatagram(SocketUse* use, char* buffer, std::size_t length, int flags, sockaddr* address,
                    int* size) {
    const Deadline deadline = Deadline::After((*use)->receiveTimeout);
    for (;;) {
        socklen_t room = size != nullptr ? static_cast<socklen_t>(*size) : 0;
        const ssize_t received =
            system::ReceiveFrom(use->Descriptor(), buffer, length, flags | MSG_TRUNC, address,
                                size != nullptr ? &room : nullptr);
        if (received >= 0) {
            if (size != nullptr) {
                *size = static_cast<int>(room);
            }
            const bool cut = static_cast<std::size_t>(received) > length;
            return cut ? Fail(WSAEMSGSIZE) : static_cast<int>(received);
        }
        if (errno != EAGAIN && errno != EINTR) {
            return FailFromSystem();
        }
        if ((*use)->nonBlocking) {
            return Fail(WSAEWOULDBLOCK);
        }
        if (!AwaitInTime(use, POLLIN, deadline)) {
            return SOCKET_ERROR;
        }
    }
}

}  // namespace

int quennet_sendto(SOCKET socket, const char* data, int length, int flags, const sockaddr* address,
                   int size) try {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (length < 0) {
        return Fail(WSAEINVAL);
    }
    const auto count = static_cast<std::size_t>(length);
    return use->stream ? SendStream(&use, data, count)
                       : SendDatagram(&use, data, count, flags, address, size);
} catch (const std::bad_alloc&) {
    return Fail(WSAENOBUFS);
}

int quennet_send(SOCKET socket, const char* data, int length, int flags) {
    return quennet_sendto(socket, data, length, flags, nullptr, 0);
}

int quennet_recvfrom(SOCKET socket, char* buffer, int length, int flags, sockaddr* address,
                     int* size) try {
    PushUnsentOfThread();
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (length < 0) {
        return Fail(WSAEINVAL);
    }
    const auto count = static_cast<std::size_t>(length);
    return use->stream ? ReceiveStream(&use, buffer, count, (flags & MSG_PEEK) != 0)
                       : ReceiveDatagram(&use, buffer, count, flags, address, size);
} catch (const std::bad_alloc&) {
    return Fail(WSAENOBUFS);
}

int quennet_recv(SOCKET socket, char* buffer, int length, int flags) {
    return quennet_recvfrom(socket, buffer, length, flags, nullptr, nullptr);
}

int WINAPI ioctlsocket(SOCKET socket, long command, u_long* argument) {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (command == FIONBIO) {
        use->nonBlocking = *argument != 0;
        return 0;
    }
    if (command != FIONREAD) {
        return Fail(WSAEINVAL);
    }
    int waiting = 0;
    if (ioctl(use.Descriptor(), system::ioctlReadable, &waiting) != 0) {
        return FailFromSystem();
    }
    *argument = use->received.Size() + static_cast<u_long>(waiting);
    return 0;
}
