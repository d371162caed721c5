#pragma once
// Data connections: how they come about, and how bytes move through them while the control
// connection is watched for ABOR.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "control.h"
#include "fault.h"
#include "socket.h"

namespace loopback {

enum class TransferEnd {
    done,
    noConnection,  // it did not come about
    broken,        // the client closed or reset it, or moved nothing for too long
    aborted,       // ABOR arrived
    fileFailed,    // the local file could not be read or written
    lost,          // the control connection ended, or the server stops
};

class DataLimit;

/// What the next data connection of one client will be.
class DataChannel {
  public:
    DataChannel(ControlChannel* control, Shared* shared, const StopSignal* stop)
        : control_(control),
          breaker_(&shared->breaker),
          stop_(stop),
          longestWait_(shared->options.dataSeconds * 1000) {}

    /// Listens for the next connection; its address for the 227 reply. Throws std::system_error.
    std::string ListenPassive();
    void AimAt(std::uint32_t address, std::uint16_t port);
    bool Prepared() const { return passive_.socket.Valid() || activePort_ != 0; }

    /// Gives the next bytes, at most `size`: their number, 0 at the end, -1 after a failure.
    using Source = std::function<std::ptrdiff_t(char* buffer, std::size_t size)>;
    /// Takes bytes; false after a failure.
    using Sink = std::function<bool(std::string_view bytes)>;

    /// Make the connection, move everything, close it. `faults` are the rules for this command. The
    /// preparation is used up.
    TransferEnd SendFrom(const Source& source, const std::vector<Fault>& faults);
    TransferEnd ReceiveInto(const Sink& sink, const std::vector<Fault>& faults);

  private:
    enum class Wish { read, write, hangUp };
    enum class Outcome { ready, timeout, aborted, lost };

    Outcome Wait(int socket, Wish wish, Clock::time_point deadline);
    TransferEnd Open(const std::vector<Fault>& faults);
    TransferEnd RefuseToOpen(const Fault& fault);
    TransferEnd SendBlocks(const Source& source, DataLimit* limit);
    TransferEnd SendBlock(std::string_view block);
    TransferEnd ReceiveBlocks(const Sink& sink, DataLimit* limit);
    TransferEnd EndAtLimit(FaultAction action);
    TransferEnd Break(const char* where);
    TransferEnd Pace(Milliseconds pause);
    void CloseAll();

    ControlChannel* control_;
    Breaker* breaker_;
    const StopSignal* stop_;
    Milliseconds longestWait_;
    Listener passive_;
    std::uint32_t activeAddress_ = 0;
    std::uint16_t activePort_ = 0;
    Descriptor data_;
};

}  // namespace loopback
