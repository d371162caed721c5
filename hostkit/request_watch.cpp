#include "hostkit/request_watch.h"

#include <exception>
#include <mutex>
#include <utility>

namespace hostkit {

namespace {

std::mutex mutex;  // of all watches
std::set<RequestWatch*> watches;
std::atomic<bool> anyWatch = false;

thread_local RequestWatch* sending = nullptr;

}  // namespace

RequestWatch::RequestWatch(std::function<void()> ended) : ended_(std::move(ended)) {
    const std::lock_guard lock(mutex);
    watches.insert(this);
    anyWatch = true;
    sending = this;
}

RequestWatch::~RequestWatch() {
    Sent();
    const std::lock_guard lock(mutex);
    watches.erase(this);
    anyWatch = !watches.empty();
}

void RequestWatch::Sent() {
    sending = nullptr;
}

void RequestWatch::Allocated(void* block) {
    if (sending == nullptr || block == nullptr) {
        return;
    }
    try {
        const std::lock_guard lock(mutex);
        sending->blocks_.insert(block);
        sending->isPending_ = true;
    } catch (const std::exception&) {
        // Without memory its end goes unnoticed, as that of a worker that was not started.
    }
}

void RequestWatch::Released(void* block) {
    if (!anyWatch || block == nullptr) {
        return;
    }
    const std::lock_guard lock(mutex);
    for (RequestWatch* watch : watches) {
        if (watch->blocks_.erase(block) != 0 && watch->blocks_.empty()) {
            watch->isPending_ = false;
            watch->ended_();
        }
    }
}

}  // namespace hostkit
