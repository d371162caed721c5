#pragma once
// A client that says what it is told, for the tests of servers: no protocol of its own.

#include <string>
#include <string_view>

#include "loopback/socket.h"

class RawClient {
  public:
    /// Connects the control connection.
    explicit RawClient(std::uint16_t port);

    /// Sends the bytes as they stand.
    void SendBytes(std::string_view bytes);

    /// Sends the line and reads one reply of a single line; "" when none comes.
    std::string Command(std::string_view line);
    std::string Reply();

    /// Reads the welcome, and logs in as an anonymous user.
    void Login();

    /// PASV, and the connection to the port that it names. False when either fails.
    bool OpenPassive();
    void SendData(std::string_view bytes);

    /// A whole transfer over a passive connection: the data of a RETR; the first reply stands in
    /// `reply`.
    std::string Fetch(std::string_view command);
    /// A whole upload; the final reply.
    std::string Store(std::string_view command, std::string_view bytes);

    void Close() { control_.Close(); }
    void CloseData() { data_.Close(); }

    std::string reply;

  private:
    bool ReadSome(const loopback::Descriptor& from, std::string* text);

    loopback::StopSignal never_;
    loopback::Descriptor control_;
    loopback::Descriptor data_;
    std::string incoming_;
};
