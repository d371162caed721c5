#include "socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <system_error>

namespace loopback {

namespace {

sockaddr_in AddressOf(std::uint32_t host, std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(host);
    address.sin_port = htons(port);
    return address;
}

int RemainingMilliseconds(Clock::time_point deadline) {
    auto left = std::chrono::ceil<Milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<Milliseconds::rep>(left, 0, INT_MAX));
}

void SendSmallPiecesAtOnce(int socket) {
    int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

bool WouldBlock() {
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

}  // namespace

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        Close();
        number_ = other.Release();
    }
    return *this;
}

void Descriptor::Close() {
    if (Valid()) {
        ::close(Release());
    }
}

int Descriptor::Release() {
    int number = number_;
    number_ = -1;
    return number;
}

StopSignal::StopSignal() : event_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!event_.Valid()) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

void StopSignal::Set() {
    eventfd_write(event_.Number(), 1);
}

bool StopSignal::IsSet() const {
    pollfd event{event_.Number(), POLLIN, 0};
    return poll(&event, 1, 0) == 1;
}

Ready WaitReady(int socket, bool writing, Clock::time_point deadline, const StopSignal& stop) {
    pollfd events[] = {{stop.Number(), POLLIN, 0},
                       {socket, static_cast<short>(writing ? POLLOUT : POLLIN), 0}};
    for (;;) {
        int count = poll(events, 2, RemainingMilliseconds(deadline));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return Ready::timeout;
        }
        return events[0].revents != 0 ? Ready::stopped : Ready::yes;
    }
}

bool Sleep(Milliseconds time, const StopSignal& stop) {
    // A negative descriptor is passed over by poll.
    return WaitReady(-1, false, Clock::now() + time, stop) != Ready::stopped;
}

Listener Listen(std::uint16_t port) {
    Listener listener;
    listener.socket = Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    int on = 1;
    sockaddr_in address = AddressOf(INADDR_LOOPBACK, port);
    socklen_t size = sizeof address;
    int number = listener.socket.Number();
    if (number < 0 || setsockopt(number, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(number, reinterpret_cast<sockaddr*>(&address), size) != 0 || listen(number, 64) != 0 ||
        getsockname(number, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::system_error(errno, std::generic_category(),
                                "cannot listen on 127.0.0.1:" + std::to_string(port));
    }
    listener.port = ntohs(address.sin_port);
    return listener;
}

Descriptor Accept(const Listener& listener) {
    Descriptor socket(
        accept4(listener.socket.Number(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (socket.Valid()) {
        SendSmallPiecesAtOnce(socket.Number());
    }
    return socket;
}

Descriptor Connect(std::uint32_t address, std::uint16_t port, Clock::time_point deadline,
                   const StopSignal& stop) {
    if (address >> 24 != IN_LOOPBACKNET) {
        return {};
    }
    Descriptor connection(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!connection.Valid()) {
        return {};
    }
    int number = connection.Number();
    sockaddr_in to = AddressOf(address, port);
    if (connect(number, reinterpret_cast<sockaddr*>(&to), sizeof to) != 0) {
        int error = errno;
        socklen_t size = sizeof error;
        if (error != EINPROGRESS || WaitReady(number, true, deadline, stop) != Ready::yes ||
            getsockopt(number, SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0) {
            return {};
        }
    }
    SendSmallPiecesAtOnce(number);
    return connection;
}

Sent SendAll(int socket, std::string_view data, Clock::time_point deadline,
             const StopSignal& stop) {
    while (!data.empty()) {
        ssize_t count = send(socket, data.data(), data.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0) {
            data.remove_prefix(static_cast<std::size_t>(count));
            continue;
        }
        if (!WouldBlock()) {
            return Sent::failed;
        }
        Ready ready = WaitReady(socket, true, deadline, stop);
        if (ready != Ready::yes) {
            return ready == Ready::stopped ? Sent::stopped : Sent::timeout;
        }
    }
    return Sent::all;
}

std::ptrdiff_t ReadSome(int socket, char* buffer, std::size_t size) {
    ssize_t count = 0;
    do {
        count = recv(socket, buffer, size, 0);
    } while (count < 0 && errno == EINTR);
    return count;
}

void CloseWithReset(Descriptor& socket) {
    linger now{1, 0};
    setsockopt(socket.Number(), SOL_SOCKET, SO_LINGER, &now, sizeof now);
    socket.Close();
}

void CloseInOrder(Descriptor& socket) {
    constexpr int mostBlocks = 256;
    char rest[4096];
    for (int block = 0; block < mostBlocks; ++block) {
        if (recv(socket.Number(), rest, sizeof rest, MSG_DONTWAIT) <= 0) {
            break;
        }
    }
    socket.Close();
}

std::string HostPortText(std::uint32_t address, std::uint16_t port) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += std::to_string(address >> shift & 0xFF) + ',';
    }
    return text + std::to_string(port >> 8) + ',' + std::to_string(port & 0xFF);
}

bool ParseHostPort(std::string_view text, std::uint32_t* address, std::uint16_t* port) {
    unsigned numbers[6];
    for (unsigned& number : numbers) {
        bool last = &number == &numbers[5];
        auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (error != std::errc() || number > 255) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(end - text.data()));
        if (last != text.empty() || (!last && text.front() != ',')) {
            return false;
        }
        if (!last) {
            text.remove_prefix(1);
        }
    }
    *address = numbers[0] << 24 | numbers[1] << 16 | numbers[2] << 8 | numbers[3];
    *port = static_cast<std::uint16_t>(numbers[4] << 8 | numbers[5]);
    return true;
}

}  // namespace loopback
