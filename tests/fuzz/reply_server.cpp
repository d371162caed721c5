#include "fuzz/reply_server.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>

#include "fuzz/expect.h"

namespace {

void SayInPieces(int connection, std::string_view text, std::size_t pieces) {
    constexpr auto pause = std::chrono::microseconds(100);
    const std::size_t size = text.size() / pieces + 1;
    for (std::size_t begin = 0; begin < text.size(); begin += size) {
        if (begin > 0) {
            std::this_thread::sleep_for(pause);
        }
        const std::string_view piece = text.substr(begin, size);
        send(connection, piece.data(), piece.size(), MSG_NOSIGNAL);
    }
    shutdown(connection, SHUT_WR);
}

}  // namespace

ReplyServer::ReplyServer() : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* name = reinterpret_cast<sockaddr*>(&address);
    Expect(bind(listener_, name, size) == 0 && listen(listener_, 1) == 0 &&
           getsockname(listener_, name, &size) == 0);
    port_ = ntohs(address.sin_port);
}

void ReplyServer::Serve(std::string_view text, std::size_t pieces) {
    const int on = 1;
    connection_ = accept(listener_, nullptr, nullptr);
    Expect(connection_ != -1);
    setsockopt(connection_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (pieces > 1) {
        sender_ = std::thread(SayInPieces, connection_, text, pieces);
    } else {
        SayInPieces(connection_, text, 1);
    }
}

void ReplyServer::Close() {
    if (sender_.joinable()) {
        sender_.join();
    }
    close(connection_);
}
