// Where the display is plugged in. Without one the layer is headless: nothing is shown, and no
// input comes but what the program sends itself.

#include "quennet_platform.h"
#include "user/display_calls.h"

#include <atomic>

namespace quennet {

namespace {
std::atomic<Display*> currentDisplay = nullptr;
}

void SetDisplay(Display* display) {
    currentDisplay = display;
}

namespace user {

void TellCreated(HWND window) {
    if (Display* display = currentDisplay) {
        display->WindowCreated(window);
    }
}

void TellChanged(HWND window) {
    if (Display* display = currentDisplay; display && window) {
        display->WindowChanged(window);
    }
}

void TellDestroyed(HWND window) {
    if (Display* display = currentDisplay) {
        display->WindowDestroyed(window);
    }
}

void TellRaised(HWND window) {
    if (Display* display = currentDisplay) {
        display->WindowRaised(window);
    }
}

void RunDisplayInput() {
    if (Display* display = currentDisplay) {
        display->RunInput();
    }
}

}  // namespace user
}  // namespace quennet
