#pragma once
// Whether a server moves files byte for byte.

#include <mutex>
#include <string>

namespace hostkit {

/// What a server has said to the binary type, by the lines of a connection's log. The module goes
/// on with a transfer whose type was refused, and the server may change its line ends then.
class BinaryType {
  public:
    /// Takes the next line of the log.
    void TakeLine(const std::string& line);

    /// True unless the type was granted on this login, or not yet asked for.
    bool IsRefused() const;

    /// Why files can't be moved then, the server's words first; else empty.
    std::string Refusal() const;

  private:
    mutable std::mutex mutex_;
    bool isAwaited_ = false;  // the reply
    std::string refusal_;     // the server's words
};

}  // namespace hostkit
