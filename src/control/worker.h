#pragma once
// Worker threads: started and never joined.

#include "host/types.h"

namespace quennet {

/// Starts a thread with a stack of default size. False when it could not be started.
inline bool StartWorker(LPTHREAD_START_ROUTINE entry, void* argument) {
    DWORD id = 0;
    HANDLE thread = CreateThread(nullptr, 0, entry, argument, 0, &id);
    if (thread == nullptr) {
        return false;
    }
    CloseHandle(thread);
    return true;
}

}  // namespace quennet
