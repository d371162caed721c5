#include "control.h"

#include <algorithm>
#include <utility>

namespace loopback {

namespace {

constexpr std::size_t longestLine = 4096;
constexpr Milliseconds longestSend{60'000};

// What may arrive ahead of its turn during a transfer.
constexpr std::size_t mostPending = 65536;

std::string_view WithoutTelnetSignals(std::string_view line) {
    // Interrupt process, and data mark.
    while (line.starts_with("\xFF\xF4") || line.starts_with("\xFF\xF2")) {
        line.remove_prefix(2);
    }
    return line;
}

bool IsAbort(std::string_view line) {
    constexpr std::string_view abort = "ABOR";
    return std::equal(line.begin(), line.end(), abort.begin(), abort.end(),
                      [](char left, char right) { return (left & ~0x20) == right; });
}

}  // namespace

ControlChannel::ControlChannel(Descriptor socket, int client, Shared* shared,
                               const StopSignal* stop)
    : socket_(std::move(socket)),
      client_(client),
      log_(&shared->log),
      breaker_(&shared->breaker),
      stop_(stop) {}

void ControlChannel::Receive() {
    char block[4096];
    std::ptrdiff_t count =
        ReadSome(socket_.Number(), block, breaker_->Room(Channel::control, sizeof block));
    if (count <= 0) {
        peerClosed_ = true;
        return;
    }
    auto size = static_cast<std::size_t>(count);
    incoming_.append(block, size);
    if (breaker_->Moved(Channel::control, size)) {
        NoteBreak("behind the client's \"" + incoming_ + "\"");
        Break();
    }
}

bool ControlChannel::TakeLine(std::string* line) {
    std::size_t end = incoming_.find('\n');
    if (end == std::string::npos) {
        return false;
    }
    std::size_t size = end > 0 && incoming_[end - 1] == '\r' ? end - 1 : end;
    *line = WithoutTelnetSignals(std::string_view(incoming_).substr(0, size));
    incoming_.erase(0, end + 1);
    return true;
}

LineEnd ControlChannel::ReadLine(Clock::time_point deadline, std::string* line) {
    while (!TakeLine(line)) {
        if (incoming_.size() > longestLine) {
            skipping_ = true;
            incoming_.clear();
        }
        if (Lost()) {
            return LineEnd::lost;
        }
        Ready ready = Clock::now() < deadline ? WaitReady(socket_.Number(), false, deadline, *stop_)
                                              : Ready::timeout;
        if (ready != Ready::yes) {
            return ready == Ready::stopped ? LineEnd::lost : LineEnd::idle;
        }
        Receive();
    }
    if (std::exchange(skipping_, false) || line->size() > longestLine) {
        log_->Add(client_, true, "(a line that is too long)");
        return LineEnd::tooLong;
    }
    log_->Add(client_, true, *line);
    return LineEnd::whole;
}

bool ControlChannel::Watchable() const {
    return !Lost() && incoming_.find('\n') == std::string::npos && incoming_.size() < mostPending;
}

bool ControlChannel::TakeAbort() {
    while (Watchable() && WaitReady(socket_.Number(), false, Clock::now(), *stop_) == Ready::yes) {
        Receive();
    }
    std::size_t end = incoming_.find_first_of("\r\n");
    if (end == std::string::npos || incoming_.find('\n') == std::string::npos ||
        !IsAbort(WithoutTelnetSignals(std::string_view(incoming_).substr(0, end)))) {
        return false;
    }
    std::string line;
    TakeLine(&line);
    log_->Add(client_, true, line);
    return true;
}

void ControlChannel::BeginCommand(const std::vector<Fault>& faults) {
    faults_ = faults;
    replied_ = false;
}

void ControlChannel::EndCommand() {
    if (const Fault* late = FindFault(faults_, FaultAction::lateReply)) {
        Say(late->text);
    }
    faults_.clear();
}

void ControlChannel::Reply(std::string_view text) {
    bool first = !std::exchange(replied_, true);
    if (const Fault* extra = FindFault(faults_, FaultAction::extraReply);
        first && extra != nullptr) {
        Say(extra->text);
    }
    Say(text);
    if (first && FindFault(faults_, FaultAction::dropAfter) != nullptr) {
        Close(false);
    } else if (first && FindFault(faults_, FaultAction::resetAfter) != nullptr) {
        Close(true);
    }
}

void ControlChannel::Say(std::string_view text) {
    if (!socket_.Valid()) {
        return;
    }
    std::string bytes;
    while (!text.empty()) {
        std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        line.remove_suffix(line.ends_with('\r') ? 1 : 0);
        log_->Add(client_, false, line);
        bytes.append(line).append("\r\n");
    }
    if (const Fault* delay = FindFault(faults_, FaultAction::delay)) {
        Sleep(delay->time, *stop_);
    }
    const Fault* split = FindFault(faults_, FaultAction::split);
    if (split == nullptr || split->bytes == 0) {
        Send(bytes);
        return;
    }
    for (std::size_t place = 0; place < bytes.size(); place += split->bytes) {
        if ((place > 0 && !Sleep(split->time, *stop_)) ||
            !Send(std::string_view(bytes).substr(place, split->bytes))) {
            return;
        }
    }
}

bool ControlChannel::Send(std::string_view bytes) {
    std::string_view first = bytes.substr(0, breaker_->Room(Channel::control, bytes.size()));
    if (SendAll(socket_.Number(), first, Clock::now() + longestSend, *stop_) != Sent::all) {
        socket_.Close();
        return false;
    }
    if (breaker_->Moved(Channel::control, first.size())) {
        NoteBreak("behind the server's \"" + std::string(first) + "\"");
        Break();
        return false;
    }
    return true;
}

void ControlChannel::NoteBreak(std::string_view where) {
    std::string text;
    for (char character : where) {
        if (character == '\r' || character == '\n') {
            text += character == '\r' ? "\\r" : "\\n";
        } else {
            text += character;
        }
    }
    log_->Add(client_, false, "(break " + text + ")");
}

void ControlChannel::Break() {
    Close(breaker_->Chosen().withReset);
}

void ControlChannel::Close(bool withReset) {
    if (withReset) {
        CloseWithReset(socket_);
    } else {
        CloseInOrder(socket_);
    }
}

}  // namespace loopback
