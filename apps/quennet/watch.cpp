#include "watch.h"

#include <fcntl.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "failure.h"
#include "hostkit/memory.h"
#include "quennet_platform.h"
#include "quennet_terminal.h"

namespace cli {

namespace {

constexpr long tickNanoseconds = 100'000'000;
constexpr int lastSignal = 3;
constexpr auto farewellTime = std::chrono::seconds(2);
constexpr auto hurriedFarewellTime = std::chrono::milliseconds(400);  // after the first signal
constexpr auto signalTime = std::chrono::milliseconds(900);

sigset_t WatchedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&signals, signal);
    }
    return signals;
}

}  // namespace

Watch::Watch(Limits limits, Status& status) : limits_(limits), status_(status) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) {
        throw Failure(ExitStatus::failed, "no descriptor is left");
    }
    wakeRead_ = ends[0];
    wakeWrite_ = ends[1];
    const sigset_t signals = WatchedSignals();
    pthread_sigmask(SIG_BLOCK, &signals, &signalsBefore_);
    thread_ = std::thread([this] { Run(); });
}

Watch::~Watch() {
    ending_ = true;
    pthread_kill(thread_.native_handle(), SIGINT);  // ends its pause
    thread_.join();
    close(wakeRead_);
    close(wakeWrite_);
    if (signals_ == 0) {
        pthread_sigmask(SIG_SETMASK, &signalsBefore_, nullptr);
    }
}

std::string Watch::Reason() const {
    switch (verdict_) {
        case Verdict::idle:
            return "no data for " + std::to_string(limits_.idle.count()) + " s, given up";
        case Verdict::unanswered:
            return "no answer within " + std::to_string(limits_.reply.count()) + " s, given up";
        default:
            return "interrupted";
    }
}

void Watch::Run() {
    const sigset_t signals = WatchedSignals();
    while (!ending_) {
        const timespec pause = {0, tickNanoseconds};
        const bool signalled = sigtimedwait(&signals, nullptr, &pause) > 0;
        if (signalled && !ending_) {
            TakeSignal();
        }
        if (signals_ != 0 && Clock::now() - firstSignal_ >= signalTime) {
            EndProcess();
        }
        Look();
    }
}

void Watch::TakeSignal() {
    if (++signals_ == 1) {
        firstSignal_ = Clock::now();
        status_.Hurry();
    }
    Decide(Verdict::interrupted);
    if (signals_ >= lastSignal) {
        EndProcess();
    }
}

void Watch::EndProcess() {
    status_.LastLine("quennet: " + Reason());
    _exit(static_cast<int>(ExitStatus::failed));
}

void Watch::Decide(Verdict verdict) {
    Verdict none = Verdict::goOn;
    if (verdict_.compare_exchange_strong(none, verdict)) {
        [[maybe_unused]] const ssize_t woken = write(wakeWrite_, "", 1);
    }
}

void Watch::Look() {
    const std::lock_guard lock(mutex_);
    if (Ended()) {
        quennet::LeaveTerminal();
    }
    if (tick_) {
        tick_();
    }
    if (connection_ == nullptr) {
        return;
    }
    NoteMoves();
    if (Limit().count() != 0 && Clock::now() - movedAt_ >= Limit()) {
        Decide(kind_ == Kind::data ? Verdict::idle : Verdict::unanswered);
    }
    if (signals_ != 0) {
        abortFrom_ = std::min(abortFrom_, firstSignal_ + hurriedFarewellTime);
    }
    if (Ended() && Clock::now() >= abortFrom_) {
        connection_->Abort();
        QuennetEndSocketWaits();
    }
}

std::chrono::seconds Watch::Limit() const {
    return kind_ == Kind::data      ? limits_.idle
           : kind_ == Kind::command ? limits_.reply
                                    : std::chrono::seconds(0);
}

void Watch::NoteMoves() {
    const auto moves = moves_.load(std::memory_order_relaxed);
    const auto appends = hostkit::BufferAppendCount();  // a listing that arrives
    if (moves != std::exchange(seenMoves_, moves) ||
        appends != std::exchange(seenAppends_, appends) || questions_ != 0) {
        movedAt_ = Clock::now();
    }
}

Watch::Operation::Operation(Watch& watch, hostkit::Connection& connection, Kind kind,
                            std::function<void()> tick)
    : watch_(watch) {
    const std::lock_guard lock(watch_.mutex_);
    watch_.connection_ = &connection;
    watch_.kind_ = kind;
    watch_.movedAt_ = Clock::now();
    watch_.abortFrom_ = watch_.movedAt_;
    if (kind == Kind::farewell) {
        watch_.abortFrom_ += farewellTime;
    }
    watch_.tick_ = std::move(tick);
}

Watch::Operation::Operation(Watch& watch, std::function<void()> tick) : watch_(watch) {
    const std::lock_guard lock(watch_.mutex_);
    watch_.tick_ = std::move(tick);
}

Watch::Operation::~Operation() {
    const std::lock_guard lock(watch_.mutex_);
    watch_.connection_ = nullptr;
    watch_.tick_ = {};
}

}  // namespace cli
