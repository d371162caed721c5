#include "user/desktop.h"

#include "base/per_thread.h"
#include "commctrl.h"
#include "user/controls.h"
#include "user/display_calls.h"
#include "user/messages.h"

#include <algorithm>
#include <array>
#include <new>

namespace quennet::user {

namespace {

constexpr std::size_t placesAtMost = 0xFFFE;
constexpr std::size_t placesFreeBeforeReuse = 1024;
constexpr std::uint16_t generationsAtMost = 0x7FFF;
constexpr std::uint32_t placeMask = 0xFFFF;

constexpr ATOM dialogAtom = 0x8002;

struct SystemClass {
    LPCSTR name;
    WNDPROC procedure;
    INT extraBytes;
};

constexpr std::array systemClasses = {
    SystemClass{"Button", ButtonProcedure, 0},
    SystemClass{"ComboBox", ComboBoxProcedure, 0},
    SystemClass{"Edit", EditProcedure, 0},
    SystemClass{"ListBox", ListBoxProcedure, 0},
    SystemClass{"Static", StaticProcedure, 0},
    SystemClass{WC_LISTVIEWA, ListViewProcedure, 0},
    SystemClass{STATUSCLASSNAMEA, StatusBarProcedure, 0},
    SystemClass{TOOLBARCLASSNAMEA, ToolBarProcedure, 0},
};
constexpr SystemClass dialogClass = {"#32770", DefDlgProcA, DLGWINDOWEXTRA};

std::uint32_t NumberFromHandle(HWND handle) {
    const auto value = reinterpret_cast<std::uintptr_t>(handle);
    return value <= UINT32_MAX ? static_cast<std::uint32_t>(value) : 0;
}

/// Never destroyed: threads may still run when the process ends.
Desktop& SharedDesktop() {
    static Desktop& desktop = *new Desktop;
    return desktop;
}

WNDCLASSEXA RecordOf(const SystemClass& systemClass) {
    WNDCLASSEXA record = {};
    record.cbSize = sizeof(record);
    record.style = CS_DBLCLKS;
    record.lpfnWndProc = systemClass.procedure;
    record.cbWndExtra = systemClass.extraBytes;
    record.lpszClassName = systemClass.name;
    return record;
}

/// Takes a thread's windows and its queue away when the thread ends.
class ThreadsQueue {
  public:
    ThreadsQueue() : queue_(std::make_shared<MessageQueue>()) {
        queue_->thread = GetCurrentThreadId();
        DesktopLock desktop;
        desktop->queues[queue_->thread] = queue_;
    }
    ThreadsQueue(const ThreadsQueue&) = delete;
    ThreadsQueue& operator=(const ThreadsQueue&) = delete;
    ~ThreadsQueue() {
        while (const auto window = TakeWindow()) {
            TellDestroyed(window->handle);
        }
    }

    const std::shared_ptr<MessageQueue>& Queue() const { return queue_; }

  private:
    /// One window of those that are left, null when none is and the queue is gone as well.
    std::unique_ptr<Window> TakeWindow() {
        DesktopLock desktop;
        auto window = desktop->Remove(desktop->AnyWindowOf(*queue_));
        if (!window) {
            desktop->queues.erase(queue_->thread);
            ReleaseSenders(*queue_);
        }
        return window;
    }

