// From the making of a socket to its end.

#include <algorithm>
#include <new>

#include "net/errors.h"
#include "net/socket.h"
#include "net/waiting.h"

using namespace quennet::net;

namespace {

/// How long a close waits for a peer that takes none of the bytes still unsent, and how long for
/// one that takes them slowly.
constexpr int idlePatienceMilliseconds = 10'000;
constexpr int wholePatienceMilliseconds = 60'000;

/// Ends a system call that has told an address: its size goes back to the caller.
void StoreSize(int* place, socklen_t size) {
    if (place != nullptr) {
        *place = static_cast<int>(size);
    }
}

/// The descriptor of the next connection and what it takes over from the listener; -1 after a
/// failure.
int AcceptOne(SocketUse* listener, sockaddr* address, int* size, SocketState* model) {
    for (;;) {
        socklen_t room = size != nullptr ? static_cast<socklen_t>(*size) : 0;
        const int descriptor =
            system::Accept(listener->Descriptor(), address, size != nullptr ? &room : nullptr);
        if (descriptor >= 0) {
            StoreSize(size, room);
            model->stream = true;
            model->nonBlocking = (*listener)->nonBlocking;
            model->link = Link::connected;
            return descriptor;
        }
        const bool gone = errno == ECONNABORTED || errno == EINTR;
        if (!gone && errno != EAGAIN) {
            FailFromSystem();
            return -1;
        }
        if ((*listener)->nonBlocking) {
            Fail(WSAEWOULDBLOCK);
            return -1;
        }
        if (!listener->Await(POLLIN)) {
            return -1;
        }
    }
}

int WaitForConnection(SocketUse* use) {
    while ((*use)->link == Link::pending) {
        if (!use->Await(POLLOUT)) {
            return SOCKET_ERROR;
        }
        SettleConnect(&**use, use->Descriptor());
    }
    return (*use)->link == Link::connected ? 0 : FailWithFoundError(&**use);
}

int ConnectStream(SocketUse* use, const sockaddr* address, socklen_t size) {
    SocketState& state = **use;
    SettleConnect(&state, use->Descriptor());
    if (state.link == Link::connected) {
        return Fail(WSAEISCONN);
    }
    if (state.link == Link::pending) {
        return Fail(WSAEALREADY);
    }
    state.error = 0;
    state.failureShown = false;
    if (system::Connect(use->Descriptor(), address, size) == 0) {
        state.link = Link::connected;
        return 0;
    }
    if (errno == ECONNREFUSED && state.nonBlocking) {
        // The own machine refuses at once; a caller that does not block learns it like any other
        // outcome.
        state.link = Link::failed;
        state.error = WSAECONNREFUSED;
        return Fail(WSAEWOULDBLOCK);
    }
    if (errno != EINPROGRESS && errno != EINTR) {
        return FailFromSystem();
    }
    state.link = Link::pending;
    return state.nonBlocking ? Fail(WSAEWOULDBLOCK) : WaitForConnection(use);
}

/// Gives the peer some time to take the rest. False if the socket is gone.
bool PushBeforeClose(SocketUse* use) {
    SocketState& state = **use;
    const Deadline deadline = Deadline::After(wholePatienceMilliseconds);
    std::size_t before = 0;
    PushUnsent(&state, use->Descriptor());
    while (!state.unsent.Empty() && state.unsent.Size() != before) {
        before = state.unsent.Size();
        if (!use->Await(POLLOUT, std::min(deadline.RestForPoll(), idlePatienceMilliseconds))) {
            return false;
        }
        PushUnsent(&state, use->Descriptor());
    }
    return true;
}

void ShutSending(SocketUse* use) {
    SocketState& state = **use;
    state.sendShut = true;
    state.shutdownOwed = true;
    PushUnsent(&state, use->Descriptor());
    if (state.shutdownOwed) {
        NoteUnsent(use->Reference());
    }
}

int ShutStream(SocketUse* use, int how) {
    SocketState& state = **use;
    if (state.link != Link::connected) {
        return Fail(WSAENOTCONN);
    }
    if (how != SHUT_WR) {
        state.received.Clear();
        state.receiveShut = true;
    }
    if (how != SHUT_RD && !state.unsent.Empty()) {
        ShutSending(use);
        how = how == SHUT_RDWR ? SHUT_RD : -1;
    } else if (how != SHUT_RD) {
        state.sendShut = true;
    }
    const bool done = how < 0 || system::Shutdown(use->Descriptor(), how) == 0;
    if (state.error != 0) {
        return FailWithFoundError(&state);
    }
    return done ? 0 : FailFromSystem();
}

}  // namespace

SOCKET quennet_socket(int family, int type, int protocol) try {
    if (!Started()) {
        return INVALID_SOCKET;
    }
    const int descriptor = system::OpenSocket(family, type, protocol);
    if (descriptor < 0) {
        FailFromSystem();
        return INVALID_SOCKET;
    }
    if (type == SOCK_RAW && protocol == IPPROTO_ICMP) {
        system::LeaveOutRequests(descriptor);
    }
    SocketState model;
    model.stream = type == SOCK_STREAM;
    return AdoptDescriptor(descriptor, model);
} catch (const std::bad_alloc&) {
    Fail(WSAENOBUFS);
    return INVALID_SOCKET;
}

int quennet_bind(SOCKET socket, const sockaddr* address, int size) {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    const int result = system::Bind(use.Descriptor(), address, static_cast<socklen_t>(size));
    return result == 0 ? 0 : FailFromSystem();
}

int quennet_listen(SOCKET socket, int backlog) {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (system::Listen(use.Descriptor(), backlog) != 0) {
        return FailFromSystem();
    }
    use->link = Link::listening;
    return 0;
}

SOCKET quennet_accept(SOCKET socket, sockaddr* address, int* size) try {
    PushUnsentOfThread();
    SocketState model;
    int descriptor = -1;
    {
        // The listener's lock is gone before the new socket's is taken: no thread holds two.
        SocketUse use(socket);
        descriptor = use ? AcceptOne(&use, address, size, &model) : -1;
    }
    return descriptor >= 0 ? AdoptDescriptor(descriptor, model) : INVALID_SOCKET;
} catch (const std::bad_alloc&) {
    Fail(WSAENOBUFS);
    return INVALID_SOCKET;
}

int quennet_connect(SOCKET socket, const sockaddr* address, int size) try {
    PushUnsentOfThread();
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (use->stream) {
        return ConnectStream(&use, address, static_cast<socklen_t>(size));
    }
    const int result = system::Connect(use.Descriptor(), address, static_cast<socklen_t>(size));
    return result == 0 ? 0 : FailFromSystem();
} catch (const std::bad_alloc&) {
    return Fail(WSAENOBUFS);
}

int quennet_shutdown(SOCKET socket, int how) try {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (how != SHUT_RD && how != SHUT_WR && how != SHUT_RDWR) {
        return Fail(WSAEINVAL);
    }
    if (use->stream) {
        return ShutStream(&use, how);
    }
    return system::Shutdown(use.Descriptor(), how) == 0 ? 0 : FailFromSystem();
} catch (const std::bad_alloc&) {
    return Fail(WSAENOBUFS);
}

int WINAPI closesocket(SOCKET socket) try {
    SocketUse use(socket);
    if (!use) {
        return SOCKET_ERROR;
    }
    if (!use->resetAtClose && !PushBeforeClose(&use)) {
        return SOCKET_ERROR;
    }
    use.Close();
    return 0;
} catch (const std::bad_alloc&) {
    return Fail(WSAENOBUFS);
}
