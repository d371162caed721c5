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
        std::string line;
        for (char byte = 0; !line.ends_with("\r\n"); line += byte) {
            loopback::WaitReady(socket_.Number(), false, Soon(), never_);
            if (loopback::ReadSome(socket_.Number(), &byte, 1) <= 0) {
                return "";
            }
        }
        return line.substr(0, line.size() - 2);
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
};
