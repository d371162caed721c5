#include "transfer.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace loopback {

namespace {

constexpr std::size_t blockSize = 262'144;

TransferEnd EndFrom(bool aborted) {
    return aborted ? TransferEnd::aborted : TransferEnd::lost;
}

}  // namespace

// How far a transfer may go before a rule ends it, and in what steps.
class DataLimit {
  public:
    explicit DataLimit(const std::vector<Fault>& faults) {
        for (FaultAction action : {FaultAction::stallData, FaultAction::closeData,
                                   FaultAction::failData, FaultAction::resetData}) {
            const Fault* fault = FindFault(faults, action);
            if (fault != nullptr && fault->bytes < left_) {
                left_ = fault->bytes;
                action_ = action;
                limited_ = true;
            }
        }
        if (const Fault* slow = FindFault(faults, FaultAction::slowData)) {
            step_ = std::clamp<std::size_t>(slow->bytes, 1, blockSize);
            pause_ = slow->time;
        }
    }

    bool Reached() const { return limited_ && left_ == 0; }
    FaultAction Action() const { return action_; }
    Milliseconds Pause() const { return pause_; }
    std::size_t NextStep() const { return std::min(step_, left_); }
    void Count(std::size_t bytes) { left_ -= limited_ ? bytes : 0; }

  private:
    std::size_t left_ = std::numeric_limits<std::size_t>::max();
    bool limited_ = false;
    FaultAction action_ = FaultAction::stallData;
    std::size_t step_ = blockSize;
    Milliseconds pause_{0};
};

std::string DataChannel::ListenPassive() {
    CloseAll();
    passive_ = Listen(0);
    return HostPortText(0x7F000001, passive_.port);
}

void DataChannel::AimAt(std::uint32_t address, std::uint16_t port) {
    CloseAll();
    activeAddress_ = address;
    activePort_ = port;
}

void DataChannel::CloseAll() {
    passive_.socket.Close();
    activePort_ = 0;
    data_.Close();
}

// Waits for the data socket with an eye on the control connection. A socket of -1 waits for the
// control connection alone.
DataChannel::Outcome DataChannel::Wait(int socket, Wish wish, Clock::time_point deadline) {
    constexpr short wanted[] = {POLLIN, POLLOUT, POLLRDHUP};
    for (;;) {
        if (control_->TakeAbort()) {
            return Outcome::aborted;
        }
        if (control_->Lost()) {
            return Outcome::lost;
        }
        auto left = std::chrono::ceil<Milliseconds>(deadline - Clock::now()).count();
        pollfd events[] = {{stop_->Number(), POLLIN, 0},
                           {control_->Watchable() ? control_->Number() : -1, POLLIN, 0},
                           {socket, wanted[static_cast<int>(wish)], 0}};
        int count = poll(events, 3, static_cast<int>(std::clamp<long long>(left, 0, 3'600'000)));
        if (count < 0 && errno != EINTR) {
            return Outcome::lost;
        }
        if (events[0].revents != 0) {
            return Outcome::lost;
        }
        if (events[1].revents == 0 && events[2].revents != 0) {
            return Outcome::ready;
        }
        if (count == 0 && Clock::now() >= deadline) {
            return Outcome::timeout;
        }
    }
}

TransferEnd DataChannel::RefuseToOpen(const Fault& fault) {
    constexpr Milliseconds longest{3'600'000};
    Milliseconds time = fault.time.count() > 0 ? fault.time : longest;
    Outcome outcome = Wait(-1, Wish::read, Clock::now() + time);
    return outcome == Outcome::timeout ? TransferEnd::noConnection
                                       : EndFrom(outcome == Outcome::aborted);
}

TransferEnd DataChannel::Open(const std::vector<Fault>& faults) {
    if (control_->Lost()) {
        return TransferEnd::lost;
    }
    if (const Fault* refuse = FindFault(faults, FaultAction::refuseData)) {
        return RefuseToOpen(*refuse);
    }
    Clock::time_point deadline = Clock::now() + longestWait_;
    if (activePort_ != 0) {
        data_ = Connect(activeAddress_, activePort_, deadline, *stop_);
    } else {
        Outcome outcome = Wait(passive_.socket.Number(), Wish::read, deadline);
        if (outcome == Outcome::aborted || outcome == Outcome::lost) {
            return EndFrom(outcome == Outcome::aborted);
        }
        data_ = Accept(passive_);
    }
    return data_.Valid() ? TransferEnd::done : TransferEnd::noConnection;
}

TransferEnd DataChannel::SendFrom(const Source& source, const std::vector<Fault>& faults) {
    TransferEnd end = Open(faults);
    if (end == TransferEnd::done) {
        DataLimit limit(faults);
        end = SendBlocks(source, &limit);
    }
    CloseAll();
    return end;
}

