#include "support/wire.h"

#include <gtest/gtest.h>

#include "support/wire_player.h"

Wire::Wire() : player_(std::make_unique<WirePlayer>()) {}

Wire::~Wire() {
    if (reported_) {
        return;
    }
    player_->Join(true);
    std::string complaint = player_->Complaint();
    if (!complaint.empty()) {
        ADD_FAILURE() << Transcript() << complaint;
    }
}

std::uint16_t Wire::port() const {
    return player_->Port();
}

void Wire::Limit(std::chrono::milliseconds limit) {
    player_->Limit(limit);
}

void Wire::Data(std::string name, std::string bytes) {
    player_->Register(std::move(name), std::move(bytes));
}

void Wire::Start(std::string_view script) {
    player_->Start(WireLines(script));
}

void Wire::Start(std::vector<std::string> steps) {
    player_->Start(steps);
}

bool Wire::AwaitMark(std::string_view name) {
    return player_->AwaitMark(name);
}

void Wire::Signal(std::string_view name) {
    player_->Signal(name);
}

void Wire::Finish(const char* file, int line) {
    std::string outcome = Outcome();
    if (!outcome.empty()) {
        ADD_FAILURE_AT(file, line) << outcome;
    }
}

std::string Wire::Outcome() {
    player_->Join(false);
    reported_ = true;
    std::string complaint = player_->Complaint();
    return complaint.empty() ? complaint : "The wire:\n" + Transcript() + complaint;
}

std::vector<std::string> Wire::Saw() const {
    return player_->Saw();
}

std::string Wire::Transcript() const {
    return player_->Transcript();
}

std::string Wire::Pattern(std::size_t count, std::size_t offset) {
    std::string bytes(count, '\0');
    for (std::size_t place = 0; place < count; ++place) {
        auto number = static_cast<std::uint32_t>(place + offset) * 2654435761u;
        bytes[place] = static_cast<char>(number >> 24 ^ number >> 13);
    }
    return bytes;
}
