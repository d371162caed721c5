#include "support/wire_player.h"

#include <poll.h>

#include <algorithm>
#include <system_error>

#include "support/wire.h"

using loopback::Clock;
using loopback::Milliseconds;
using loopback::Ready;
using loopback::Sent;

namespace {

constexpr std::size_t longestLine = 1 << 20;
constexpr Milliseconds longestHang{60'000};

Milliseconds FromSeconds(double seconds) {
    return std::chrono::duration_cast<Milliseconds>(std::chrono::duration<double>(seconds));
}

}  // namespace

WirePlayer::WirePlayer() : listener_(loopback::Listen(0)), port_(listener_.port) {}

WirePlayer::~WirePlayer() {
    Join(true);
}

void WirePlayer::Register(std::string name, std::string bytes) {
    buffers_[std::move(name)] = std::move(bytes);
}

void WirePlayer::Start(const std::vector<std::string>& lines) {
    try {
        Load(lines);
    } catch (const Diverted& diverted) {
        Complain("The script cannot be played: " + diverted.reason);
        CloseAll();
        return;
    }
    thread_ = std::thread([this] { Run(); });
}

void WirePlayer::Load(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) {
        WireStep step{};
        std::string problem = ParseWireStep(line, &step);
        if (!problem.empty()) {
            throw Diverted{problem + ": " + ShowBytes(line)};
        }
        CheckNames(step);
        steps_.push_back(std::move(step));
    }
}

void WirePlayer::CheckNames(const WireStep& step) const {
    bool named = step.verb == WireVerb::send || step.verb == WireVerb::dataSend ||
                 step.verb == WireVerb::dataExpect;
    if (named && !buffers_.contains(step.text)) {
        throw Diverted{"no buffer was registered as " + step.text};
    }
}

bool WirePlayer::AwaitMark(std::string_view name) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, limit_, [&] { return ended_ || marks_.contains(name); });
    return marks_.contains(name);
}

void WirePlayer::Signal(std::string_view name) {
    std::lock_guard guard(lock_);
    signals_.emplace(name);
    changed_.notify_all();
}

