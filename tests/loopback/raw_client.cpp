#include "loopback/raw_client.h"

#include <algorithm>

namespace {

constexpr std::uint32_t localhost = 0x7F000001;

loopback::Clock::time_point Soon() {
    return loopback::Clock::now() + std::chrono::seconds(20);
}

}  // namespace

RawClient::RawClient(std::uint16_t port)
    : control_(loopback::Connect(localhost, port, Soon(), never_)) {}

void RawClient::SendBytes(std::string_view bytes) {
    loopback::SendAll(control_.Number(), bytes, Soon(), never_);
}

// False at the end of the connection.
bool RawClient::ReadSome(const loopback::Descriptor& from, std::string* text) {
    char block[4096];
    std::ptrdiff_t count = 0;
    if (loopback::WaitReady(from.Number(), false, Soon(), never_) == loopback::Ready::yes) {
        count = std::max<std::ptrdiff_t>(loopback::ReadSome(from.Number(), block, sizeof block), 0);
    }
    text->append(block, static_cast<std::size_t>(count));
    return count > 0;
}

std::string RawClient::Reply() {
    while (incoming_.find("\r\n") == std::string::npos) {
        if (!ReadSome(control_, &incoming_)) {
            return "";
        }
    }
    const std::size_t end = incoming_.find("\r\n");
    std::string line = incoming_.substr(0, end);
    incoming_.erase(0, end + 2);
    return line;
}

std::string RawClient::Command(std::string_view line) {
    SendBytes(std::string(line) + "\r\n");
    return Reply();
}

void RawClient::Login() {
    Reply();
    Command("USER anonymous");
    Command("PASS me@here");
}

bool RawClient::OpenPassive() {
    const std::string named = Command("PASV");
    const std::size_t begin = named.find('(') + 1;
    std::uint32_t address = 0;
    std::uint16_t port = 0;
    if (loopback::ParseHostPort(std::string_view(named).substr(begin, named.find(')') - begin),
                                &address, &port)) {
        data_ = loopback::Connect(address, port, Soon(), never_);
    }
    return data_.Valid();
}

void RawClient::SendData(std::string_view bytes) {
    loopback::SendAll(data_.Number(), bytes, Soon(), never_);
}

std::string RawClient::Fetch(std::string_view command) {
    std::string data;
    OpenPassive();
    reply = Command(command);
    if (reply.starts_with('1')) {
        while (ReadSome(data_, &data)) {
        }
        Reply();
    }
    return data;
}

std::string RawClient::Store(std::string_view command, std::string_view bytes) {
    OpenPassive();
    const std::string answer = Command(command);
    if (!answer.starts_with('1')) {
        return answer;
    }
    SendData(bytes);
    data_.Close();
    return Reply();
}
