#pragma once
// Counts what a download moves, and shows it.

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>

#include "hostkit/types.h"
#include "progress_bar.h"
#include "status.h"
#include "watch.h"

namespace cli {

class TransferMeter {
  public:
    /// `total` is 0 when the size of the file is unknown.
    TransferMeter(Watch& watch, Status& status, std::string name, hostkit::u64 total);

    /// A block has come; `before` is the position in the file that it starts at.
    void Count(hostkit::u64 before, hostkit::u32 bytes) {
        position_.store(before + bytes, std::memory_order_relaxed);
        moved_.fetch_add(bytes, std::memory_order_relaxed);
        watch_.Moved();
    }

    hostkit::u64 Position() const { return position_; }

    /// Of an operation on many files: what it is at, and what all of them come to.
    void Rename(const std::string& name);
    void SetTotal(hostkit::u64 total) { total_ = total; }

    /// Shows how far it is. May be called on any thread.
    void Show();
    /// Takes that away, and says what it came to when it was shown.
    void Finish(bool done);

  private:
    ProgressState State() const;

    Watch& watch_;
    Status& status_;
    mutable std::mutex mutex_;  // of the name
    std::string name_;
    std::atomic<hostkit::u64> total_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::atomic<hostkit::u64> position_ = 0;
    std::atomic<hostkit::u64> moved_ = 0;
};

}  // namespace cli
