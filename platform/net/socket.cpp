#include "net/socket.h"

#include <atomic>
#include <new>
#include <utility>

#include "net/errors.h"
#include "net/waiting.h"

namespace quennet::net {

namespace {

// Slots come in chunks, made when the first descriptor of a chunk appears.
constexpr std::size_t chunkSize = 256;
constexpr std::size_t chunkCount = 4096;

struct Chunk {
    Socket slots[chunkSize];
};

std::atomic<Chunk*> chunks[chunkCount];

/// Null where no descriptor has ever been.
Socket* FindSlot(std::size_t number) {
    if (number >= chunkSize * chunkCount) {
        return nullptr;
    }
    Chunk* const chunk = chunks[number / chunkSize].load(std::memory_order_acquire);
    return chunk != nullptr ? &chunk->slots[number % chunkSize] : nullptr;
}

/// Null when there is no memory or the number is too high.
Socket* MakeSlot(std::size_t number) {
    if (number >= chunkSize * chunkCount) {
        return nullptr;
    }
    std::atomic<Chunk*>& place = chunks[number / chunkSize];
    if (place.load(std::memory_order_acquire) == nullptr) {
        Chunk* const chunk = new (std::nothrow) Chunk;
        Chunk* expected = nullptr;
        if (!place.compare_exchange_strong(expected, chunk, std::memory_order_acq_rel)) {
            delete chunk;  // another thread was first
        }
    }
    return FindSlot(number);
}

void SetReset(int descriptor) {
    const linger reset{1, 0};
    system::SetOption(descriptor, system::socketLevel, system::optionLinger, &reset, sizeof reset);
}

/// Closes the socket, or leaves that to the last sleeper. Needs the lock.
void CloseLocked(Socket* socket) {
    socket->open = false;
    ++socket->generation;
    socket->state = SocketState();
    if (socket->sleepers == 0) {
        ::close(socket->descriptor);
        return;
    }
    socket->descriptorOwed = true;
    system::Shutdown(socket->descriptor, SHUT_RDWR);  // wakes them
}

}  // namespace

bool IsKnownWritable(SOCKET number) {
    const Socket* const socket = FindSlot(number);
    return socket != nullptr && socket->open && socket->state.link == Link::connected &&
           !socket->state.unsent.Stalled();
}

SOCKET AdoptDescriptor(int descriptor, const SocketState& model) {
    Socket* const socket = MakeSlot(static_cast<std::size_t>(descriptor));
    if (socket == nullptr) {
        ::close(descriptor);
        Fail(WSAEMFILE);
        return INVALID_SOCKET;
    }
    const std::lock_guard guard(socket->lock);
    socket->descriptor = descriptor;
    socket->open = true;
    socket->state.stream = model.stream;
    socket->state.nonBlocking = model.nonBlocking;
    socket->state.link = model.link;
    return static_cast<SOCKET>(descriptor);
}

SocketUse::SocketUse(SOCKET number) {
    if (!Started()) {
        return;
    }
    Socket* const socket = FindSlot(number);
    if (socket == nullptr) {
        Fail(WSAENOTSOCK);
        return;
    }
    lock_ = std::unique_lock(socket->lock);
    if (!socket->open) {
        lock_.unlock();
        Fail(WSAENOTSOCK);
        return;
    }
    reference_ = {socket, socket->generation};
}

bool SocketUse::Await(short events, int milliseconds) {
    lock_.unlock();
    Awaited awaited{reference_, events, 0};
    AwaitSockets({&awaited, 1}, Deadline::After(milliseconds));
    lock_.lock();
    if (reference_.Alive()) {
        return true;
    }
    lock_.unlock();
    Fail(WSAEINTR);
    return false;
}

void SocketUse::Close() {
    CloseLocked(reference_.socket);
    lock_.unlock();
}

void SettleConnect(SocketState* state, int descriptor) {
    if (state->link != Link::pending) {
        return;
    }
    pollfd question{descriptor, POLLOUT, 0};
    if (::poll(&question, 1, 0) <= 0) {
        return;
    }
    int error = 0;
    socklen_t size = sizeof error;
    system::GetOption(descriptor, system::socketLevel, system::optionError, &error, &size);
    if (error != 0) {
        state->link = Link::failed;
        state->error = PlatformError(error);
    } else {
        state->link = Link::connected;
    }
}

void PushUnsent(SocketState* state, int descriptor) {
    const int error = state->unsent.PushTo(descriptor);
    if (error != 0) {
        state->error = PlatformError(error);
    }
    if (state->shutdownOwed && state->unsent.Empty()) {
        state->shutdownOwed = false;
        system::Shutdown(descriptor, SHUT_WR);
    }
}

ReadAhead::Fill ReceiveAhead(SocketState* state, const SocketReference& reference) {
    const int descriptor = reference.socket->descriptor;
    state->sentSinceWait = false;
    if (!state->unsent.Empty()) {
        PushUnsent(state, descriptor);
    }
    if (!state->unsent.Empty()) {
        NoteUnsent(reference);  // another thread may have combined it
    }
    const ReadAhead::Fill result = state->received.FillFrom(descriptor);
    if (result == ReadAhead::Fill::failed) {
        state->error = PlatformError(errno);
    }
    return result;
}

int FailWithFoundError(SocketState* state) {
    return Fail(std::exchange(state->error, 0));
}

bool BeginSleep(const SocketReference& reference) {
    const std::lock_guard guard(reference.socket->lock);
    if (!reference.Alive()) {
        return false;
    }
    ++reference.socket->sleepers;
    return true;
}

void EndSleep(const SocketReference& reference) {
    Socket* const socket = reference.socket;
    const std::lock_guard guard(socket->lock);
    --socket->sleepers;
    if (socket->sleepers == 0 && socket->descriptorOwed) {
        socket->descriptorOwed = false;
        ::close(socket->descriptor);
    }
}

void ResetAllSockets() {
    for (const std::atomic<Chunk*>& place : chunks) {
        Chunk* const chunk = place.load(std::memory_order_acquire);
        if (chunk == nullptr) {
            continue;
        }
        for (Socket& socket : chunk->slots) {
            const std::lock_guard guard(socket.lock);
            if (socket.open) {
                SetReset(socket.descriptor);
                CloseLocked(&socket);
            }
        }
    }
}

}  // namespace quennet::net
