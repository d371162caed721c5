// Posting and taking messages.

#include "base/before_wait.h"
#include "quennet_platform.h"
#include "user/display_calls.h"
#include "user/messages.h"

#include <algorithm>
#include <new>

namespace quennet::user {

namespace {

constexpr std::size_t postedAtMost = 10000;

/// Stands for the messages of a thread that belong to no window.
HWND NoWindow() {
    return reinterpret_cast<HWND>(static_cast<std::intptr_t>(-1));
}

bool Post(MessageQueue& queue, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (queue.posted.size() >= postedAtMost) {
        return false;
    }
    queue.posted.push_back(MSG{window, message, wParam, lParam, GetTickCount(), {}});
    queue.wake.notify_all();
    return true;
}

/// The keyboard is as the thread has read it.
void NoteKey(MessageQueue& queue, const MSG& message) {
    if (message.message == WM_KEYDOWN || message.message == WM_KEYUP) {
        queue.keysDown[message.wParam & 0xFF] = message.message == WM_KEYDOWN;
    }
}

bool TakePosted(DesktopLock& desktop, MessageQueue& queue, const MessageFilter& filter, bool remove,
                MSG* message) {
    const auto found = std::ranges::find_if(queue.posted, [&](const MSG& posted) {
        return filter.Accepts(desktop, posted.hwnd, posted.message);
    });
    if (found == queue.posted.end()) {
        return false;
    }
    *message = *found;
    if (remove) {
        queue.posted.erase(found);
        NoteKey(queue, *message);
    }
    return true;
}

bool TakeQuit(MessageQueue& queue, bool remove, MSG* message) {
    if (!queue.quitting) {
        return false;
    }
    *message = {};
    message->message = WM_QUIT;
    message->wParam = static_cast<WPARAM>(queue.exitCode);
    message->time = GetTickCount();
    queue.quitting = !remove;
    return true;
}

bool TakeQueued(DesktopLock& desktop, MessageQueue& queue, const MessageFilter& filter, bool remove,
                MSG* message) {
    ServeSent(desktop, queue);
    return TakePosted(desktop, queue, filter, remove, message) ||
           TakeQuit(queue, remove, message) ||
           TakeDueTimer(desktop, queue, filter, remove, message);
}

/// Before the thread waits again it does what others may wait for, and the display has its turn.
bool TakeMessage(DesktopLock& desktop, MessageQueue& queue, const MessageFilter& filter,
                 bool remove, MSG* message) {
    if (TakeQueued(desktop, queue, filter, remove, message)) {
        return true;
    }
    queue.inputWanted = false;
    desktop.Lock().unlock();
    BeforeWait();
    RunDisplayInput();
    desktop.Lock().lock();
    return TakeQueued(desktop, queue, filter, remove, message);
}

/// Characters of keys, as TranslateMessage knows them; 0 for the others.
WPARAM CharacterOf(WPARAM key, bool shift, bool control) {
    constexpr WPARAM keysThatAreCharacters[] = {VK_BACK, VK_TAB, VK_RETURN, VK_ESCAPE, VK_SPACE};
    if (std::ranges::count(keysThatAreCharacters, key) != 0 || (key >= '0' && key <= '9')) {
        return key;
    }
    if (key >= 'A' && key <= 'Z') {
        if (control) {
            return key - 'A' + 1;
        }
        return shift ? key : key - 'A' + 'a';
    }
    return 0;
}

}  // namespace

bool MessageFilter::AcceptsWindow(DesktopLock& desktop, HWND target) const {
    if (!window) {
        return true;
    }
    if (window == NoWindow()) {
        return !target;
    }
    while (target != window) {
        const Window* record = desktop->Find(target);
        if (!record || !record->IsChild()) {
            return false;
        }
        target = record->parent;
    }
    return true;
}

bool MessageFilter::Accepts(DesktopLock& desktop, HWND target, UINT message) const {
    if (message == WM_QUIT) {
        return true;
    }
    const bool everyNumber = first == 0 && last == 0;
    return (everyNumber || (message >= first && message <= last)) && AcceptsWindow(desktop, target);
}

void WaitForWork(DesktopLock& desktop, MessageQueue& queue, const MessageFilter& filter) {
    Clock::time_point due = Clock::time_point::max();
    for (const Timer& timer : queue.timers) {
        if (timer.due < due && filter.Accepts(desktop, timer.window, WM_TIMER)) {
            due = timer.due;
        }
    }
    queue.sleepsUntil = due;
    if (due == Clock::time_point::max()) {
        queue.wake.wait(desktop.Lock());
    } else {
        queue.wake.wait_until(desktop.Lock(), due);
    }
    queue.sleepsUntil = Clock::time_point::min();
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

BOOL WINAPI PostMessageA(HWND handle, UINT message, WPARAM wParam, LPARAM lParam) try {
    if (!handle) {
        return PostThreadMessageA(CurrentQueue()->thread, message, wParam, lParam);
    }
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window && Post(*window->queue, handle, message, wParam, lParam);
} catch (const std::bad_alloc&) {
    return FALSE;
}

BOOL WINAPI PostThreadMessageA(DWORD thread, UINT message, WPARAM wParam, LPARAM lParam) try {
    DesktopLock desktop;
    const auto queue = desktop->queues.find(thread);
    return queue != desktop->queues.end() && Post(*queue->second, nullptr, message, wParam, lParam);
} catch (const std::bad_alloc&) {
    return FALSE;
}

void WINAPI PostQuitMessage(INT exitCode) try {
    MessageQueue& queue = *CurrentQueue();
    DesktopLock desktop;
    queue.quitting = true;
    queue.exitCode = exitCode;
} catch (const std::bad_alloc&) {
}

BOOL WINAPI GetMessageA(MSG* message, HWND window, UINT first, UINT last) try {
    MessageQueue& queue = *CurrentQueue();
    const MessageFilter filter = {window, first, last};
    DesktopLock desktop;
    for (;;) {
        if (window && window != NoWindow() && !desktop->Find(window)) {
            return -1;
        }
        if (TakeMessage(desktop, queue, filter, true, message)) {
            return message->message != WM_QUIT;
        }
        if (!queue.inputWanted) {
            WaitForWork(desktop, queue, filter);
        }
    }
} catch (const std::bad_alloc&) {
    *message = {};  // for loops that take every result but 0 for a message
    return -1;
}

BOOL WINAPI PeekMessageA(MSG* message, HWND window, UINT first, UINT last, UINT remove) try {
    MessageQueue& queue = *CurrentQueue();
    const MessageFilter filter = {window, first, last};
    DesktopLock desktop;
    return TakeMessage(desktop, queue, filter, (remove & PM_REMOVE) != 0, message);
} catch (const std::bad_alloc&) {
    return FALSE;
}

BOOL WINAPI TranslateMessage(const MSG* message) {
    if (message->message != WM_KEYDOWN) {
        return FALSE;
    }
    const WPARAM character =
        CharacterOf(message->wParam, GetKeyState(VK_SHIFT) < 0, GetKeyState(VK_CONTROL) < 0);
    if (character == 0) {
        return FALSE;
    }
    return PostMessageA(message->hwnd, WM_CHAR, character, message->lParam);
}

LRESULT WINAPI DispatchMessageA(const MSG* message) {
    return message->hwnd
               ? SendMessageA(message->hwnd, message->message, message->wParam, message->lParam)
               : 0;
}

SHORT WINAPI GetKeyState(INT key) try {
    MessageQueue& queue = *CurrentQueue();
    DesktopLock desktop;
    return queue.keysDown[static_cast<std::size_t>(key) & 0xFF] ? SHORT{-0x8000} : SHORT{0};
} catch (const std::bad_alloc&) {
    return 0;
}

void QuennetWakeThread(DWORD thread) {
    DesktopLock desktop;
    const auto queue = desktop->queues.find(thread);
    if (queue != desktop->queues.end()) {
        queue->second->inputWanted = true;
        queue->second->wake.notify_all();
    }
}
}
