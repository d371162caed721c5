#include "input.h"

#include "picture.h"

namespace quennet::terminal {

namespace {

/// The keyboard's state is the thread's, whatever window has the focus.
class KeysHeld {
  public:
    explicit KeysHeld(const InputEvent& event) : event_(event) { Post(WM_KEYDOWN); }
    ~KeysHeld() { Post(WM_KEYUP); }
    KeysHeld(const KeysHeld&) = delete;
    KeysHeld& operator=(const KeysHeld&) = delete;

  private:
    void Post(UINT message) const {
        const auto post = [&](bool held, WPARAM key) {
            if (held) {
                PostMessageA(nullptr, message, key, 1);
            }
        };
        post(event_.shift, VK_SHIFT);
        post(event_.control, VK_CONTROL);
        post(event_.alternate, VK_MENU);
    }

    const InputEvent& event_;
};

/// The focus comes back to the window in front, if it was elsewhere.
HWND FocusIn(HWND top, HWND lastFocus) {
    const auto inside = [&](HWND window) {
        return window && (window == top || IsChild(top, window));
    };
    if (!inside(GetFocus())) {
        SetFocus(inside(lastFocus) ? lastFocus : top);
    }
    return inside(GetFocus()) ? GetFocus() : top;
}

bool DeliverKey(const InputEvent& event, HWND focus) {
    const KeysHeld held(event);
    const bool ofSystem = event.alternate || event.key == VK_F10;
    PostMessageA(focus, ofSystem ? WM_SYSKEYDOWN : WM_KEYDOWN, event.key, 1);
    PostMessageA(focus, ofSystem ? WM_SYSKEYUP : WM_KEYUP, event.key, 1);
    return true;
}

bool DeliverText(const InputEvent& event, HWND focus) {
    const bool alternate = event.kind == InputEvent::Kind::alternateText;
    for (const char byte : event.text) {
        PostMessageA(focus, alternate ? WM_SYSCHAR : WM_CHAR, static_cast<unsigned char>(byte), 1);
    }
    return !event.text.empty();
}

/// Other windows take the second click for one like the first.
bool WantsDoubleClicks(HWND window) {
    char name[256] = "";
    GetClassNameA(window, name, sizeof(name));
    WNDCLASSEXA windowClass = {};
    windowClass.cbSize = sizeof(windowClass);
    const auto instance = reinterpret_cast<HINSTANCE>(GetWindowLongPtrA(window, GWLP_HINSTANCE));
    return GetClassInfoExA(instance, name, &windowClass) && (windowClass.style & CS_DBLCLKS) != 0;
}

bool DeliverMouse(const InputEvent& event) {
    const auto [window, point, onMenuBar] = TargetAt(event.window, event.x, event.y);
    if (!window) {
        return false;
    }
    if (onMenuBar) {
        return event.kind != InputEvent::Kind::wheel &&
               PostMessageA(window, WM_NCLBUTTONDOWN, HTMENU, point);
    }
    const WPARAM keys =
        MK_LBUTTON | (event.shift ? MK_SHIFT : 0U) | (event.control ? MK_CONTROL : 0U);
    switch (event.kind) {
        case InputEvent::Kind::wheel:
            PostMessageA(window, WM_MOUSEWHEEL,
                         MAKEWPARAM(0, static_cast<WORD>(event.turn * WHEEL_DELTA)), point);
            return true;
        case InputEvent::Kind::doubleClick:
            PostMessageA(window, WantsDoubleClicks(window) ? WM_LBUTTONDBLCLK : WM_LBUTTONDOWN,
                         keys, point);
            break;
        default:
            PostMessageA(window, WM_LBUTTONDOWN, keys, point);
            break;
    }
    PostMessageA(window, WM_LBUTTONUP, 0, point);
    return true;
}

}  // namespace

bool Deliver(const InputEvent& event, HWND top, HWND lastFocus) {
    if (event.OfMouse()) {
        return DeliverMouse(event);
    }
    if (event.kind == InputEvent::Kind::close) {
        return PostMessageA(top, WM_CLOSE, 0, 0);
    }
    const HWND focus = FocusIn(top, lastFocus);
    return event.kind == InputEvent::Kind::key ? DeliverKey(event, focus)
                                               : DeliverText(event, focus);
}

}  // namespace quennet::terminal
