// The data connections of a scripted server.

#include <algorithm>

#include "support/wire.h"

using loopback::Clock;
using loopback::Ready;
using loopback::Sent;

namespace {

constexpr std::size_t blockSize = 65536;

}  // namespace

void Wire::AcceptData(const Step&) {
    if (!passive_.socket.Valid()) {
        throw Diverted{"no reply has named a {pasv} address"};
    }
    if (loopback::WaitReady(passive_.socket.Number(), false, FromNow(), cancel_) != Ready::yes) {
        throw Diverted{"no data connection came"};
    }
    data_ = loopback::Accept(passive_);
    passive_.socket.Close();
    Note("[data connection accepted]");
}

void Wire::ConnectData(const Step&) {
    data_ = loopback::Connect(activeAddress_, activePort_, FromNow(), cancel_);
    if (!data_.Valid()) {
        throw Diverted{"the client takes no data connection at " +
                       loopback::HostPortText(activeAddress_, activePort_)};
    }
    Note("[data connection made]");
}

const std::string& Wire::Buffer(const Step& step) const {
    const auto found = buffers_.find(step.text);
    if (found == buffers_.end()) {
        throw Diverted{"no buffer was registered as " + step.text};
    }
    return found->second;
}

void Wire::SayData(const Step& step) {
    SendDataBytes(step.text);
}

void Wire::SendData(const Step& step) {
    SendDataBytes(Buffer(step));
}

void Wire::SendDataBytes(std::string_view bytes) {
    Note("data <- " + ShowBytes(bytes));
    Sent sent = loopback::SendAll(data_.Number(), bytes, FromNow(), cancel_);
    if (sent != Sent::all) {
        throw Diverted{sent == Sent::failed ? "the client has closed the data connection"
                                            : "the client does not read the data"};
    }
}

void Wire::ExpectData(const Step& step) {
    const std::string& wanted = Buffer(step);
    std::string received;
    std::string block(blockSize, '\0');
    std::ptrdiff_t count = 1;
    while (count > 0 && received.size() <= wanted.size()) {
        if (loopback::WaitReady(data_.Number(), false, FromNow(), cancel_) != Ready::yes) {
            throw Diverted{"no data came behind " + std::to_string(received.size()) + " bytes"};
        }
        count = loopback::ReadSome(data_.Number(), block.data(), block.size());
        if (count < 0) {
            throw Diverted{"the data connection was reset behind " +
                           std::to_string(received.size()) + " bytes"};
        }
        received.append(block, 0, static_cast<std::size_t>(count));
    }
    Note("data -> " + ShowBytes(received));
    data_.Close();
    if (received != wanted) {
        // Where the two part: what a person needs of a difference in a megabyte.
        const auto place = static_cast<std::size_t>(
            std::mismatch(received.begin(), received.end(), wanted.begin(), wanted.end()).first -
            received.begin());
        throw Diverted{std::to_string(received.size()) + " bytes came, wanted were " +
                       std::to_string(wanted.size()) + "; from byte " + std::to_string(place) +
                       " on came: " + ShowBytes(received.substr(place, 32)) +
                       "\nwanted: " + ShowBytes(wanted.substr(std::min(place, wanted.size()), 32))};
    }
}

void Wire::ExpectDataClose(const Step&) {
    std::string block(blockSize, '\0');
    Clock::time_point deadline = FromNow();
    std::ptrdiff_t count = 1;
    while (count > 0) {
        if (Clock::now() >= deadline ||
            loopback::WaitReady(data_.Number(), false, deadline, cancel_) != Ready::yes) {
            throw Diverted{"the client did not close the data connection"};
        }
        count = loopback::ReadSome(data_.Number(), block.data(), block.size());
    }
    data_.Close();
    Note("[client closed the data connection]");
}

void Wire::CloseData(const Step&) {
    loopback::CloseInOrder(data_);
    Note("[data connection closed]");
}

void Wire::ResetData(const Step&) {
    loopback::CloseWithReset(data_);
    Note("[data connection reset]");
}
