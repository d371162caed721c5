#include "hostkit/ping.h"

#include <cstdlib>

#include "hostkit/services.h"

namespace hostkit {

namespace {

// Controls of dialog 14310.
constexpr INT lineList = 14301;
constexpr INT targetBox = 14302;
constexpr INT startButton = 99;
constexpr INT stopButton = 7;

/// Nobody wakes the loop when a worker has gone.
constexpr std::chrono::milliseconds patience{10};

WNDPROC Replace(HWND control, WNDPROC procedure, void* owner) {
    SetWindowLongPtrA(control, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(owner));
    return reinterpret_cast<WNDPROC>(
        SetWindowLongPtrA(control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

}  // namespace

Ping::~Ping() {
    std::free(quennet::PointerFromWord<void>(state_));
}

void Ping::Run(const std::string& target, const TakeLine& take) {
    const auto begin = [&](HWND dialog) {
        if (stopped_) {
            PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
            return;
        }
        Overhear(dialog);
        Start(dialog, target);
    };
    take_ = &take;
    endCommand_ = stopButton;
    host_.Loop().Invoke([&] {
        // A dialog that nobody sees leaves no trace in the settings.
        const PrivateSettings settings(host_.Settings().PrivateCopy());
        Show(nullptr, begin);
    });
}

void Ping::RunAsked(HWND owner, const std::string& target) {
    const auto begin = [&](HWND dialog) {
        if (stopped_) {
            PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);
        } else if (!target.empty()) {
            Start(dialog, target);
        }
    };
    take_ = nullptr;
    endCommand_ = IDCANCEL;
    host_.Loop().Invoke([&] { Show(owner, begin); });
}

/// Shows the dialog, on the loop's thread, and waits until the last worker has gone; `begin` gets
/// the dialog when it stands.
void Ping::Show(HWND owner, const std::function<void(HWND dialog)>& begin) {
    {
        const auto& initDialog = host_.Options().initDialog;
        const DialogHook hook([&](HWND dialog) {
            if (take_ == nullptr && initDialog) {
                initDialog(dialog);
            }
            dialog_ = dialog;
            host_.Loop().Post([&begin, dialog] { begin(dialog); });
        });
        host_.Send(quennet::MessageNumber::ping, owner, host_.Instance(), &state_);
    }
    dialog_ = nullptr;
    while (!host_.Loop().WaitUntil([this] { return !IsRunning(); }, patience)) {
    }
}

bool Ping::IsRunning() const {
    const auto* state = quennet::PointerFromWord<const quennet::PingState>(state_);
    return state != nullptr && state->running.IsSet();
}

void Ping::Start(HWND dialog, const std::string& target) const {
    SetDlgItemTextA(dialog, targetBox, target.c_str());
    SendMessageA(dialog, WM_COMMAND, startButton, 0);
}

void Ping::Overhear(HWND dialog) {
    listProcedure_ = Replace(GetDlgItem(dialog, lineList), Procedure, this);
    startProcedure_ = Replace(GetDlgItem(dialog, startButton), Procedure, this);
}

LRESULT CALLBACK Ping::Procedure(HWND control, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* ping = reinterpret_cast<Ping*>(GetWindowLongPtrA(control, GWLP_USERDATA));
    const HWND dialog = GetParent(control);
    const bool isList = GetDlgCtrlID(control) == lineList;
    if (isList && message == LB_ADDSTRING) {
        // The line is not kept: a run may be long.
        if (!(*ping->take_)(reinterpret_cast<const char*>(lParam))) {
            SendMessageA(dialog, WM_COMMAND, stopButton, 0);
        }
        return 0;
    }
    if (!isList && message == WM_ENABLE && wParam != FALSE) {
        PostMessageA(dialog, WM_COMMAND, IDCANCEL, 0);  // the worker has come to its end
    }
    return CallWindowProcA(isList ? ping->listProcedure_ : ping->startProcedure_, control, message,
                           wParam, lParam);
}

void Ping::Stop() {
    stopped_ = true;
    if (const HWND dialog = dialog_) {
        PostMessageA(dialog, WM_COMMAND, endCommand_, 0);
    }
}

}  // namespace hostkit
