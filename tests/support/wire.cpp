// The thread behind a scripted server: plays the steps, and notes what went over the wire.

#include "support/wire.h"

#include <gtest/gtest.h>
#include <poll.h>

#include <system_error>

using loopback::Clock;
using loopback::Ready;
using loopback::Sent;

namespace {

constexpr std::size_t longestLine = 1 << 20;
constexpr std::chrono::seconds longestHang{60};

}  // namespace

Wire::~Wire() {
    Join(true);
    if (!reported_ && !complaint_.empty()) {
        ADD_FAILURE() << transcript_ << complaint_;
    }
}

bool Wire::AwaitMark(std::string_view name) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, limit_, [&] { return ended_ || marks_.contains(name); });
    return marks_.contains(name);
}

void Wire::Signal(std::string_view name) {
    std::lock_guard guard(lock_);
    signals_.emplace(name);
    changed_.notify_all();
}

void Wire::Finish(const char* file, int line) {
    std::string outcome = Outcome();
    if (!outcome.empty()) {
        ADD_FAILURE_AT(file, line) << outcome;
    }
}

std::string Wire::Outcome() {
    Join(false);
    reported_ = true;
    return complaint_.empty() ? complaint_ : "The wire:\n" + transcript_ + complaint_;
}

std::vector<std::string> Wire::Saw() const {
    std::lock_guard guard(lock_);
    return saw_;
}

std::string Wire::Pattern(std::size_t count, std::size_t offset) {
    std::string bytes(count, '\0');
    for (std::size_t place = 0; place < count; ++place) {
        auto number = static_cast<std::uint32_t>(place + offset) * 2654435761u;
        bytes[place] = static_cast<char>(number >> 24 ^ number >> 13);
    }
    return bytes;
}

// With `atOnce` without waiting for the rest of the script.
void Wire::Join(bool atOnce) {
    finish_.Set();
    if (atOnce) {
        cancel_.Set();
        std::lock_guard guard(lock_);
        cancelled_ = true;
        changed_.notify_all();
    }
    if (thread_.joinable()) {
        thread_.join();
    }
    CloseAll();
}

void Wire::CloseAll() {
    loopback::CloseInOrder(control_);
    loopback::CloseInOrder(data_);
    passive_.socket.Close();
    listener_.socket.Close();
}

void Wire::Note(std::string line) {
    std::lock_guard guard(lock_);
    transcript_ += line + '\n';
}

void Wire::End(std::string complaint) {
    std::lock_guard guard(lock_);
    complaint_ = std::move(complaint);
    ended_ = true;
    changed_.notify_all();
}

void Wire::Run() {
    std::string playing = "the first connection";
    try {
        if (steps_.empty() || steps_.front().play != &Wire::AcceptControl) {
            AcceptControl({});
        }
        for (const Step& step : steps_) {
            playing = step.source;
            (this->*step.play)(step);
        }
        playing = "the end of the script";
        End("");
        WatchAfterTheEnd();
    } catch (const Diverted& diverted) {
        End("The wire went another way at: " + ShowBytes(playing) + "\n" + diverted.reason);
    } catch (const std::system_error& error) {
        End("The wire broke at: " + ShowBytes(playing) + "\n" + error.what());
    }
    CloseAll();
}

void Wire::WatchAfterTheEnd() {
    for (bool finished = false; !finished;) {
        NoteRemainder();
        pollfd events[] = {{finish_.Number(), POLLIN, 0},
                           {control_.Number(), POLLIN, 0},
                           {listener_.socket.Number(), POLLIN, 0}};
        poll(events, 3, -1);
        if (events[2].revents != 0) {
            throw Diverted{"the client connected once more"};
        }
        if (events[1].revents != 0 && !ReceiveControl(Clock::now(), cancel_)) {
            control_.Close();
        }
        finished = events[0].revents != 0 && incoming_.empty();
    }
}

void Wire::AcceptControl(const Step&) {
    NoteRemainder();
    loopback::CloseInOrder(control_);
    if (!listener_.socket.Valid()) {
        throw Diverted{"the script has closed the listening socket"};
    }
    if (loopback::WaitReady(listener_.socket.Number(), false, FromNow(), cancel_) != Ready::yes) {
        throw Diverted{"no connection came"};
    }
    control_ = loopback::Accept(listener_);
    Note("[control connection accepted]");
}

void Wire::Refuse(const Step&) {
    listener_.socket.Close();
}

void Wire::CloseControl(const Step&) {
    NoteRemainder();
    loopback::CloseInOrder(control_);
    Note("[control connection closed]");
}

void Wire::ResetControl(const Step&) {
    NoteRemainder();
    loopback::CloseWithReset(control_);
    Note("[control connection reset]");
}

