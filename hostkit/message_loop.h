#pragma once
// The message loop of a host, and the thread that does its work meanwhile.
//
// How a host is built. Windows, timers and dialogs of the module live on the thread that sent it
// message 24, and that thread must serve messages as long as the connection lives: otherwise no
// time-out ever fires. So the main thread makes a `MessageLoop` and a `Host` and then runs its work
// as a job:
//
//     MessageLoop loop;
//     Host host(loop, options);
//     host.LoadModule(path);
//     RunJob(loop, [&] {
//         Connection connection(host);
//         if (connection.Connect(request).Connected()) {
//             Listing listing = connection.List();
//             ...
//         }
//     });
//
// While the job runs on a thread of its own and waits in the module's blocking messages, the main
// thread serves windows; what must happen on it (message 24 and its dialog) the job hands over
// with `Invoke`. The loop ends with the job.

#include <windows.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <type_traits>
#include <utility>

namespace hostkit {

class MessageLoop {
  public:
    /// The loop belongs to the thread that makes it, and dies on it.
    MessageLoop();
    ~MessageLoop();
    MessageLoop(const MessageLoop&) = delete;
    MessageLoop& operator=(const MessageLoop&) = delete;

    bool OnLoopThread() const { return std::this_thread::get_id() == thread_; }

    /// Sees each message before it is dispatched, and does that itself when it gives true. To be
    /// set on the loop's thread; it must not throw.
    void SetFilter(std::function<bool(MSG& message)> filter) { filter_ = std::move(filter); }

    /// Runs a function on the loop's thread, some time, after those posted before it. It must not
    /// throw. May be called on any thread; a modal dialog of the loop's thread runs it too. Throws
    /// std::bad_alloc when it can't be posted; it does not run then.
    void Post(std::function<void()> function);

    /// Runs a function on the loop's thread and waits for its end. The result, or the exception, is
    /// the function's. On the loop's thread it runs at once.
    template <typename Function>
    auto Invoke(Function function) -> std::invoke_result_t<Function>;

    /// Waits until `done` gives true. On the loop's thread messages are served meanwhile. `done` is
    /// asked again after every `Wake`, and must be cheap.
    void WaitUntil(const std::function<bool()>& done);

    /// The same, for at most `timeout`. False when `done` still gave false then.
    bool WaitUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

    /// Makes all waits look at their condition again.
    void Wake();

  private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    using Time = std::chrono::steady_clock::time_point;

    void RunPosted();
    void PostWake();
    bool WaitUntilTime(const std::function<bool()>& done, Time end);
    bool ServeUntil(const std::function<bool()>& done, Time end);
    bool SleepUntil(const std::function<bool()>& done, Time end);

    const std::thread::id thread_ = std::this_thread::get_id();
    HWND window_ = nullptr;
    std::function<bool(MSG& message)> filter_;
    std::mutex mutex_;
    std::condition_variable woken_;
    unsigned wakes_ = 0;
    bool wakePosted_ = false;
    std::deque<std::function<void()>> posted_;
};

template <typename Function>
auto MessageLoop::Invoke(Function function) -> std::invoke_result_t<Function> {
    if (OnLoopThread()) {
        return function();
    }
    using Task = std::packaged_task<std::invoke_result_t<Function>()>;
    auto task = std::make_shared<Task>(std::move(function));
    auto result = task->get_future();
    Post([task] { (*task)(); });
    return result.get();
}

/// Runs `job` on a thread of its own while the calling thread, the loop's, serves messages. Returns
/// when the job has ended, with its result or its exception.
template <typename Function>
auto RunJob(MessageLoop& loop, Function job) -> std::invoke_result_t<Function> {
    std::atomic<bool> ended = false;
    std::packaged_task<std::invoke_result_t<Function>()> task(std::move(job));
    auto result = task.get_future();
    std::thread thread([&] {
        task();
        ended = true;
        loop.Wake();
    });
    loop.WaitUntil([&] { return ended.load(); });
    thread.join();
    return result.get();
}

}  // namespace hostkit
