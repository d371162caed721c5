// The data connections of a scripted server.

#include <algorithm>

#include "support/wire.h"
#include "support/wire_player.h"

using loopback::Clock;
using loopback::Ready;
using loopback::Sent;

namespace {

constexpr std::size_t blockSize = 65536;

// Where two buffers part: what a person needs of a difference in a megabyte.
std::string Difference(std::string_view came, std::string_view wanted) {
    auto [at, there] = std::mismatch(came.begin(), came.end(), wanted.begin(), wanted.end());
    auto place = static_cast<std::size_t>(at - came.begin());
    return std::to_string(came.size()) + " bytes came, wanted were " +
           std::to_string(wanted.size()) + "; from byte " + std::to_string(place) +
           " on came: " + ShowBytes(came.substr(place, 32)) +
           "\nwanted: " + ShowBytes(wanted.substr(std::min(place, wanted.size()), 32));
}

}  // namespace

void WirePlayer::PlayData(const WireStep& step) {
    switch (step.verb) {
        case WireVerb::dataAccept:
            AcceptData();
            return;
        case WireVerb::dataConnect:
            ConnectData();
            return;
        case WireVerb::dataSay:
            SendData(step.text);
            return;
        case WireVerb::dataSend:
            SendData(buffers_[step.text]);
            return;
        case WireVerb::dataFill:
            FillData(static_cast<std::size_t>(step.number));
            return;
        case WireVerb::dataFlood:
            FloodData();
            return;
        case WireVerb::dataExpectText:
            ExpectDataText(step.text);
            return;
        case WireVerb::dataExpect:
            ExpectData(buffers_[step.text]);
            return;
        case WireVerb::dataExpectClose:
            ExpectDataClose();
            return;
        case WireVerb::dataReset:
            loopback::CloseWithReset(data_);
            Note("[data connection reset]");
            return;
        default:
            loopback::CloseInOrder(data_);
            Note("[data connection closed]");
            return;
    }
}

void WirePlayer::AcceptData() {
    if (!passive_.socket.Valid()) {
        throw Diverted{"no reply has named a {pasv} address"};
    }
    if (loopback::WaitReady(passive_.socket.Number(), false, FromNow(), cancel_) != Ready::yes) {
        throw Diverted{"no data connection came"};
    }
    data_ = loopback::Accept(passive_);
    passive_.socket.Close();
    dataSent_ = 0;
    Note("[data connection accepted]");
}

void WirePlayer::ConnectData() {
    data_ = loopback::Connect(activeAddress_, activePort_, FromNow(), cancel_);
    if (!data_.Valid()) {
        throw Diverted{"the client takes no data connection at " +
                       loopback::HostPortText(activeAddress_, activePort_)};
    }
    dataSent_ = 0;
    Note("[data connection made]");
}

void WirePlayer::SendData(std::string_view bytes) {
    Note("data <- " + ShowBytes(bytes));
    Sent sent = loopback::SendAll(data_.Number(), bytes, FromNow(), cancel_);
    if (sent != Sent::all) {
        throw Diverted{sent == Sent::failed ? "the client has closed the data connection"
                                            : "the client does not read the data"};
    }
}

void WirePlayer::FillData(std::size_t count) {
    Note("data <- " + std::to_string(count) + " bytes of the pattern");
    while (count > 0) {
        std::string block = Wire::Pattern(std::min(count, blockSize), dataSent_);
        Sent sent = loopback::SendAll(data_.Number(), block, FromNow(), cancel_);
        if (sent != Sent::all) {
            throw Diverted{std::string(sent == Sent::failed
                                           ? "the client closed the data connection"
                                           : "the client stopped to read") +
                           " with " + std::to_string(count) + " bytes to go"};
        }
        count -= block.size();
        dataSent_ += block.size();
    }
}

void WirePlayer::FloodData() {
    Note("data <- the pattern without an end");
    Clock::time_point deadline = FromNow();
    Sent sent = Sent::all;
    while (sent == Sent::all && Clock::now() < deadline) {
        std::string block = Wire::Pattern(blockSize, dataSent_);
        dataSent_ += block.size();
        sent = loopback::SendAll(data_.Number(), block, deadline, cancel_);
    }
    if (sent != Sent::failed) {
        throw Diverted{"the client did not close the data connection"};
    }
    data_.Close();
}

// Appends what comes. False at the end of the connection.
bool WirePlayer::ReceiveData(std::string* received, std::size_t most) {
    if (loopback::WaitReady(data_.Number(), false, FromNow(), cancel_) != Ready::yes) {
        throw Diverted{"no data came behind " + std::to_string(received->size()) + " bytes"};
    }
    char block[blockSize];
    std::ptrdiff_t count = loopback::ReadSome(data_.Number(), block, std::min(most, sizeof block));
    if (count < 0) {
        throw Diverted{"the data connection was reset behind " + std::to_string(received->size()) +
                       " bytes"};
    }
    received->append(block, static_cast<std::size_t>(count));
    return count > 0;
}

void WirePlayer::ExpectDataText(const std::string& text) {
    std::string received;
    while (received.size() < text.size() && ReceiveData(&received, text.size() - received.size())) {
    }
    Note("data -> " + ShowBytes(received));
    if (received != text) {
        throw Diverted{"came: " + ShowBytes(received)};
    }
}

void WirePlayer::ExpectData(const std::string& wanted) {
    std::string received;
    while (received.size() <= wanted.size() && ReceiveData(&received, blockSize)) {
    }
    Note("data -> " + ShowBytes(received));
    if (received != wanted) {
        throw Diverted{Difference(received, wanted)};
    }
    data_.Close();
}

void WirePlayer::ExpectDataClose() {
    char block[blockSize];
    Clock::time_point deadline = FromNow();
    std::ptrdiff_t count = 1;
    while (count > 0) {
        if (Clock::now() >= deadline ||
            loopback::WaitReady(data_.Number(), false, deadline, cancel_) != Ready::yes) {
            throw Diverted{"the client did not close the data connection"};
        }
        count = loopback::ReadSome(data_.Number(), block, sizeof block);
    }
    data_.Close();
    Note("[client closed the data connection]");
}
