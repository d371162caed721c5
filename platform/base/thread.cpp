// Threads and what belongs to one: its last error, its number, its handle. And the lock.

#include <errno.h>
#include <limits.h>
#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <new>

#include "base/before_wait.h"
#include "winbase.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

/// One thread, as its handle and the thread itself see it.
struct Thread {
    std::mutex lock;
    std::condition_variable changed;
    LPTHREAD_START_ROUTINE start = nullptr;
    LPVOID parameter = nullptr;
    DWORD id = 0;  // 0 until the thread has begun
    bool ended = false;
    DWORD exitCode = STILL_ACTIVE;
};
using ThreadPointer = std::shared_ptr<Thread>;

/// The open handles. They are numbers, so that a closed one is recognised.
class HandleTable {
  public:
    HANDLE Add(ThreadPointer thread) {
        const std::lock_guard guard(lock_);
        lastNumber_ += 4;
        open_.emplace(lastNumber_, std::move(thread));
        return reinterpret_cast<HANDLE>(lastNumber_);
    }

    /// Null, with the last error set, for what is no open handle.
    ThreadPointer Find(HANDLE handle) {
        const std::lock_guard guard(lock_);
        const auto found = open_.find(reinterpret_cast<uintptr_t>(handle));
        if (found == open_.end()) {
            SetLastError(ERROR_INVALID_HANDLE);
            return nullptr;
        }
        return found->second;
    }

    bool Remove(HANDLE handle) {
        const std::lock_guard guard(lock_);
        return open_.erase(reinterpret_cast<uintptr_t>(handle)) != 0;
    }

  private:
    std::mutex lock_;
    std::map<uintptr_t, ThreadPointer> open_;
    uintptr_t lastNumber_ = 0;
};

/// Never destroyed: a thread may outlive main.
HandleTable& Handles() {
    static auto& table = *new HandleTable;
    return table;
}

void* RunThread(void* argument) {
    const std::unique_ptr<ThreadPointer> owner(static_cast<ThreadPointer*>(argument));
    Thread& thread = **owner;
    {
        const std::lock_guard guard(thread.lock);
        thread.id = GetCurrentThreadId();
    }
    thread.changed.notify_all();
    const DWORD exitCode = thread.start(thread.parameter);
    {
        const std::lock_guard guard(thread.lock);
        thread.exitCode = exitCode;
        thread.ended = true;
    }
    thread.changed.notify_all();
    return nullptr;
}

bool StartDetached(ThreadPointer* argument, SIZE_T stackSize) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
    if (stackSize != 0) {
        const auto smallest = static_cast<SIZE_T>(PTHREAD_STACK_MIN);
        pthread_attr_setstacksize(&attributes, std::max(stackSize, smallest));
    }
    pthread_t thread{};
    const int error = pthread_create(&thread, &attributes, RunThread, argument);
    pthread_attr_destroy(&attributes);
    return error == 0;
}

DWORD WaitForBegin(Thread* thread) {
    std::unique_lock guard(thread->lock);
    thread->changed.wait(guard, [&] { return thread->id != 0; });
    return thread->id;
}

}  // namespace

DWORD WINAPI GetLastError() {
    return lastError;
}

void WINAPI SetLastError(DWORD error) {
    lastError = error;
}

DWORD WINAPI GetCurrentThreadId() {
    static thread_local const auto id = static_cast<DWORD>(syscall(SYS_gettid));
    return id;
}

DWORD WINAPI GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

void WINAPI Sleep(DWORD milliseconds) {
    quennet::BeforeWait();
    if (milliseconds == 0) {
        sched_yield();
        return;
    }
    timespec rest{static_cast<time_t>(milliseconds / 1000),
                  static_cast<long>(milliseconds % 1000) * 1'000'000};
    while (nanosleep(&rest, &rest) != 0 || milliseconds == INFINITE) {
    }
}

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T stackSize, LPTHREAD_START_ROUTINE start,
                           LPVOID parameter, DWORD flags, LPDWORD id) {
    if (start == nullptr || flags != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    try {
        const auto thread = std::make_shared<Thread>();
        thread->start = start;
        thread->parameter = parameter;
        const HANDLE handle = Handles().Add(thread);
        auto argument = std::make_unique<ThreadPointer>(thread);
        if (StartDetached(argument.get(), stackSize)) {
            static_cast<void>(argument.release());  // the thread deletes it
            if (id != nullptr) {
                *id = WaitForBegin(thread.get());
            }
            return handle;
        }
        Handles().Remove(handle);
    } catch (const std::bad_alloc&) {
    }
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

BOOL WINAPI CloseHandle(HANDLE object) {
    if (!Handles().Remove(object)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}

DWORD WINAPI WaitForSingleObject(HANDLE object, DWORD milliseconds) {
    const ThreadPointer thread = Handles().Find(object);
    if (thread == nullptr) {
        return WAIT_FAILED;
    }
    quennet::BeforeWait();
    std::unique_lock guard(thread->lock);
    const auto ended = [&] { return thread->ended; };
    if (milliseconds == INFINITE) {
        thread->changed.wait(guard, ended);
        return WAIT_OBJECT_0;
    }
    const std::chrono::milliseconds limit(milliseconds);
    return thread->changed.wait_for(guard, limit, ended) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

BOOL WINAPI GetExitCodeThread(HANDLE object, LPDWORD exitCode) {
    const ThreadPointer thread = Handles().Find(object);
    if (thread == nullptr) {
        return FALSE;
    }
    const std::lock_guard guard(thread->lock);
    *exitCode = thread->exitCode;
    return TRUE;
}

void WINAPI InitializeCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

void WINAPI DeleteCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_destroy(&section->mutex);
}

void WINAPI EnterCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_lock(&section->mutex);
}

void WINAPI LeaveCriticalSection(LPCRITICAL_SECTION section) {
    pthread_mutex_unlock(&section->mutex);
}
