#pragma once
// The display of the layer in a terminal.
//
//    threads with windows                      |         the terminal's thread
//    ------------------------------------------+-----------------------------------------
//    a window changes: it is noted as old      |
//    the thread has nothing left to do:        |
//      it takes one event and posts messages <-+-- events: keys, texts, clicks <-- ncurses
//      it draws its old windows into pictures -+-> pictures -- Composer --> ncurses
//
// Drawing. A window is drawn by its own thread alone, because what a control keeps is that
// thread's: in RunInput, when the thread has no message left. The picture is handed over and never
// touched again. The terminal's thread puts all pictures together; it is the only one that calls
// ncurses, and it calls no window. A thread that is busy keeps its last picture on the screen.
//
// Input. What is typed waits in one line for all threads. A thread takes the first event when it
// has nothing else to do and the window in front is its own, and takes the next only when
// everything that came of it is done: whatever a key opens gets the keys behind it, on whatever
// thread it lives. A click goes to the window under it, which comes to the front if it is enabled.
//
// Which window is in front. New windows come to the top; the highest one that is enabled has the
// keyboard. The owner of a modal dialog is disabled, so it can't have it.
//
// Locking. One mutex guards line, stack and pictures. It is not held while a window draws or is
// sent something; questions to the layer about a window may be asked under it, since the layer
// holds no lock of its own when it calls a display.
//
// The terminal is taken when there is a picture to show, and given back before the call that
// destroys or hides the last window returns, so a program may print before and after its dialogs.

#include "composition.h"
#include "input.h"
#include "quennet_platform.h"
#include "restore.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace quennet::terminal {

class Screen;

class TerminalDisplay : public Display {
  public:
    /// The one of the process; it is never destroyed.
    static TerminalDisplay& Instance();

    bool Start();
    void Stop();
    void Leave();
    bool IsGone();
    void Raise(HWND window);

    void WindowCreated(HWND) override {}
    void WindowChanged(HWND window) override;
    void WindowDestroyed(HWND window) override;
    void WindowRaised(HWND window) override { Raise(window); }
    void RunInput() override;

  private:
    struct Top {
        HWND window = nullptr;
        DWORD thread = 0;
        bool old = true;  // its picture is
        bool closed = false;
        HWND focus = nullptr;
        std::shared_ptr<const Picture> picture;
        std::shared_ptr<DialogFit> fit = std::make_shared<DialogFit>();  // its thread's alone
    };
    struct Task {
        InputEvent event;
        HWND top;
        HWND lastFocus;
    };

    // With the mutex held:
    Top* Find(HWND window);
    Top* Active();
    void RaiseLocked(HWND window);
    void Remove(std::unique_lock<std::mutex>& lock, HWND window);
    void CloseActive();
    void WakeReader();
    void Tell(Notice notice) const;

    std::optional<Task> TakeTask(DWORD thread);
    std::optional<HWND> TakeOld(DWORD thread);
    void Draw(HWND top);

    // The terminal's thread:
    void Run();
    void ReadNotices(Screen& screen, bool& stop);
    void Read(Screen& screen, bool& stop);
    void Show(Screen& screen);
    void Suspend(Screen& screen);
    void End(Screen& screen);
    void AddEvents(std::deque<InputEvent> events);

    std::mutex mutex_;
    std::condition_variable left_;
    std::vector<Top> tops_;  // the highest last
    std::deque<InputEvent> events_;
    std::vector<Placement> placements_;
    bool changed_ = false;   // something on the screen
    bool onScreen_ = false;  // the terminal is taken
    bool gone_ = false;
    bool stopping_ = false;
    int columns_ = 80;
    int rows_ = 24;

    int notices_[2] = {-1, -1};
    std::thread thread_;
    Composer composer_;
};

}  // namespace quennet::terminal
