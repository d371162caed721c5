// The button control: push buttons, check boxes of two and three states, and the group box.

#include "quennet_canvas.h"
#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"

#include <algorithm>

namespace quennet::user {

namespace {

struct ButtonState : ControlState {
    WPARAM check = BST_UNCHECKED;
    bool pressed = false;  // by mouse or space bar
};

struct ButtonKind {
    WPARAM highestCheck;
    bool changesItself;
    LRESULT dialogCode;
};

constexpr ButtonKind pushButton = {0, false, DLGC_BUTTON | DLGC_UNDEFPUSHBUTTON};

ButtonKind KindOf(HWND window) {
    switch (StyleOf(window) & BS_TYPEMASK) {
        case BS_DEFPUSHBUTTON:
            return {0, false, DLGC_BUTTON | DLGC_DEFPUSHBUTTON};
        case BS_CHECKBOX:
            return {BST_CHECKED, false, DLGC_BUTTON};
        case BS_AUTOCHECKBOX:
            return {BST_CHECKED, true, DLGC_BUTTON};
        case BS_3STATE:
            return {BST_INDETERMINATE, false, DLGC_BUTTON};
        case BS_AUTO3STATE:
            return {BST_INDETERMINATE, true, DLGC_BUTTON};
        case BS_GROUPBOX:
            return {0, false, DLGC_STATIC};
        default:
            return pushButton;
    }
}

void SetCheck(HWND window, ButtonState& button, WPARAM check) {
    const WPARAM next = std::min(check, KindOf(window).highestCheck);
    if (next != button.check) {
        button.check = next;
        TellChanged(window);
    }
}

void Click(HWND window, ButtonState& button) {
    if ((KindOf(window).dialogCode & DLGC_STATIC) != 0 || !IsWindowEnabled(window)) {
        return;
    }
    if (KindOf(window).changesItself) {
        const bool isLast = button.check >= KindOf(window).highestCheck;
        SetCheck(window, button, isLast ? BST_UNCHECKED : button.check + 1);
    }
    NotifyParent(window, BN_CLICKED);
}

void Release(HWND window, ButtonState& button) {
    if (button.pressed) {
        button.pressed = false;
        Click(window, button);
    }
}

bool IsPushButton(HWND window) {
    constexpr LRESULT pushButtonCodes = DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON;
    return (SendMessageA(window, WM_GETDLGCODE, 0, 0) & pushButtonCodes) != 0;
}

/// Enter presses this one: it has the focus, or it is the default one and no other button has.
bool TakesEnter(HWND window, bool focused) {
    return focused ||
           ((KindOf(window).dialogCode & DLGC_DEFPUSHBUTTON) != 0 && !IsPushButton(GetFocus()));
}

Ink InkOf(HWND window, bool focused, Ink usual) {
    if (!IsWindowEnabled(window)) {
        return Ink::disabled;
    }
    return focused ? Ink::buttonFocus : usual;
}

void DrawPushButton(HWND window, Canvas& canvas) {
    const Ink ink = InkOf(window, canvas.Focused(), Ink::button);
    const std::string text = TextOf(window);
    const int columns = ColumnsOf(WithoutMarks(text));
    // In a narrow one the text comes first.
    const bool roomy = columns + 4 <= canvas.Width() || canvas.Width() > 6;
    const bool enter = roomy && TakesEnter(window, canvas.Focused());
    const int margin = roomy ? 2 : 1;
    const int end = canvas.Width() - margin;
    const int start = std::max(margin, (canvas.Width() - columns) / 2);
    canvas.Fill({0, 0, canvas.Width(), 1}, U' ', ink);
    canvas.Text(0, 0, enter ? "[<" : "[", ink);
    canvas.Text(canvas.Width() - (enter ? 2 : 1), 0, enter ? ">]" : "]", ink);
    canvas.MarkedText(start, 0, text, ink, ink == Ink::button ? Ink::mark : ink, end);
    canvas.Caret(start, 0);
}

void DrawCheckBox(HWND window, const ButtonState& button, Canvas& canvas) {
    const Ink ink = InkOf(window, canvas.Focused(), Ink::window);
    constexpr const char* marks[] = {"[ ] ", "[x] ", "[-] "};  // by state
    canvas.Text(0, 0, marks[button.check], ink);
    canvas.MarkedText(4, 0, TextOf(window), ink, ink == Ink::window ? Ink::mark : ink,
                      canvas.Width());
    canvas.Caret(1, 0);
}

void DrawGroupBox(HWND window, Canvas& canvas) {
    canvas.Frame({0, 0, canvas.Width(), canvas.Height()}, Ink::frame);
    const std::string text = TextOf(window);
    if (!text.empty()) {
        canvas.MarkedText(2, 0, " " + text + " ", Ink::window, Ink::mark, canvas.Width() - 1);
    }
}

void Draw(HWND window, const ButtonState& button, Canvas& canvas) {
    switch (StyleOf(window) & BS_TYPEMASK) {
        case BS_CHECKBOX:
        case BS_AUTOCHECKBOX:
        case BS_3STATE:
        case BS_AUTO3STATE:
            return DrawCheckBox(window, button, canvas);
        case BS_GROUPBOX:
            return DrawGroupBox(window, canvas);
        default:
            return DrawPushButton(window, canvas);
    }
}

LRESULT Handle(HWND window, ButtonState& button, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return KindOf(window).dialogCode;
        case QUENNET_DRAW:
            if (wParam == 0) {
                Draw(window, button, *reinterpret_cast<Canvas*>(lParam));
            }
            return 0;
        case BM_GETCHECK:
            return static_cast<LRESULT>(button.check);
        case BM_SETCHECK:
            SetCheck(window, button, wParam);
            return 0;
        case BM_CLICK:
            SetFocus(window);
            Click(window, button);
            return 0;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            SetFocus(window);
            button.pressed = true;
            return 0;
        case WM_LBUTTONUP:
            Release(window, button);
            return 0;
        case WM_KEYDOWN:
            button.pressed = wParam == VK_SPACE;
            return 0;
        case WM_KEYUP:
            if (wParam == VK_SPACE) {
                Release(window, button);
            }
            return 0;
        case WM_KILLFOCUS:
            button.pressed = false;
            return 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

}  // namespace

extern "C" LRESULT CALLBACK ButtonProcedure(HWND window, UINT message, WPARAM wParam,
                                            LPARAM lParam) {
    if (message == WM_NCCREATE) {
        SetState(window, std::make_shared<ButtonState>());
    }
    const auto button = StateOf<ButtonState>(window);
    return button ? Handle(window, *button, message, wParam, lParam)
                  : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace quennet::user
