#pragma once
// What the window tests share: windows whose procedure is a function of the test, and threads with
// a message loop.

#include <quennet_canvas.h>
#include <windows.h>

#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

/// Answers a message, or leaves it to DefWindowProcA with `unhandled`.
using Handler = std::function<LRESULT(HWND, UINT, WPARAM, LPARAM)>;
constexpr LRESULT unhandled = -4711;

/// A window of the calling thread. The handler must outlive it; null stands for none.
HWND MakeWindow(const Handler* handler, HWND parent = nullptr, DWORD style = 0, INT id = 0);

/// The rows of a surface as they are read, without spaces at their ends: '-' stands for what is
/// disabled, '|' for what is not ASCII.
std::vector<std::string> TextRows(const quennet::Surface& surface);

/// The same of what a control draws on so many characters.
std::vector<std::string> DrawnBy(HWND control, int columns, int rows);

/// A thread with a message loop and a window whose messages the handler answers.
class LoopThread {
  public:
    explicit LoopThread(Handler handler = {});
    ~LoopThread();
    LoopThread(const LoopThread&) = delete;
    LoopThread& operator=(const LoopThread&) = delete;

    HWND Window() const { return window_; }
    /// Runs the task on the thread, from its message loop, and returns when it is done.
    void Run(const std::function<void()>& task) const;
    /// Ends the loop, and waits for the thread's end.
    void Finish();

  private:
    void Loop(std::promise<void> ready);

    Handler handler_;
    HWND window_ = nullptr;
    DWORD threadId_ = 0;
    std::thread thread_;
};
