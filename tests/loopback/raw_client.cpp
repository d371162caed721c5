#include "loopback/raw_client.h"

#include <algorithm>

using loopback::Clock;
using loopback::Milliseconds;
using loopback::Ready;

namespace {

constexpr std::uint32_t localhost = 0x7F000001;

Clock::time_point Soon() {
    return Clock::now() + Milliseconds(10'000);
}

}  // namespace

RawClient::RawClient(std::uint16_t port)
    : control_(loopback::Connect(localhost, port, Soon(), never_)) {}

void RawClient::SendBytes(std::string_view bytes) {
    loopback::SendAll(control_.Number(), bytes, Soon(), never_);
}

std::string RawClient::Line() {
    std::size_t end = 0;
    while ((end = incoming_.find("\r\n")) == std::string::npos) {
        if (loopback::WaitReady(control_.Number(), false, Soon(), never_) != Ready::yes) {
            return "(nothing)";
        }
        char block[4096];
        std::ptrdiff_t count = loopback::ReadSome(control_.Number(), block, sizeof block);
        if (count <= 0) {
            return count == 0 ? "(closed)" : "(reset)";
        }
        incoming_.append(block, static_cast<std::size_t>(count));
    }
    std::string line = incoming_.substr(0, end);
    incoming_.erase(0, end + 2);
    return line;
}

std::string RawClient::Reply() {
    std::string reply = Line();
    std::string code = reply.substr(0, 3);
    bool more = reply.size() > 3 && reply[3] == '-';
    while (more) {
        std::string line = Line();
        reply += '\n' + line;
        more = !line.starts_with('(') && !line.starts_with(code + ' ');
    }
    return reply;
}

std::string RawClient::Command(std::string_view line) {
    SendBytes(std::string(line) + "\r\n");
    return Reply();
}

bool RawClient::Login(std::string_view user, std::string_view password) {
    Reply();
    Command("USER " + std::string(user));
    return Command("PASS " + std::string(password)).starts_with("230");
}

bool RawClient::OpenPassive() {
    std::string reply = Command("PASV");
    std::size_t open = reply.find('(');
    std::size_t close = reply.find(')');
    std::uint32_t address = 0;
    std::uint16_t port = 0;
    if (!reply.starts_with("227 ") || open == std::string::npos || close == std::string::npos ||
        !loopback::ParseHostPort(std::string_view(reply).substr(open + 1, close - open - 1),
                                 &address, &port)) {
        return false;
    }
    data_ = loopback::Connect(address, port, Soon(), never_);
    return data_.Valid();
}

bool RawClient::OpenActive() {
    active_ = loopback::Listen(0);
    return Command("PORT " + loopback::HostPortText(localhost, active_.port)).starts_with("200");
}

bool RawClient::AcceptActive() {
    if (loopback::WaitReady(active_.socket.Number(), false, Soon(), never_) != Ready::yes) {
        return false;
    }
    data_ = loopback::Accept(active_);
    return data_.Valid();
}

std::string RawClient::ReadData() {
    std::string all;
    for (;;) {
        std::string block = ReadData(65536);
        if (block.empty() || block == "(reset)") {
            data_.Close();
            return all + block;
        }
        all += block;
    }
}

std::string RawClient::ReadData(std::size_t count) {
    std::string block(count, '\0');
    if (loopback::WaitReady(data_.Number(), false, Soon(), never_) != Ready::yes) {
        return "";
    }
    std::ptrdiff_t size = loopback::ReadSome(data_.Number(), block.data(), block.size());
    if (size < 0) {
        return "(reset)";
    }
    block.resize(static_cast<std::size_t>(size));
    return block;
}

bool RawClient::SendData(std::string_view bytes) {
    return loopback::SendAll(data_.Number(), bytes, Soon(), never_) == loopback::Sent::all;
}

std::string RawClient::Fetch(std::string_view command) {
    if (!OpenPassive()) {
        return "(no data connection)";
    }
    lastReplies = Command(command);
    if (!lastReplies.starts_with('1')) {
        return "";
    }
    std::string data = ReadData();
    lastReplies += '\n' + Reply();
    return data;
}

std::string RawClient::Store(std::string_view command, std::string_view bytes) {
    if (!OpenPassive()) {
        return "(no data connection)";
    }
    std::string reply = Command(command);
    if (!reply.starts_with('1')) {
        return reply;
    }
    SendData(bytes);
    data_.Close();
    return Reply();
}
