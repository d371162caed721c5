#pragma once
// The window layer: what its threads share.
//
// A window belongs to the thread that made it, for ever. Its procedure runs on that thread only,
// whoever sent the message. Each thread that makes a window or asks for a message has a queue;
// the queue is all that other threads ever touch of it:
//
//      thread A                                        thread B
//      --------                                        --------
//      PostMessageA(b) ------------------------------> posted: m m m --+
//      SetTimer(b) ----------------------------------> timers: t t     +--> GetMessageA,
//      SendMessageA(b) --> waits on A's own `wake` --> sent:   s s ----+    modal dialogs
//         ^   |  serves A's own `sent` meanwhile           |
//         |   +--------------------------------------------+ procedure of b runs on B
//         +------------------ result, A is woken <---------+
//
// Queues. GetMessageA takes, in this order: all that was sent (it runs the procedures on the spot
// and hands nothing out), the first posted message, WM_QUIT, a timer that is due. A timer is not a
// message in a queue but a due time; WM_TIMER is made at the moment it is taken, so it cannot pile
// up, and a timer that was killed or set again is gone at once. A thread with nothing to take
// waits on the `wake` of its queue, until the next timer is due at most; a timer that is set for
// later than that does not wake it.
//
// Sends. A send to a window of the same thread is a call. A send to another thread is put into the
// target's `sent`, and the sender waits for its answer. While it waits it serves what is sent to
// its own windows, so two threads that send to each other at the same moment both get through.
// Nothing else is served in that wait: no posted message, no timer. A window that is destroyed
// answers all that waits for it with 0, and so does a thread that ends, for all its windows.
//
// Modal loops. DialogBoxParamA disables the owner, makes the windows and runs a loop of its own on
// the calling thread until EndDialog was called. The loop takes everything that its thread is
// sent or posted, so other windows of the thread (timers of a connection, say) live on below a
// dialog. Nested dialogs are nested loops. WM_QUIT ends the innermost loop, which posts it again
// for the loop around it.
//
// Handles. A window's number has 32 bits: in the low half the place in the table, in the high half
// how often that place was taken before. A number whose window is gone therefore finds nothing
// instead of a stranger, and places freed last are taken last.
//
//       31            16 15             0
//      +----------------+----------------+
//      |   generation   |     place      |     0 is no window
//      +----------------+----------------+
//
// Locking. One lock guards all of it: table, windows, classes and queues. It is short, and never
// held while a window procedure, a dialog procedure or the display runs; after each of those calls
// everything is looked up again, since the window may be gone. What a control keeps for itself
// (Window::state) is touched on its own thread alone and needs no lock; its procedure holds it by
// a counted pointer, so it outlives a window that is destroyed by its own notification.

#include "user/menu.h"
#include "windows.h"

#include <bitset>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quennet::user {

using Clock = std::chrono::steady_clock;

struct MessageQueue;

/// A message on its way from one thread to another.
struct SentMessage {
    HWND window;
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
    bool destroys;  // no message: the window is to be destroyed on its thread
    std::shared_ptr<MessageQueue> sender;
    bool answered = false;
    LRESULT result = 0;
};

struct Timer {
    HWND window;
    UINT_PTR number;
    Clock::duration period;
    Clock::time_point due;
};

/// What a thread has to do.
struct MessageQueue {
    DWORD thread = 0;
    std::condition_variable wake;
    /// When the thread looks at its timers without being woken; the least of all times while it
    /// does not wait for them.
    Clock::time_point sleepsUntil = Clock::time_point::min();
    std::list<std::shared_ptr<SentMessage>> sent;
    std::list<std::shared_ptr<SentMessage>> serving;  // taken from `sent`, not yet answered
    std::deque<MSG> posted;
    std::vector<Timer> timers;
    bool quitting = false;
    INT exitCode = 0;
    bool inputWanted = false;  // the display has asked for a turn since its last one
    HWND focus = nullptr;
    HWND capture = nullptr;
    std::bitset<256> keysDown;
};

