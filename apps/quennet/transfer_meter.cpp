#include "transfer_meter.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace cli {

TransferMeter::TransferMeter(Watch& watch, Status& status, std::string name, hostkit::u64 total)
    : watch_(watch), status_(status), name_(std::move(name)), total_(total) {}

ProgressState TransferMeter::State() const {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    const std::lock_guard lock(mutex_);
    return {name_, position_, moved_, total_, elapsed.count()};
}

void TransferMeter::Rename(const std::string& name) {
    const std::lock_guard lock(mutex_);
    name_ = name;
}

void TransferMeter::Show() {
    status_.SetBottom(ProgressText(State(), status_.Width() - 1));
}

void TransferMeter::Finish(bool done) {
    status_.RemoveBottom();
    if (!done || !status_.IsTerminal()) {
        return;
    }
    const ProgressState state = State();
    char seconds[32];
    std::snprintf(seconds, sizeof(seconds), "%.1f", state.seconds);
    const double rate = static_cast<double>(state.moved) / std::max(state.seconds, 0.001);
    status_.Line(state.name + ": " + ByteCountText(static_cast<double>(state.moved)) + " in " +
                 seconds + " s, " + ByteCountText(rate) + "/s");
}

}  // namespace cli
