#include "terminal_display.h"

#include "quennet_terminal.h"
#include "restore.h"
#include "screen.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <utility>

namespace quennet::terminal {

namespace {

constexpr std::size_t eventsAtMost = 4096;
constexpr std::chrono::seconds patienceForLeaving{3};

HWND TopOf(HWND window) {
    while ((GetWindowLongA(window, GWL_STYLE) & WS_CHILD) != 0) {
        window = GetParent(window);
    }
    return window;
}

}  // namespace

TerminalDisplay& TerminalDisplay::Instance() {
    static TerminalDisplay& display = *new TerminalDisplay;
    return display;
}

bool TerminalDisplay::Start() {
    if (thread_.joinable()) {
        return true;
    }
    if (!CanUseTerminal()) {
        return false;
    }
    if (notices_[0] == -1) {
        const std::lock_guard lock(mutex_);
        if (pipe2(notices_, O_CLOEXEC | O_NONBLOCK) != 0) {
            return false;
        }
        InstallSignalHandlers(notices_[1]);
        std::atexit([] { UseHeadlessDisplay(); });
    }
    ChooseCharacterSet();
    const TerminalSize size = SizeOfTerminal();
    columns_ = size.columns;
    rows_ = size.rows;
    stopping_ = false;
    thread_ = std::thread([this] { Run(); });
    SetDisplay(this);
    return true;
}

void TerminalDisplay::Stop() {
    if (!thread_.joinable()) {
        return;
    }
    SetDisplay(nullptr);
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        tops_.clear();
        events_.clear();
        WakeReader();
    }
    thread_.join();
}

void TerminalDisplay::Leave() {
    const std::lock_guard lock(mutex_);
    Tell(Notice::hungUp);
}

bool TerminalDisplay::IsGone() {
    const std::lock_guard lock(mutex_);
    return gone_;
}

// ---- The stack of windows ---------------------------------------------------------------------

TerminalDisplay::Top* TerminalDisplay::Find(HWND window) {
    const auto found = std::ranges::find(tops_, window, &Top::window);
    return found == tops_.end() ? nullptr : &*found;
}

TerminalDisplay::Top* TerminalDisplay::Active() {
    const auto found = std::find_if(tops_.rbegin(), tops_.rend(), [](const Top& top) {
        return IsWindowEnabled(top.window) && IsWindowVisible(top.window);
    });
    return found == tops_.rend() ? nullptr : &*found;
}

void TerminalDisplay::RaiseLocked(HWND window) {
    const auto found = std::ranges::find(tops_, window, &Top::window);
    if (found != tops_.end()) {
        std::rotate(found, found + 1, tops_.end());
        changed_ = true;
        WakeReader();
    }
    // A dialog stays above its owner.
    std::vector<HWND> owned;
    for (const Top& top : tops_) {
        if (GetParent(top.window) == window) {
            owned.push_back(top.window);
        }
    }
    for (const HWND dialog : owned) {
        RaiseLocked(dialog);
    }
}

void TerminalDisplay::Raise(HWND window) {
    const std::lock_guard lock(mutex_);
    RaiseLocked(window);
}

void TerminalDisplay::WakeReader() {
    Tell(Notice::wake);
}

void TerminalDisplay::Tell(Notice notice) const {
    const char byte = static_cast<char>(notice);
    [[maybe_unused]] const ssize_t written = write(notices_[1], &byte, 1);
}

/// Nobody is there any more: the window in front is told to close, once.
void TerminalDisplay::CloseActive() {
    Top* active = gone_ ? Active() : nullptr;
    if (active && !active->closed) {
        active->closed = true;
        PostMessageA(active->window, WM_CLOSE, 0, 0);
    }
}

void TerminalDisplay::Remove(std::unique_lock<std::mutex>& lock, HWND window) {
    if (std::erase_if(tops_, [&](const Top& top) { return top.window == window; }) == 0) {
        return;
    }
    changed_ = true;
    WakeReader();
    CloseActive();
    if (tops_.empty()) {
        left_.wait_for(lock, patienceForLeaving, [&] { return !onScreen_ || !tops_.empty(); });
    } else if (Top* active = Active(); active && !events_.empty()) {
        QuennetWakeThread(active->thread);
    }
}

