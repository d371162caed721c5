#pragma once
// Worker threads: started and never joined.

#include "control/session.h"

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

/// The same for a thread that works on a session: it is one of the session's users from here on,
/// and takes itself off at its end.
inline bool StartWorkerOn(Session* session, LPTHREAD_START_ROUTINE entry, void* argument) {
    session->users.Add(1);
    const bool started = StartWorker(entry, argument);
    if (!started) {
        session->users.Subtract(1);
    }
    return started;
}

}  // namespace quennet
