// Threads and what belongs to one: its last error, its number, its handle. And the lock.

#include <errno.h>
#include <limits.h>
#include <sched.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <mutex>
#include <new>
#include <set>

#include "base/before_wait.h"
#include "base/thread_handles.h"
#include "winbase.h"

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

/// What a new thread and its maker tell each other.
struct Beginning {
    LPTHREAD_START_ROUTINE start;
    LPVOID parameter;
    std::atomic<DWORD> id = 0;  // 0 until the thread has begun
};
using BeginningPointer = std::shared_ptr<Beginning>;

/// The open handles. They are numbers, so that a closed one is recognised.
class HandleTable {
  public:
    HANDLE Add() {
        const std::lock_guard guard(lock_);
        lastNumber_ += 4;
        open_.insert(lastNumber_);
        return reinterpret_cast<HANDLE>(lastNumber_);
    }

    std::size_t Count() {
        const std::lock_guard guard(lock_);
        return open_.size();
    }

    bool Remove(HANDLE handle) {
        const std::lock_guard guard(lock_);
        return open_.erase(reinterpret_cast<uintptr_t>(handle)) != 0;
    }

  private:
    std::mutex lock_;
    std::set<uintptr_t> open_;
    uintptr_t lastNumber_ = 0;
};

/// Never destroyed: a thread may outlive main.
HandleTable& Handles() {
    static auto& table = *new HandleTable;
    return table;
}

void* RunThread(void* argument) {
    const std::unique_ptr<BeginningPointer> owner(static_cast<BeginningPointer*>(argument));
    Beginning& beginning = **owner;
    beginning.id = GetCurrentThreadId();
    beginning.id.notify_all();
    beginning.start(beginning.parameter);
    return nullptr;
}

bool StartDetached(BeginningPointer* argument, SIZE_T stackSize) {
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

}  // namespace

std::size_t quennet::OpenThreadHandles() {
    return Handles().Count();
}

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
        const auto beginning = std::make_shared<Beginning>();
        beginning->start = start;
        beginning->parameter = parameter;
        const HANDLE handle = Handles().Add();
        auto argument = std::make_unique<BeginningPointer>(beginning);
        if (StartDetached(argument.get(), stackSize)) {
            static_cast<void>(argument.release());  // the thread deletes it
            if (id != nullptr) {
                beginning->id.wait(0);
                *id = beginning->id;
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