void TerminalDisplay::WindowChanged(HWND window) {
    const HWND handle = TopOf(window);
    if (!handle) {
        return;
    }
    std::unique_lock lock(mutex_);
    if (!IsWindowVisible(handle)) {
        Remove(lock, handle);
        return;
    }
    Top* top = Find(handle);
    if (!top) {
        top = &tops_.emplace_back();
        top->window = handle;
        top->thread = GetWindowThreadProcessId(handle, nullptr);
    }
    top->old = true;
    const DWORD thread = top->thread;
    CloseActive();
    lock.unlock();
    if (thread != GetCurrentThreadId()) {
        QuennetWakeThread(thread);
    }
}

void TerminalDisplay::WindowDestroyed(HWND window) {
    std::unique_lock lock(mutex_);
    Remove(lock, window);
}

// ---- On the threads with windows --------------------------------------------------------------

void TerminalDisplay::RunInput() {
    const DWORD thread = GetCurrentThreadId();
    while (const std::optional<Task> task = TakeTask(thread)) {
        if (Deliver(task->event, task->top, task->lastFocus)) {
            break;
        }
    }
    while (const std::optional<HWND> top = TakeOld(thread)) {
        Draw(*top);
    }
}

std::optional<TerminalDisplay::Task> TerminalDisplay::TakeTask(DWORD thread) {
    const std::lock_guard lock(mutex_);
    while (!events_.empty()) {
        const InputEvent& event = events_.front();
        const Top* top = event.OfMouse() ? Find(event.window) : Active();
        if (top && top->thread != thread) {
            QuennetWakeThread(top->thread);
            return std::nullopt;
        }
        if (!top && !event.OfMouse()) {
            return std::nullopt;  // it waits for a window
        }
        const bool taken = top && IsWindowEnabled(top->window);
        const Task task = {event, taken ? top->window : nullptr, taken ? top->focus : nullptr};
        events_.pop_front();
        if (taken) {
            if (task.event.kind == InputEvent::Kind::click && tops_.back().window != task.top) {
                RaiseLocked(task.top);
            }
            return task;
        }
    }
    return std::nullopt;
}

std::optional<HWND> TerminalDisplay::TakeOld(DWORD thread) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find_if(
        tops_, [&](const Top& top) { return top.old && top.thread == thread; });
    if (found == tops_.end()) {
        return std::nullopt;
    }
    found->old = false;
    return found->window;
}

void TerminalDisplay::Draw(HWND handle) {
    int columns = 0;
    int rows = 0;
    std::shared_ptr<DialogFit> fit;
    {
        const std::lock_guard lock(mutex_);
        const Top* top = Find(handle);
        if (!top) {
            return;
        }
        columns = columns_;
        rows = rows_;
        fit = top->fit;
    }
    FitToScreen(handle, *fit, columns, rows);
    auto picture = std::make_shared<const Picture>(DrawWindow(handle));
    const HWND focus = GetFocus();
    const bool inside = focus && (focus == handle || IsChild(handle, focus));
    const std::lock_guard lock(mutex_);
    if (Top* top = Find(handle)) {
        top->picture = std::move(picture);
        top->focus = inside ? focus : top->focus;
        changed_ = true;
        WakeReader();
    }
}

// ---- On the terminal's thread -----------------------------------------------------------------

void TerminalDisplay::Run() {
    static Screen& screen = *new Screen;
    for (;;) {
        pollfd sources[] = {{notices_[0], POLLIN, 0},
                            {screen.IsShown() ? STDIN_FILENO : -1, POLLIN, 0}};
        poll(sources, std::size(sources), -1);
        bool stop = false;
        if (sources[0].revents != 0) {
            ReadNotices(screen, stop);
        }
        if (sources[1].revents != 0) {
            Read(screen, stop);
        }
        if (stop) {
            Suspend(screen);
        }
        Show(screen);
        const std::lock_guard lock(mutex_);
        if (stopping_) {
            return;
        }
    }
}

