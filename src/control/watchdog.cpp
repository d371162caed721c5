#include "control/watchdog.h"

#include "host/services.h"

namespace quennet {

namespace {

constexpr char className[] = "ftp";
constexpr UINT_PTR timerId = 1;

HostWord* HolderOf(HWND window) {
    return reinterpret_cast<HostWord*>(GetWindowLongPtrA(window, GWLP_USERDATA));
}

/// Runs inside the lock, so that a connection that ends waits for it, or has taken its holder out
/// of the window's word before.
void TimeOut(HWND window) {
    const ListLock lock;
    HostWord* holder = HolderOf(window);
    FtpHandle* handle = holder != nullptr ? HandleInHolder(holder) : nullptr;
    if (handle == nullptr) {
        return;
    }
    auto* session = PointerFromWord<Session>(handle->session);
    DisarmWatchdog(session);
    session->abortFlag.Store(1);
    if (WSAIsBlocking()) {
        WSACancelBlockingCall();
    }
}

LRESULT CALLBACK WatchdogProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message == WM_CREATE) {
        const auto* creation = reinterpret_cast<const CREATESTRUCTA*>(lParam);
        SetWindowLongPtrA(window, GWLP_USERDATA,
                          reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
    } else if (message == WM_TIMER) {
        TimeOut(window);
    }
    return DefWindowProcA(window, message, wParam, lParam);
}

bool RegisterWatchdogClass(HINSTANCE instance) {
    WNDCLASSEXA windowClass{};
    windowClass.cbSize = sizeof windowClass;
    if (GetClassInfoExA(instance, className, &windowClass)) {
        return true;
    }
    windowClass = WNDCLASSEXA{};
    windowClass.cbSize = sizeof windowClass;
    windowClass.lpfnWndProc = WatchdogProc;
    windowClass.cbWndExtra = 4;
    windowClass.hInstance = instance;
    windowClass.lpszClassName = className;
    // Another thread may have been first.
    return RegisterClassExA(&windowClass) != 0 ||
           GetClassInfoExA(instance, className, &windowClass);
}

}  // namespace

WindowNumber CreateWatchdogWindow(HINSTANCE instance, WindowNumber parent, HostWord* holder) {
    if (!RegisterWatchdogClass(instance)) {
        return 0;
    }
    return NumberFromWindow(CreateWindowExA(0, className, "", WS_CHILD, 0, 0, 0, 0,
                                            WindowFromNumber(parent), nullptr, instance, holder));
}

void LetGoOfWatchdogWindow(Session* session) {
    if (session == nullptr || session->watchdogWindow == 0) {
        return;
    }
    DisarmWatchdog(session);
    HWND window = WindowFromNumber(session->watchdogWindow);
    {
        const ListLock lock;
        SetWindowLongPtrA(window, GWLP_USERDATA, 0);
    }
    PostMessageA(window, WM_CLOSE, 0, 0);
    session->watchdogWindow = 0;
}

void ArmWatchdog(Session* session) {
    if (session != nullptr && session->watchdogWindow != 0 && session->timeoutSeconds != 0) {
        SetTimer(WindowFromNumber(session->watchdogWindow), timerId, session->timeoutSeconds * 1000,
                 nullptr);
    }
}

void DisarmWatchdog(Session* session) {
    if (session != nullptr && session->watchdogWindow != 0) {
        // A timer that has fired is gone, and to stop it again an error of its own.
        const int error = WSAGetLastError();
        KillTimer(WindowFromNumber(session->watchdogWindow), timerId);
        WSASetLastError(error);
    }
}

FtpHandle* HandleInHolder(HostWord* holder) {
    return PointerFromWord<FtpHandle>(std::atomic_ref<HostWord>(*holder).load());
}

FtpHandle* ExchangeHolder(HostWord* holder, FtpHandle* handle) {
    return PointerFromWord<FtpHandle>(
        std::atomic_ref<HostWord>(*holder).exchange(WordFromPointer(handle)));
}

}  // namespace quennet
