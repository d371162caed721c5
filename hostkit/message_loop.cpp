#include "hostkit/message_loop.h"

#include <new>

#include "hostkit/window.h"

namespace hostkit {

namespace {

constexpr char windowClass[] = "hostkit loop";
constexpr UINT wakeMessage = WM_APP + 1;
constexpr UINT_PTR endTimer = 1;

// For a wake that finds no memory or a full queue.
constexpr int wakeAttempts = 200;
constexpr DWORD wakePauseMilliseconds = 10;

using Clock = std::chrono::steady_clock;
constexpr Clock::time_point never = Clock::time_point::max();

}  // namespace

MessageLoop::MessageLoop() : window_(MakeWindow(windowClass, Procedure, this)) {}

MessageLoop::~MessageLoop() {
    SetWindowLongPtrA(window_, GWLP_USERDATA, 0);
    DestroyWindow(window_);
}

LRESULT CALLBACK MessageLoop::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* loop = reinterpret_cast<MessageLoop*>(GetWindowLongPtrA(window, GWLP_USERDATA));
    if (message == wakeMessage && loop != nullptr) {
        loop->RunPosted();
        return 0;
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

/// What is posted meanwhile waits for the next turn, so that messages come in between.
void MessageLoop::RunPosted() {
    std::unique_lock lock(mutex_);
    wakePosted_ = false;
    for (std::size_t left = posted_.size(); left > 0 && !posted_.empty(); --left) {
        const std::function<void()> function = std::move(posted_.front());
        posted_.pop_front();
        if (!posted_.empty()) {
            PostWake();  // the function may run a dialog, whose loop takes the next one
        }
        lock.unlock();
        function();
        lock.lock();
    }
}

/// One wake message at a time is enough, however many functions wait. The caller holds the mutex.
void MessageLoop::PostWake() {
    if (!wakePosted_) {
        wakePosted_ = PostMessageA(window_, wakeMessage, 0, 0) != FALSE;
    }
}

void MessageLoop::Post(std::function<void()> function) {
    const std::lock_guard lock(mutex_);
    posted_.push_back(std::move(function));
    PostWake();
    if (!wakePosted_) {
        posted_.pop_back();
        throw std::bad_alloc();
    }
}

void MessageLoop::Wake() {
    std::unique_lock lock(mutex_);
    ++wakes_;
    PostWake();
    woken_.notify_all();
    // Who waits on the loop's thread has no other news.
    for (int left = wakeAttempts; !wakePosted_ && left > 0 && !OnLoopThread(); --left) {
        lock.unlock();
        Sleep(wakePauseMilliseconds);
        lock.lock();
        PostWake();
    }
}

void MessageLoop::WaitUntil(const std::function<bool()>& done) {
    WaitUntilTime(done, never);
}

bool MessageLoop::WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    return WaitUntilTime(done, Clock::now() + timeout);
}

bool MessageLoop::WaitUntilTime(const std::function<bool()>& done, Clock::time_point end) {
    return OnLoopThread() ? ServeUntil(done, end) : SleepUntil(done, end);
}

bool MessageLoop::ServeUntil(const std::function<bool()>& done, Clock::time_point end) {
    while (!done()) {
        const auto now = Clock::now();
        if (now >= end) {
            return false;
        }
        if (end != never) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - now);
            SetTimer(window_, endTimer, static_cast<UINT>(left.count()), nullptr);
        }
        MSG message;
        if (GetMessageA(&message, nullptr, 0, 0) > 0 && !(filter_ && filter_(message))) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        if (end != never) {
            KillTimer(window_, endTimer);
        }
    }
    return true;
}

bool MessageLoop::SleepUntil(const std::function<bool()>& done, Clock::time_point end) {
    std::unique_lock lock(mutex_);
    for (;;) {
        const unsigned seen = wakes_;
        lock.unlock();
        if (done()) {
            return true;
        }
        lock.lock();
        const auto woken = [&] { return wakes_ != seen; };
        if (end == never) {
            woken_.wait(lock, woken);
        } else if (!woken_.wait_until(lock, end, woken)) {
            return false;
        }
    }
}

}  // namespace hostkit