void TerminalDisplay::ReadNotices(Screen& screen, bool& stop) {
    char notices[256];
    ssize_t count = 0;
    while ((count = read(notices_[0], notices, sizeof(notices))) > 0) {
        const std::string_view read(notices, static_cast<std::size_t>(count));
        const auto has = [&](Notice notice) {
            return read.find(static_cast<char>(notice)) != read.npos;
        };
        stop = stop || has(Notice::stop);
        if (has(Notice::hungUp)) {
            End(screen);
        }
        if (has(Notice::resized)) {
            screen.Resize();
            const std::lock_guard lock(mutex_);
            changed_ = true;
        }
    }
}

void TerminalDisplay::Read(Screen& screen, bool& stop) {
    std::deque<InputEvent> events;
    const InputResult result = screen.Read(events);
    stop = stop || result.stop;
    AddEvents(std::move(events));
    if (result.ended) {
        End(screen);
    }
    if (result.redraw) {
        screen.Redraw();
        const std::lock_guard lock(mutex_);
        changed_ = true;
    }
}

void TerminalDisplay::AddEvents(std::deque<InputEvent> events) {
    const std::lock_guard lock(mutex_);
    for (InputEvent& event : events) {
        if (event.OfMouse()) {
            const auto hit = std::find_if(
                placements_.rbegin(), placements_.rend(),
                [&](const Placement& place) { return place.area.Contains(event.x, event.y); });
            if (hit == placements_.rend()) {
                continue;
            }
            event.window = hit->window;
            event.x -= hit->area.left;
            event.y -= hit->area.top;
        }
        if (events_.size() < eventsAtMost) {
            events_.push_back(std::move(event));
        }
    }
    if (events_.empty()) {
        return;
    }
    const Top* top = events_.front().OfMouse() ? Find(events_.front().window) : Active();
    if (top) {
        QuennetWakeThread(top->thread);
    }
}

/// Takes or gives back the terminal, and shows what has changed.
void TerminalDisplay::Show(Screen& screen) {
    std::vector<Layer> layers;
    {
        const std::lock_guard lock(mutex_);
        if (!changed_ && !stopping_) {
            return;
        }
        changed_ = false;
        const Top* active = Active();
        for (const Top& top : tops_) {
            if (top.picture && !gone_) {
                layers.push_back({top.window, top.picture, &top == active});
            }
        }
        onScreen_ = !layers.empty();
    }
    if (layers.empty()) {
        screen.Leave();
        left_.notify_all();
        return;
    }
    if (!screen.Enter()) {
        End(screen);
        return;
    }
    Composition composition = composer_.Compose(layers, screen.Columns(), screen.Rows());
    screen.Show(composition.screen);
    const std::lock_guard lock(mutex_);
    placements_ = std::move(composition.placements);
    const bool resized = columns_ != screen.Columns() || rows_ != screen.Rows();
    columns_ = screen.Columns();
    rows_ = screen.Rows();
    for (Top& top : tops_) {
        if (resized && top.picture) {
            top.old = true;
            QuennetWakeThread(top.thread);
        }
    }
}

void TerminalDisplay::Suspend(Screen& screen) {
    const bool shown = screen.IsShown();
    screen.Leave();
    kill(getpid(), SIGSTOP);
    if (shown && screen.Enter()) {
        const std::lock_guard lock(mutex_);
        changed_ = true;
    }
}

void TerminalDisplay::End(Screen& screen) {
    NoteTerminalGone();
    screen.Leave();
    const std::lock_guard lock(mutex_);
    gone_ = true;
    onScreen_ = false;
    changed_ = true;
    events_.clear();
    left_.notify_all();
    CloseActive();
}

}  // namespace quennet::terminal

namespace quennet {

using terminal::TerminalDisplay;

bool UseTerminalDisplay() {
    return TerminalDisplay::Instance().Start();
}

void UseHeadlessDisplay() {
    TerminalDisplay::Instance().Stop();
}

void LeaveTerminal() {
    TerminalDisplay::Instance().Leave();
}

bool IsTerminalGone() {
    return TerminalDisplay::Instance().IsGone();
}

void RaiseInTerminal(HWND window) {
    TerminalDisplay::Instance().Raise(window);
}

}  // namespace quennet
