#pragma once
// The other end of a control connection, on the system's own sockets: says a text and closes.

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <thread>

class ReplyServer {
  public:
    ReplyServer();
    std::uint16_t port() const { return port_; }

    /// Takes the connection that was made, and says `text` in `pieces` pieces of about one size.
    /// One piece has been said when this returns; more go out while the client reads.
    void Serve(std::string_view text, std::size_t pieces);

    /// Ends what Serve began.
    void Close();

  private:
    int listener_;
    int connection_ = -1;
    std::uint16_t port_ = 0;
    std::thread sender_;
};