void WirePlayer::Join(bool atOnce) {
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

std::string WirePlayer::Complaint() const {
    std::lock_guard guard(lock_);
    return complaint_;
}

std::vector<std::string> WirePlayer::Saw() const {
    std::lock_guard guard(lock_);
    return saw_;
}

std::string WirePlayer::Transcript() const {
    std::lock_guard guard(lock_);
    std::string text;
    for (const std::string& line : transcript_) {
        text += line + '\n';
    }
    return text;
}

void WirePlayer::Note(std::string line) {
    std::lock_guard guard(lock_);
    transcript_.push_back(std::move(line));
}

void WirePlayer::Complain(std::string reason) {
    std::lock_guard guard(lock_);
    complaint_ = std::move(reason);
    ended_ = true;
    changed_.notify_all();
}

void WirePlayer::Run() {
    std::string playing = "the first connection";
    try {
        if (steps_.empty() || steps_.front().verb != WireVerb::accept) {
            AcceptControl();
        }
        for (const WireStep& step : steps_) {
            playing = step.source;
            Play(step);
        }
        playing = "the end of the script";
        {
            std::lock_guard guard(lock_);
            ended_ = true;
            changed_.notify_all();
        }
        WatchAfterTheEnd();
    } catch (const Diverted& diverted) {
        Complain("The wire went another way at: " + ShowBytes(playing) + "\n" + diverted.reason);
    } catch (const std::system_error& error) {
        Complain("The wire broke at: " + ShowBytes(playing) + "\n" + error.what());
    }
    CloseAll();
}

void WirePlayer::CloseAll() {
    loopback::CloseInOrder(control_);
    loopback::CloseInOrder(data_);
    passive_.socket.Close();
    listener_.socket.Close();
}

void WirePlayer::Play(const WireStep& step) {
    if (step.verb >= WireVerb::dataAccept) {
        PlayData(step);
        return;
    }
    PlayControl(step);
}

void WirePlayer::PlayControl(const WireStep& step) {
    switch (step.verb) {
        case WireVerb::say:
            Say(WithDataAddress(step.text) + "\r\n");
            return;
        case WireVerb::sayRaw:
            Say(WithDataAddress(step.text));
            return;
        case WireVerb::send:
            Say(buffers_[step.text]);
            return;
        case WireVerb::flood:
            Flood(step.text + "\r\n");
            return;
        case WireVerb::expectLine:
            ExpectLine(step);
            return;
        case WireVerb::expectClose:
            ExpectClose();
            return;
        case WireVerb::silent:
            ExpectSilence(step.number);
            return;
        case WireVerb::pause:
            loopback::Sleep(FromSeconds(step.number), cancel_);
            return;
        case WireVerb::hang:
            Hang();
            return;
        case WireVerb::close:
        case WireVerb::reset:
            CloseControl(step.verb == WireVerb::reset);
            return;
        case WireVerb::accept:
            AcceptControl();
            return;
        case WireVerb::refuse:
            listener_.socket.Close();
            return;
        case WireVerb::mark: {
            std::lock_guard guard(lock_);
            marks_.insert(step.text);
            changed_.notify_all();
            return;
        }
        default:
            AwaitSignal(step.text);
            return;
    }
}

void WirePlayer::AcceptControl() {
    NoteRemainder();
    loopback::CloseInOrder(control_);
    int number = listener_.socket.Number();
    if (number < 0) {
        throw Diverted{"the script has closed the listening socket"};
    }
    if (loopback::WaitReady(number, false, FromNow(), cancel_) != Ready::yes) {
        throw Diverted{"no connection came"};
    }
    control_ = loopback::Accept(listener_);
    Note("[control connection accepted]");
}

void WirePlayer::CloseControl(bool withReset) {
    NoteRemainder();
    if (withReset) {
        loopback::CloseWithReset(control_);
    } else {
        loopback::CloseInOrder(control_);
    }
    Note(withReset ? "[control connection reset]" : "[control connection closed]");
}

// Commands that arrived ahead of their turn must not be lost unseen with their connection.
void WirePlayer::NoteRemainder() {
    if (incoming_.empty()) {
        return;
    }
    std::string rest = std::move(incoming_);
    incoming_.clear();
    throw Diverted{"the client has sent more: " + ShowBytes(rest)};
}

std::string WirePlayer::WithDataAddress(std::string text) {
    constexpr std::string_view place = "{pasv}";
    std::size_t at = text.find(place);
    if (at == std::string::npos) {
        return text;
    }
    passive_ = loopback::Listen(0);
    return text.replace(at, place.size(), loopback::HostPortText(0x7F000001, passive_.port));
}

void WirePlayer::Say(std::string_view bytes) {
    Note("<- " + ShowBytes(bytes));
    Sent sent = loopback::SendAll(control_.Number(), bytes, FromNow(), cancel_);
    if (sent != Sent::all) {
        throw Diverted{sent == Sent::failed ? "the client has closed the control connection"
                                            : "the client does not read"};
    }
}

void WirePlayer::Flood(const std::string& line) {
    Note("<- " + ShowBytes(line) + " again and again");
    std::string block;
    while (block.size() < 16384) {
        block += line;
    }
    Clock::time_point deadline = FromNow();
    Sent sent = Sent::all;
    while (sent == Sent::all && Clock::now() < deadline) {
        sent = loopback::SendAll(control_.Number(), block, deadline, cancel_);
    }
    if (sent != Sent::failed) {
        throw Diverted{"the client did not close the control connection"};
    }
}

// False at the end of the connection. Throws when `stop` or the deadline ends the wait.
bool WirePlayer::ReceiveControl(Deadline deadline, const loopback::StopSignal& stop) {
    if (loopback::WaitReady(control_.Number(), false, deadline, stop) != Ready::yes) {
        throw Diverted{"nothing came"};
    }
    char block[16384];
    std::ptrdiff_t count = loopback::ReadSome(control_.Number(), block, sizeof block);
    if (count <= 0) {
        return false;
    }
    incoming_.append(block, static_cast<std::size_t>(count));
    return true;
}

std::string WirePlayer::ReadLine() {
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

void WirePlayer::ExpectLine(const WireStep& step) {
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

void WirePlayer::ExpectClose() {
    NoteRemainder();
    while (ReceiveControl(FromNow(), cancel_)) {
        NoteRemainder();
    }
    control_.Close();
    Note("[client closed the control connection]");
}

void WirePlayer::ExpectSilence(double seconds) {
    NoteRemainder();
    Clock::time_point deadline = Clock::now() + FromSeconds(seconds);
    if (loopback::WaitReady(control_.Number(), false, deadline, cancel_) != Ready::yes) {
        return;
    }
    if (!ReceiveControl(deadline, cancel_)) {
        throw Diverted{"the client closed the control connection"};
    }
    NoteRemainder();
}

void WirePlayer::Hang() {
    Note("[hangs]");
    Clock::time_point deadline = Clock::now() + std::max(limit_, longestHang);
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
        std::lock_guard guard(lock_);
        transcript_.push_back("-> " + ShowBytes(incoming_) + " (not answered)");
        saw_.push_back(incoming_.substr(0, incoming_.find_first_of("\r\n")));
        incoming_.clear();
    }
}

void WirePlayer::AwaitSignal(const std::string& name) {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, limit_, [&] { return cancelled_ || signals_.contains(name); });
    if (!signals_.contains(name)) {
        throw Diverted{"the test gave no such signal"};
    }
}

void WirePlayer::WatchAfterTheEnd() {
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
