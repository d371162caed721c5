// Sending: a call on the same thread, a carried message to another one.

#include "base/before_wait.h"
#include "user/messages.h"

#include <algorithm>
#include <new>

namespace quennet::user {

namespace {

/// Only the first answer counts: a thread that ended may have been faster.
void Answer(SentMessage& sent, LRESULT result) {
    if (sent.answered) {
        return;
    }
    sent.answered = true;
    sent.result = result;
    sent.sender->wake.notify_all();
}

/// Puts the message into the queue of the window's thread and waits for the answer.
LRESULT Carry(const std::shared_ptr<SentMessage>& sent) {
    BeforeWait();
    MessageQueue& own = *sent->sender;
    DesktopLock desktop;
    const Window* window = desktop->Find(sent->window);
    if (!window) {
        return 0;
    }
    window->queue->sent.push_back(sent);
    window->queue->wake.notify_all();
    for (;;) {
        ServeSent(desktop, own);
        if (sent->answered) {
            return sent->result;
        }
        own.wake.wait(desktop.Lock());
    }
}

/// Calls a procedure, if there is one. A procedure that has no memory for a message has not handled
/// it: whoever sent it may know of no exceptions.
LRESULT Call(WNDPROC procedure, HWND window, UINT message, WPARAM wParam, LPARAM lParam) try {
    return procedure ? procedure(window, message, wParam, lParam) : 0;
} catch (const std::bad_alloc&) {
    return 0;
}

/// The procedure of a window of this thread, null for a window of another one or none.
WNDPROC OwnProcedure(HWND handle, const std::shared_ptr<MessageQueue>& own) {
    DesktopLock desktop;
    const Window* window = desktop->Find(handle);
    return window && window->queue == own ? window->procedure : nullptr;
}

void ServeOne(DesktopLock& desktop, MessageQueue& queue) {
    const std::shared_ptr<SentMessage> sent = queue.sent.front();
    queue.serving.splice(queue.serving.end(), queue.sent, queue.sent.begin());
    const Window* window = desktop->Find(sent->window);
    const WNDPROC procedure = window ? window->procedure : nullptr;
    desktop.Lock().unlock();
    const LRESULT result =
        sent->destroys ? DestroyWindow(sent->window)
                       : Call(procedure, sent->window, sent->message, sent->wParam, sent->lParam);
    BeforeWait();
    desktop.Lock().lock();
    std::erase(queue.serving, sent);
    Answer(*sent, result);
}

}  // namespace

void ServeSent(DesktopLock& desktop, MessageQueue& queue) {
    while (!queue.sent.empty()) {
        ServeOne(desktop, queue);
    }
}

void DestroyOnItsThread(HWND window) {
    Carry(std::make_shared<SentMessage>(SentMessage{window, WM_NULL, 0, 0, true, CurrentQueue()}));
}

void ReleaseSenders(MessageQueue& queue) {
    for (const auto& sent : queue.sent) {
        Answer(*sent, 0);
    }
    for (const auto& sent : queue.serving) {
        Answer(*sent, 0);
    }
    queue.sent.clear();
    queue.serving.clear();
}

void ReleaseSenders(MessageQueue& queue, HWND window) {
    std::erase_if(queue.sent, [&](const auto& sent) {
        if (sent->window != window) {
            return false;
        }
        Answer(*sent, 0);
        return true;
    });
}

}  // namespace quennet::user

using namespace quennet::user;

extern "C" {

LRESULT WINAPI SendMessageA(HWND window, UINT message, WPARAM wParam, LPARAM lParam) try {
    const std::shared_ptr<MessageQueue> own = CurrentQueue();
    if (const WNDPROC procedure = OwnProcedure(window, own)) {
        return Call(procedure, window, message, wParam, lParam);
    }
    return Carry(
        std::make_shared<SentMessage>(SentMessage{window, message, wParam, lParam, false, own}));
} catch (const std::bad_alloc&) {
    return 0;
}

LRESULT WINAPI CallWindowProcA(WNDPROC procedure, HWND window, UINT message, WPARAM wParam,
                               LPARAM lParam) {
    return Call(procedure, window, message, wParam, lParam);
}
}