struct WindowClass {
    std::string name;
    ATOM atom;
    bool ofSystem;  // known to every instance
    WNDCLASSEXA record;
};

/// Base of what a control keeps for itself.
struct ControlState {
    virtual ~ControlState() = default;
};

struct Window {
    HWND handle = nullptr;
    std::shared_ptr<MessageQueue> queue;  // of the thread that it lives on
    std::shared_ptr<const WindowClass> windowClass;
    WNDPROC procedure = nullptr;
    HINSTANCE instance = nullptr;
    HWND parent = nullptr;       // the owner, when it is no child
    std::vector<HWND> children;  // in tab order
    DWORD style = 0;
    DWORD extendedStyle = 0;
    RECT place = {};  // relative to the parent
    LONG_PTR id = 0;
    HMENU menu = nullptr;  // of a top window
    std::shared_ptr<MenuTracking> menuTracking;
    LONG_PTR userData = 0;
    std::string text;
    std::vector<std::byte> extra;
    std::shared_ptr<ControlState> state;
    HFONT font = nullptr;
    bool sizeTold = false;  // with WM_SIZE
    bool ending = false;    // DestroyWindow has begun

    bool IsChild() const { return (style & WS_CHILD) != 0; }
};

/// Everything that the threads share. All operations want the lock to be held (DesktopLock).
class Desktop {
  public:
    Desktop();

    /// The window of that number, null when there is none. Good while the lock is held.
    Window* Find(HWND handle);
    /// Gives the window its number and a place among its siblings; null when the table is full.
    HWND Add(std::unique_ptr<Window> window);
    /// Takes the window out of everything; whoever waits for it gets 0. The record is for the
    /// caller to release when the lock is not held.
    std::unique_ptr<Window> Remove(HWND handle);
    /// One of a thread's windows, null when it has none.
    HWND AnyWindowOf(const MessageQueue& queue) const;
    bool HasWindowOf(const WindowClass& windowClass) const;
    std::size_t WindowCount() const;

    /// A class that `instance` can use; `name` may be an atom.
    std::shared_ptr<const WindowClass> FindClass(HINSTANCE instance, LPCSTR name) const;
    ATOM AddClass(const WNDCLASSEXA& record, bool ofSystem);
    void RemoveClass(const WindowClass& windowClass);

    std::mutex mutex;
    Menus menus;
    std::vector<HWND> topWindows;                                     // the newest first
    std::unordered_map<DWORD, std::shared_ptr<MessageQueue>> queues;  // by thread

  private:
    struct Place {
        std::uint16_t generation = 0;
        std::unique_ptr<Window> window;
    };

    std::vector<HWND>& SiblingsOf(const Window& window);
    bool TakePlace(std::size_t& index);

    std::vector<Place> places_;
    std::deque<std::uint16_t> freePlaces_;
    std::vector<std::shared_ptr<const WindowClass>> classes_;
    ATOM nextAtom_ = 0xC000;
};

/// Holds the lock for a block: DesktopLock desktop; desktop->Find(...).
class DesktopLock {
  public:
    DesktopLock();
    Desktop* operator->() const { return &desktop_; }
    std::unique_lock<std::mutex>& Lock() { return lock_; }

  private:
    Desktop& desktop_;
    std::unique_lock<std::mutex> lock_;
};

/// The calling thread's queue, made when there is none yet. It ends with the thread. Throws
/// std::bad_alloc.
const std::shared_ptr<MessageQueue>& CurrentQueue();

inline HWND HandleFromNumber(std::uint32_t number) {
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(number));
}

/// What a control or dialog keeps, null when the window is gone or of another kind.
template <typename State>
std::shared_ptr<State> StateOf(HWND handle) {
    DesktopLock desktop;
    Window* window = desktop->Find(handle);
    return window ? std::dynamic_pointer_cast<State>(window->state) : nullptr;
}

void SetState(HWND handle, std::shared_ptr<ControlState> state);

}  // namespace quennet::user
