// Timers: due times in the queue of the thread that owns the window.

#include "user/messages.h"

#include <algorithm>
#include <new>

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
    *message = MSG{first->window, WM_TIMER, first->number, 0, GetTickCount(), {}};
    if (remove) {
        first->due = now + first->period;
    }
    return true;
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

UINT_PTR WINAPI SetTimer(HWND window, UINT_PTR number, UINT milliseconds, TIMERPROC procedure) try {
    const std::chrono::milliseconds period(std::clamp(milliseconds, shortestPeriod, longestPeriod));
    DesktopLock desktop;
    const Window* owner = desktop->Find(window);
    if (!owner || procedure) {
        return 0;
    }
    Arm(*owner->queue, Timer{window, number, period, Clock::now() + period});
    return number == 0 ? 1 : number;
} catch (const std::bad_alloc&) {
    return 0;
}

BOOL WINAPI KillTimer(HWND window, UINT_PTR number) {
    DesktopLock desktop;
    const Window* owner = desktop->Find(window);
    if (!owner) {
        return FALSE;
    }
    MessageQueue& queue = *owner->queue;
    const TimerIterator timer = FindTimer(queue, window, number);
    if (timer == queue.timers.end()) {
        return FALSE;
    }
    queue.timers.erase(timer);
    return TRUE;
}
}
