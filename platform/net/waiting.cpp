#include "net/waiting.h"

#include <sys/eventfd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <vector>

#include "base/before_wait.h"
#include "base/per_thread.h"
#include "quennet_platform.h"

namespace quennet::net {

namespace {

/// The sockets on which one thread has left unsent bytes.
class UnsentList {
  public:
    ~UnsentList() { Push(); }

    void Note(const SocketReference& reference) {
        const auto same = [&](const SocketReference& known) {
            return known.socket == reference.socket && known.generation == reference.generation;
        };
        if (std::none_of(references_.begin(), references_.end(), same)) {
            references_.push_back(reference);
        }
    }

    void Push() {
        if (!references_.empty()) {
            std::erase_if(references_, PushOne);
        }
    }

    const std::vector<SocketReference>& References() const { return references_; }

  private:
    /// True when nothing is left to push.
    static bool PushOne(const SocketReference& reference) {
        const std::lock_guard guard(reference.socket->lock);
        if (!reference.Alive()) {
            return true;
        }
        SocketState& state = reference.socket->state;
        PushUnsent(&state, reference.socket->descriptor);
        return state.unsent.Empty();
    }

    std::vector<SocketReference> references_;
};

const PerThread<UnsentList> unsentOfThreads;

/// For the thread that ends the process.
const struct LastPush {
    ~LastPush() { PushUnsentOfThread(); }
} lastPush;

/// Ends all sleeps at once. Of two events one is awaited and the other one set: a round sets the
/// first and clears the second, which those that come then await. A sleeper that missed a round in
/// between is reached by a later one.
class EndOfSleeps {
  public:
    int Descriptor() const { return events_[round_ % 2]; }

    void Set() {
        const std::lock_guard guard(lock_);
        const unsigned round = round_;
        eventfd_t ignored = 0;
        eventfd_read(events_[(round + 1) % 2], &ignored);
        round_ = round + 1;
        eventfd_write(events_[round % 2], 1);
    }

  private:
    const std::array<int, 2> events_ = {eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK),
                                        eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    std::atomic<unsigned> round_ = 0;
    std::mutex lock_;
};

EndOfSleeps& TheEndOfSleeps() {
    static EndOfSleeps& end = *new EndOfSleeps;  // threads may outlive the library's own objects
    return end;
}

/// What one sleep is about: the caller's sockets first, then those with bytes still to push. Their
/// descriptors stay open as long as this object lives.
class PollList {
  public:
    explicit PollList(std::span<Awaited> awaited) : awaited_(awaited) {
        for (const Awaited& one : awaited) {
            Add(one.reference, one.events);
        }
        if (const UnsentList* const list = unsentOfThreads.Find()) {
            for (const SocketReference& unsent : list->References()) {
                Add(unsent, POLLOUT);
            }
        }
    }

    ~PollList() {
        for (const SocketReference& reference : sleeping_) {
            EndSleep(reference);
        }
    }

    PollList(const PollList&) = delete;
    PollList& operator=(const PollList&) = delete;

    /// Sleeps, and marks what the caller's sockets have. True when all sleeps are to end.
    bool Poll(int milliseconds) {
        polled_.push_back({milliseconds < 0 ? -1 : TheEndOfSleeps().Descriptor(), POLLIN, 0});
        ::poll(polled_.data(), polled_.size(), anyGone_ ? 0 : milliseconds);
        for (std::size_t index = 0; index < awaited_.size(); ++index) {
            const pollfd& one = polled_[index];  // without events after an interruption
            awaited_[index].seen = one.fd < 0 ? short{POLLNVAL} : one.revents;
        }
        return polled_.back().revents != 0;
    }

  private:
    void Add(const SocketReference& reference, short events) {
        if (BeginSleep(reference)) {
            sleeping_.push_back(reference);
            polled_.push_back({reference.socket->descriptor, events, 0});
        } else {
            anyGone_ = true;
            polled_.push_back({-1, 0, 0});
        }
    }

    std::span<Awaited> awaited_;
    std::vector<SocketReference> sleeping_;
    std::vector<pollfd> polled_;
    bool anyGone_ = false;
};

}  // namespace

Deadline Deadline::After(int64_t milliseconds) {
    Deadline deadline;
    deadline.never_ = milliseconds < 0;
    if (!deadline.never_) {
        deadline.end_ = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    }
    return deadline;
}

int Deadline::RestForPoll() const {
    if (never_) {
        return -1;
    }
    const auto rest =
        std::chrono::ceil<std::chrono::milliseconds>(end_ - std::chrono::steady_clock::now());
    constexpr int64_t longest = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp<int64_t>(rest.count(), 0, longest));
}

int AwaitSockets(std::span<Awaited> awaited, const Deadline& deadline) {
    for (;;) {
        PushUnsentOfThread();
        const bool ends = PollList(awaited).Poll(deadline.RestForPoll());
        const auto seen = std::count_if(awaited.begin(), awaited.end(),
                                        [](const Awaited& one) { return one.seen != 0; });
        if (seen > 0 || ends || deadline.RestForPoll() == 0) {
            return static_cast<int>(seen);
        }
    }
}

void NoteUnsent(const SocketReference& reference) {
    unsentOfThreads.Get().Note(reference);
}

void PushUnsentOfThread() {
    if (UnsentList* const list = unsentOfThreads.Find()) {
        list->Push();
    }
}

}  // namespace quennet::net

void QuennetEndSocketWaits() {
    quennet::net::TheEndOfSleeps().Set();
}

void quennet::BeforeWait() {
    net::PushUnsentOfThread();
}