// Commands that arrived ahead of their turn must not be lost unseen with their connection.
void Wire::NoteRemainder() {
    if (!incoming_.empty()) {
        throw Diverted{"the client has sent more: " + ShowBytes(std::exchange(incoming_, {}))};
    }
}

void Wire::Say(const Step& step) {
    SayBytes(step.text + "\r\n");
}

void Wire::SayRaw(const Step& step) {
    SayBytes(step.text);
}

void Wire::SayBytes(std::string bytes) {
    constexpr std::string_view place = "{pasv}";
    if (std::size_t at = bytes.find(place); at != std::string::npos) {
        passive_ = loopback::Listen(0);
        bytes.replace(at, place.size(), loopback::HostPortText(0x7F000001, passive_.port));
    }
    Note("<- " + ShowBytes(bytes));
    Sent sent = loopback::SendAll(control_.Number(), bytes, FromNow(), cancel_);
    if (sent != Sent::all) {
        throw Diverted{sent == Sent::failed ? "the client has closed the control connection"
                                            : "the client does not read"};
    }
}

// False at the end of the connection. Throws when `stop` or the deadline ends the wait.
bool Wire::ReceiveControl(Clock::time_point deadline, const loopback::StopSignal& stop) {
    if (loopback::WaitReady(control_.Number(), false, deadline, stop) != Ready::yes) {
        throw Diverted{"nothing came"};
    }
    char block[16384];
    std::ptrdiff_t count = loopback::ReadSome(control_.Number(), block, sizeof block);
    incoming_.append(block, static_cast<std::size_t>(std::max<std::ptrdiff_t>(count, 0)));
    return count > 0;
}

std::string Wire::ReadLine() {
    Clock::time_point deadline = FromNow();
    std::size_t end = 0;
    while ((end = incoming_.find('\n')) == std::string::npos) {
        if (incoming_.size() > longestLine) {
            throw Diverted{"a line without an end came: " + ShowBytes(incoming_)};
        }
        if (!ReceiveControl(deadline, cancel_)) {
            throw Diverted{"the client closed the control connection" +
                           (incoming_.empty() ? "" : " behind " + ShowBytes(incoming_))};
        }
    }
    std::string line = incoming_.substr(0, end + 1);
    incoming_.erase(0, end + 1);
    return line;
}

void Wire::ExpectLine(const Step& step) {
    std::string line = ReadLine();
    bool wholeEnd = line.ends_with("\r\n");
    std::string text = line.substr(0, line.size() - (wholeEnd ? 2 : 1));
    Note("-> " + ShowBytes(wholeEnd ? text : line));
    {
        std::lock_guard guard(lock_);
        saw_.push_back(text);
    }
    bool same = step.anyRest ? text.starts_with(step.text) : text == step.text;
    if (!wholeEnd || !same) {
        throw Diverted{"came: " + ShowBytes(wholeEnd ? text : line)};
    }
    if (text.starts_with("PORT ") &&
        !loopback::ParseHostPort(std::string_view(text).substr(5), &activeAddress_, &activePort_)) {
        throw Diverted{"these are not the six numbers of an address"};
    }
}

void Wire::ExpectClose(const Step&) {
    NoteRemainder();
    while (ReceiveControl(FromNow(), cancel_)) {
        NoteRemainder();
    }
    control_.Close();
    Note("[client closed the control connection]");
}

void Wire::Pause(const Step& step) {
    const std::chrono::duration<double> time(step.seconds);
    loopback::Sleep(std::chrono::duration_cast<loopback::Milliseconds>(time), cancel_);
}

void Wire::Hang(const Step&) {
    Note("[hangs]");
    Clock::time_point deadline = Clock::now() + longestHang;
    for (;;) {
        Ready ready = loopback::WaitReady(control_.Number(), false, deadline, finish_);
        if (ready == Ready::timeout) {
            throw Diverted{"the client did not close the control connection"};
        }
        if (ready == Ready::stopped &&
            loopback::WaitReady(control_.Number(), false, Clock::now(), cancel_) != Ready::yes) {
            return;
        }
        if (!ReceiveControl(deadline, cancel_)) {
            control_.Close();
            Note("[client closed the control connection]");
            return;
        }
        Note("-> " + ShowBytes(incoming_) + " (not answered)");
        std::lock_guard guard(lock_);
        saw_.push_back(incoming_.substr(0, incoming_.find_first_of("\r\n")));
        incoming_.clear();
    }
}

void Wire::Mark(const Step& step) {
    std::lock_guard guard(lock_);
    marks_.insert(step.text);
    changed_.notify_all();
}

void Wire::AwaitSignal(const Step& step) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, limit_, [&] { return cancelled_ || signals_.contains(step.text); });
    if (!signals_.contains(step.text)) {
        throw Diverted{"the test gave no such signal"};
    }
}
