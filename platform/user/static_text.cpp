// The static control: a text, broken into lines where it is too long for one.

#include "quennet_canvas.h"
#include "user/controls.h"

namespace quennet::user {

namespace {

int StartOf(DWORD style, int room, int columns) {
    switch (style & SS_TYPEMASK) {
        case SS_CENTER:
            return (room - columns) / 2;
        case SS_RIGHT:
            return room - columns;
        default:
            return 0;
    }
}

void Draw(HWND window, Canvas& canvas) {
    const DWORD style = StyleOf(window);
    const bool hasMarks = (style & SS_NOPREFIX) == 0;
    const Ink ink = (style & WS_DISABLED) != 0 ? Ink::disabled : Ink::window;
    int row = 0;
    for (const std::string& line : WrapText(TextOf(window), canvas.Width())) {
        const int columns = ColumnsOf(hasMarks ? WithoutMarks(line) : line);
        const int start = StartOf(style, canvas.Width(), columns);
        if (hasMarks) {
            canvas.MarkedText(start, row, line, ink, Ink::mark);
        } else {
            canvas.Text(start, row, line, ink);
        }
        ++row;
    }
}

}  // namespace

}  // namespace quennet::user

using namespace quennet::user;

extern "C" LRESULT CALLBACK quennet::user::StaticProcedure(HWND window, UINT message, WPARAM wParam,
                                                           LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_STATIC;
        case QUENNET_DRAW:
            if (wParam == 0) {
                Draw(window, *reinterpret_cast<quennet::Canvas*>(lParam));
            }
            return 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}
