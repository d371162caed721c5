#include "ping/ping_worker.h"

#include <winsock.h>

#include "control/sockets.h"
#include "ping/echo_packet.h"
#include "ping/library_echo.h"
#include "ping/ping_dialog.h"
#include "ping/raw_echo.h"

namespace quennet {

namespace {

/// Focus is moved by a message, since it is the dialog's thread that has it.
void ShowIdle(HWND window) {
    if (!IsWindow(window)) {
        return;
    }
    HWND start = GetDlgItem(window, pingStartButton);
    EnableWindow(start, TRUE);
    SendMessageA(window, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(start), TRUE);
    EnableWindow(GetDlgItem(window, pingStopButton), FALSE);
}

void PingFrom(HWND window, WindowNumber console, PingState* state) {
    constexpr u16 version = 0x0101;
    WSADATA data;
    const bool started = WSAStartup(version, &data) == 0;
    if (started) {
        PingHost(console, state);
    } else {
        ReportTextId(console, winsockFailedText);
    }
    ShowIdle(window);
    if (started) {
        WSACleanup();
    }
}

template <typename Engine>
void Run(Engine* engine, PingState* state) {
    if (!engine->Open(state->target)) {
        return;
    }
    FillEchoRequest(state->request, echoRequestSize);
    while (!state->stopRequests.IsSet() && engine->RunCycle(state)) {
    }
}

}  // namespace

DWORD WINAPI PingWorker(void* argument) {
    auto* state = static_cast<PingState*>(argument);
    HWND window = WindowFromNumber(state->window.Load());
    HWND list = IsWindow(window) ? GetDlgItem(window, pingConsole) : nullptr;
    if (list != nullptr) {
        PingFrom(window, NumberFromWindow(list), state);
    }
    state->running.Store(0);
    // From here on the record may be gone.
    return 0;
}

void PingHost(WindowNumber console, PingState* state) {
    RawEcho raw(console);
    if (raw.HasSocket()) {
        Run(&raw, state);
        return;
    }
    LibraryEcho library(console);
    Run(&library, state);
}

}  // namespace quennet
