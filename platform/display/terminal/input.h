#pragma once
// What a person types and clicks, and the messages that become of it.

#include "windows.h"

#include <string>

namespace quennet::terminal {

struct InputEvent {
    enum class Kind { key, text, alternateText, click, doubleClick, wheel, close };

    Kind kind = Kind::key;
    WPARAM key = 0;  // VK_..., or a capital letter with control
    bool shift = false;
    bool control = false;
    bool alternate = false;
    std::string text;       // UTF-8
    HWND window = nullptr;  // top window under the mouse
    int x = 0;              // cell of its picture
    int y = 0;
    int turn = 0;  // of the wheel, 1 away from the person

    bool OfMouse() const {
        return kind == Kind::click || kind == Kind::doubleClick || kind == Kind::wheel;
    }
};

/// Posts the messages of an event to the windows of the calling thread. `top` is the window in
/// front, `lastFocus` its control that had the focus when it last was. False when nothing came of
/// the event.
bool Deliver(const InputEvent& event, HWND top, HWND lastFocus);

}  // namespace quennet::terminal
