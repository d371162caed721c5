#pragma once
// What the message calls share. The lock is held, unless it says otherwise.

#include "user/desktop.h"

namespace quennet::user {

/// Which messages a caller of GetMessageA wants.
struct MessageFilter {
    HWND window;  // and its children; null is every one, noWindow those of the thread
    UINT first;
    UINT last;  // 0 and 0 is every one

    bool AcceptsWindow(DesktopLock& desktop, HWND target) const;
    bool Accepts(DesktopLock& desktop, HWND target, UINT message) const;
};

/// Runs what was sent to the calling thread's windows, until nothing is left. Lets the lock go
/// while a procedure runs.
void ServeSent(DesktopLock& desktop, MessageQueue& queue);

/// Has a window of another thread destroyed by its own thread, and waits for that. The lock is not
/// held.
void DestroyOnItsThread(HWND window);

/// Answers everything that waits for the thread with 0.
void ReleaseSenders(MessageQueue& queue);
/// The same for what is sent to one of its windows and has not begun.
void ReleaseSenders(MessageQueue& queue, HWND window);

/// Makes the message of the timer that has been due for longest. `remove` sets the timer on.
bool TakeDueTimer(DesktopLock& desktop, MessageQueue& queue, const MessageFilter& filter,
                  bool remove, MSG* message);

/// Waits until the queue is woken or its next timer that the filter accepts is due.
void WaitForWork(DesktopLock& desktop, MessageQueue& queue, const MessageFilter& filter);

}  // namespace quennet::user
