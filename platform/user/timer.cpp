// Timers: due times in the queue of the thread that owns the window.

#include "user/messages.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr UINT shortestPeriod = 10;
constexpr UINT longestPeriod = 0x7FFFFFFF;

using TimerIterator = std::vector<Timer>::iterator;

TimerIterator FindTimer(MessageQueue& queue, HWND window, UINT_PTR number) {
    return std::ranges::find_if(queue.timers, [&](const Timer& timer) {
        return timer.window == window && timer.number == number;
    });
}

/// A timer without a window keeps the number that it was given, or gets one that is free.
UINT_PTR NumberForThreadTimer(MessageQueue& queue, UINT_PTR wanted) {
    if (FindTimer(queue, nullptr, wanted) != queue.timers.end()) {
        return wanted;
    }
    UINT_PTR number = 1;
    while (FindTimer(queue, nullptr, number) != queue.timers.end()) {
        ++number;
    }
    return number;
}

void Arm(MessageQueue& queue, const Timer& armed) {
    const TimerIterator timer = FindTimer(queue, armed.window, armed.number);
    if (timer == queue.timers.end()) {
        queue.timers.push_back(armed);
    } else {
        *timer = armed;
    }
    if (armed.due < queue.sleepsUntil) {
        queue.wake.notify_all();
    }
}

/// The queue of a window's thread, the caller's own without a window, null when it is gone.
std::shared_ptr<MessageQueue> QueueOf(DesktopLock& desktop, HWND handle,
                                      const std::shared_ptr<MessageQueue>& own) {
    if (!handle) {
        return own;
    }
    const Window* window = desktop->Find(handle);
    return window ? window->queue : nullptr;
}

}  // namespace

bool TakeDueTimer(DesktopLock& desktop, MessageQueue& queue, const MessageFilter& filter,
                  bool remove, MSG* message) {
    const Clock::time_point now = Clock::now();
    Timer* first = nullptr;
    for (Timer& timer : queue.timers) {
        if (timer.due <= now && (!first || timer.due < first->due) &&
            filter.Accepts(desktop, timer.window, WM_TIMER)) {
            first = &timer;
        }
    }
    if (!first) {
        return false;
    }
    *message =
        MSG{first->window,  WM_TIMER, first->number, reinterpret_cast<LPARAM>(first->procedure),
            GetTickCount(), {}};
    if (remove) {
        first->due = now + first->period;
    }
    return true;
}

void CallTimerProcedure(const MSG& message) {
    MessageQueue& queue = *CurrentQueue();
    TIMERPROC procedure = nullptr;
    {
        DesktopLock desktop;
        const TimerIterator timer = FindTimer(queue, message.hwnd, message.wParam);
        if (timer != queue.timers.end() &&
            reinterpret_cast<LPARAM>(timer->procedure) == message.lParam) {
            procedure = timer->procedure;
        }
    }
    if (procedure) {
        procedure(message.hwnd, WM_TIMER, message.wParam, GetTickCount());
    }
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR number, UINT milliseconds, TIMERPROC procedure) {
    const std::shared_ptr<MessageQueue> own = CurrentQueue();
    const std::chrono::milliseconds period(std::clamp(milliseconds, shortestPeriod, longestPeriod));
    DesktopLock desktop;
    const std::shared_ptr<MessageQueue> queue = QueueOf(desktop, window, own);
    if (!queue) {
        return 0;
    }
    if (!window) {
        number = NumberForThreadTimer(*queue, number);
    }
    Arm(*queue, Timer{window, number, period, Clock::now() + period, procedure});
    return window && number == 0 ? 1 : number;
}

BOOL WINAPI KillTimer(HWND window, UINT_PTR number) {
    const std::shared_ptr<MessageQueue> own = CurrentQueue();
    DesktopLock desktop;
    const std::shared_ptr<MessageQueue> queue = QueueOf(desktop, window, own);
    if (!queue) {
        return FALSE;
    }
    const TimerIterator timer = FindTimer(*queue, window, number);
    if (timer == queue->timers.end()) {
        return FALSE;
    }
    queue->timers.erase(timer);
    return TRUE;
}
}