TransferEnd DataChannel::ReceiveInto(const Sink& sink, const std::vector<Fault>& faults) {
    TransferEnd end = Open(faults);
    if (end == TransferEnd::done) {
        DataLimit limit(faults);
        end = ReceiveBlocks(sink, &limit);
    }
    CloseAll();
    return end;
}

TransferEnd DataChannel::SendBlocks(const Source& source, DataLimit* limit) {
    std::string block(blockSize, '\0');
    for (;;) {
        if (limit->Reached()) {
            return EndAtLimit(limit->Action());
        }
        std::ptrdiff_t count = source(block.data(), limit->NextStep());
        if (count <= 0) {
            return count == 0 ? TransferEnd::done : TransferEnd::fileFailed;
        }
        auto size = static_cast<std::size_t>(count);
        if (TransferEnd end = SendBlock(std::string_view(block).substr(0, size));
            end != TransferEnd::done) {
            return end;
        }
        limit->Count(size);
        if (TransferEnd end = Pace(limit->Pause()); end != TransferEnd::done) {
            return end;
        }
    }
}

TransferEnd DataChannel::SendBlock(std::string_view block) {
    while (!block.empty()) {
        Outcome outcome = Wait(data_.Number(), Wish::write, Clock::now() + longestWait_);
        if (outcome != Outcome::ready) {
            return outcome == Outcome::timeout ? TransferEnd::broken
                                               : EndFrom(outcome == Outcome::aborted);
        }
        ssize_t count =
            send(data_.Number(), block.data(), breaker_->Room(Channel::data, block.size()),
                 MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count < 0 && errno != EAGAIN && errno != EINTR) {
            return TransferEnd::broken;
        }
        auto size = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        block.remove_prefix(size);
        if (breaker_->Moved(Channel::data, size)) {
            return Break("within the data sent");
        }
    }
    return TransferEnd::done;
}

TransferEnd DataChannel::ReceiveBlocks(const Sink& sink, DataLimit* limit) {
    std::string block(blockSize, '\0');
    for (;;) {
        if (limit->Reached()) {
            return EndAtLimit(limit->Action());
        }
        Outcome outcome = Wait(data_.Number(), Wish::read, Clock::now() + longestWait_);
        if (outcome != Outcome::ready) {
            return outcome == Outcome::timeout ? TransferEnd::broken
                                               : EndFrom(outcome == Outcome::aborted);
        }
        std::ptrdiff_t count = ReadSome(data_.Number(), block.data(),
                                        breaker_->Room(Channel::data, limit->NextStep()));
        if (count <= 0) {
            return count == 0 ? TransferEnd::done : TransferEnd::broken;
        }
        auto size = static_cast<std::size_t>(count);
        if (!sink(std::string_view(block).substr(0, size))) {
            return TransferEnd::fileFailed;
        }
        if (breaker_->Moved(Channel::data, size)) {
            return Break("within the data received");
        }
        limit->Count(size);
        if (TransferEnd end = Pace(limit->Pause()); end != TransferEnd::done) {
            return end;
        }
    }
}

TransferEnd DataChannel::EndAtLimit(FaultAction action) {
    constexpr Milliseconds longestStall{3'600'000};
    if (action == FaultAction::closeData) {
        CloseInOrder(data_);
        return TransferEnd::done;
    }
    if (action == FaultAction::resetData) {
        CloseWithReset(data_);
        return TransferEnd::broken;
    }
    if (action == FaultAction::failData) {
        CloseInOrder(data_);
        return TransferEnd::broken;
    }
    Outcome outcome = Wait(data_.Number(), Wish::hangUp, Clock::now() + longestStall);
    if (outcome == Outcome::aborted || outcome == Outcome::lost) {
        return EndFrom(outcome == Outcome::aborted);
    }
    return TransferEnd::broken;
}

TransferEnd DataChannel::Break(const char* where) {
    const loopback::Break chosen = breaker_->Chosen();
    control_->NoteBreak(where);
    if (chosen.withReset) {
        CloseWithReset(data_);
    } else {
        CloseInOrder(data_);
    }
    if (chosen.dataAlone) {
        return TransferEnd::broken;
    }
    control_->Break();
    return TransferEnd::lost;
}

TransferEnd DataChannel::Pace(Milliseconds pause) {
    if (pause.count() == 0) {
        return TransferEnd::done;
    }
    Outcome outcome = Wait(-1, Wish::read, Clock::now() + pause);
    return outcome == Outcome::timeout ? TransferEnd::done : EndFrom(outcome == Outcome::aborted);
}

}  // namespace loopback
