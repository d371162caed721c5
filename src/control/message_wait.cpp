#include "control/message_wait.h"

namespace quennet {

MessageWait::~MessageWait() {
    if (quits_) {
        PostQuitMessage(static_cast<int>(quitCode_));
    }
}

void MessageWait::Pause(u32 milliseconds) {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_QUIT) {
            quits_ = true;
            quitCode_ = message.wParam;
            continue;
        }
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    Sleep(milliseconds);
}

}  // namespace quennet
