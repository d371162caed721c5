#pragma once
// A client that says what it is told, for the tests of servers: no protocol of its own.

#include <string>
#include <string_view>

#include "loopback/socket.h"

class RawClient {
  public:
    /// Connects the control connection. Check Connected.
    explicit RawClient(std::uint16_t port);

    bool Connected() const { return control_.Valid(); }

    /// Sends the bytes as they stand.
    void SendBytes(std::string_view bytes);

    /// Reads one line without its end; "(closed)", "(reset)" or "(nothing)" when there is none.
    std::string Line();

    /// Reads one reply, with LF between its lines.
    std::string Reply();

    /// Sends the line and reads one reply.
    std::string Command(std::string_view line);

    /// Sends USER and PASS; true when logged in. Reads the welcome before.
    bool Login(std::string_view user = "anonymous", std::string_view password = "me@here");

    /// PASV, and the connection to the port that it names. False when either fails.
    bool OpenPassive();
    /// PORT with a socket of this client's.
    bool OpenActive();
    /// Accepts the server's connection after OpenActive.
    bool AcceptActive();

    /// Everything from the data connection up to its end, which a reset turns into "(reset)".
    std::string ReadData();
    /// At most `count` bytes from the data connection.
    std::string ReadData(std::size_t count);
    bool SendData(std::string_view bytes);
    void CloseData() { data_.Close(); }

    /// A whole transfer over a passive connection: the data of LIST or RETR; the replies stand in
    /// lastReplies.
    std::string Fetch(std::string_view command);
    /// A whole upload; the final reply.
    std::string Store(std::string_view command, std::string_view bytes);

    std::string lastReplies;

    void Close() { control_.Close(); }

  private:
    loopback::StopSignal never_;
    loopback::Descriptor control_;
    loopback::Listener active_;
    loopback::Descriptor data_;
    std::string incoming_;
};
