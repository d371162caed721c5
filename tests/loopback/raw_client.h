#pragma once
// A client that says what it is told, for the tests of servers: no protocol of its own.

#include <string>
#include <string_view>

#include "loopback/socket.h"

class RawClient {
  public:
    explicit RawClient(std::uint16_t port)
        : socket_(loopback::Connect(0x7F000001, port, Soon(), never_)) {}

    /// Sends the bytes as they stand.
    void Send(std::string_view bytes) {
        loopback::SendAll(socket_.Number(), bytes, Soon(), never_);
    }

    /// Reads one line without its end; "" when none comes.
    std::string Line() {
        std::size_t end = 0;
        while ((end = incoming_.find("\r\n")) == std::string::npos) {
            char block[4096];
            loopback::WaitReady(socket_.Number(), false, Soon(), never_);
            const std::ptrdiff_t count = loopback::ReadSome(socket_.Number(), block, sizeof block);
            if (count <= 0) {
                return "";
            }
            incoming_.append(block, static_cast<std::size_t>(count));
        }
        const std::string line = incoming_.substr(0, end);
        incoming_.erase(0, end + 2);
        return line;
    }

    /// Sends the line and reads one.
    std::string Command(std::string_view line) {
        Send(std::string(line) + "\r\n");
        return Line();
    }

    void Close() { socket_.Close(); }

  private:
    static loopback::Clock::time_point Soon() {
        return loopback::Clock::now() + std::chrono::seconds(20);
    }

    loopback::StopSignal never_;
    loopback::Descriptor socket_;
    std::string incoming_;
};