    std::shared_ptr<MessageQueue> queue_;
};

const PerThread<ThreadsQueue> threadsQueues;

}  // namespace

DesktopLock::DesktopLock() : desktop_(SharedDesktop()), lock_(desktop_.mutex) {}

const std::shared_ptr<MessageQueue>& CurrentQueue() {
    return threadsQueues.Get().Queue();
}

void SetState(HWND handle, std::shared_ptr<ControlState> state) {
    DesktopLock desktop;
    if (Window* window = desktop->Find(handle)) {
        window->state.swap(state);
    }
}

Desktop::Desktop() {
    for (const SystemClass& systemClass : systemClasses) {
        AddClass(RecordOf(systemClass), true);
    }
    nextAtom_ = dialogAtom;
    AddClass(RecordOf(dialogClass), true);
    nextAtom_ = static_cast<ATOM>(0xC000 + systemClasses.size());
}

Window* Desktop::Find(HWND handle) {
    const std::uint32_t number = NumberFromHandle(handle);
    const std::size_t index = number & placeMask;
    if (index == 0 || index > places_.size()) {
        return nullptr;
    }
    const Place& place = places_[index - 1];
    return place.generation == number >> 16 ? place.window.get() : nullptr;
}

bool Desktop::TakePlace(std::size_t& index) {
    const bool full = places_.size() == placesAtMost;
    if (freePlaces_.size() > placesFreeBeforeReuse || (full && !freePlaces_.empty())) {
        index = freePlaces_.front();
        freePlaces_.pop_front();
        return true;
    }
    if (full) {
        return false;
    }
    places_.emplace_back();
    index = places_.size();
    return true;
}

HWND Desktop::Add(std::unique_ptr<Window> window) {
    std::size_t index = 0;
    if (!TakePlace(index)) {
        return nullptr;
    }
    Place& place = places_[index - 1];
    place.generation = static_cast<std::uint16_t>(
        place.generation == generationsAtMost ? 1 : place.generation + 1);
    const HWND handle = HandleFromNumber(static_cast<std::uint32_t>(place.generation) << 16 |
                                         static_cast<std::uint32_t>(index));
    window->handle = handle;
    std::vector<HWND>& siblings = SiblingsOf(*window);
    siblings.insert(window->IsChild() ? siblings.end() : siblings.begin(), handle);
    place.window = std::move(window);
    return handle;
}

std::unique_ptr<Window> Desktop::Remove(HWND handle) {
    if (!Find(handle)) {
        return nullptr;
    }
    const std::size_t index = NumberFromHandle(handle) & placeMask;
    std::unique_ptr<Window> window = std::move(places_[index - 1].window);
    std::erase(topWindows, handle);
    if (Window* parent = Find(window->parent)) {
        std::erase(parent->children, handle);
    }

    menus.Remove(window->menu);

    MessageQueue& queue = *window->queue;
    std::erase_if(queue.posted, [&](const MSG& message) { return message.hwnd == handle; });
    std::erase_if(queue.timers, [&](const Timer& timer) { return timer.window == handle; });
    if (queue.focus == handle) {
        queue.focus = nullptr;
    }
    if (queue.capture == handle) {
        queue.capture = nullptr;
    }
    ReleaseSenders(queue, handle);
    try {
        freePlaces_.push_back(static_cast<std::uint16_t>(index));
    } catch (const std::bad_alloc&) {
        // The place is not taken again.
    }
    return window;
}

std::vector<HWND>& Desktop::SiblingsOf(const Window& window) {
    Window* parent = window.IsChild() ? Find(window.parent) : nullptr;
    return parent ? parent->children : topWindows;
}

HWND Desktop::AnyWindowOf(const MessageQueue& queue) const {
    const auto found = std::ranges::find_if(places_, [&](const Place& place) {
        return place.window && place.window->queue.get() == &queue;
    });
    return found != places_.end() ? found->window->handle : nullptr;
}

std::size_t Desktop::WindowCount() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(places_, [](const Place& place) { return place.window != nullptr; }));
}

bool Desktop::HasWindowOf(const WindowClass& windowClass) const {
    return std::ranges::any_of(places_, [&](const Place& place) {
        return place.window && place.window->windowClass.get() == &windowClass;
    });
}

std::shared_ptr<const WindowClass> Desktop::FindClass(HINSTANCE instance, LPCSTR name) const {
    const auto named = [&](const WindowClass& windowClass) {
        if (IS_INTRESOURCE(name)) {
            return windowClass.atom == reinterpret_cast<std::uintptr_t>(name);
        }
        return lstrcmpiA(windowClass.name.c_str(), name) == 0;
    };
    std::shared_ptr<const WindowClass> found;
    for (const auto& windowClass : classes_) {
        if (!named(*windowClass)) {
            continue;
        }
        if (windowClass->record.hInstance == instance && !windowClass->ofSystem) {
            return windowClass;
        }
        if (windowClass->ofSystem || (windowClass->record.style & CS_GLOBALCLASS) != 0) {
            found = windowClass;
        }
    }
    return found;
}

ATOM Desktop::AddClass(const WNDCLASSEXA& record, bool ofSystem) {
    auto windowClass = std::make_shared<WindowClass>();
    windowClass->name = record.lpszClassName;
    windowClass->atom = nextAtom_++;
    windowClass->ofSystem = ofSystem;
    windowClass->record = record;
    classes_.push_back(windowClass);
    return windowClass->atom;
}

void Desktop::RemoveClass(const WindowClass& windowClass) {
    std::erase_if(classes_, [&](const auto& other) { return other.get() == &windowClass; });
}

}  // namespace quennet::user
