// The tool bar: a row of buttons at the upper edge of its parent. A display in characters has no
// pictures for them, so a button shows the text of its tool tip, cut where the row is too short.

#include "commctrl.h"
#include "quennet_canvas.h"
#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"

#include <string.h>

#include <algorithm>

namespace quennet::user {

namespace {

constexpr LONG toolBarHeight = characterHeight;
constexpr int shortestLabel = 1;

struct ToolButton {
    TBBUTTON record;
    std::string label;  // empty until the parent has told it

    bool IsSeparator() const { return (record.fsStyle & TBSTYLE_SEP) != 0; }
    bool IsHidden() const { return (record.fsState & TBSTATE_HIDDEN) != 0; }
    bool IsEnabled() const { return (record.fsState & TBSTATE_ENABLED) != 0; }
};

struct ToolBarState : ControlState {
    std::vector<ToolButton> buttons;
    WPARAM recordSize = 0;  // as the program said
    int pressed = -1;

    ToolButton* At(WPARAM index) { return index < buttons.size() ? &buttons[index] : nullptr; }
    LRESULT IndexOf(WPARAM command) const {
        const auto found = std::ranges::find_if(buttons, [&](const ToolButton& button) {
            return !button.IsSeparator() && button.record.idCommand == static_cast<INT>(command);
        });
        return found == buttons.end() ? -1 : found - buttons.begin();
    }
    ToolButton* Find(WPARAM command) { return At(static_cast<WPARAM>(IndexOf(command))); }
};

// ---- Look -------------------------------------------------------------------------------------

/// What the parent calls the command, empty when it has no name for it. The toolbar may be gone
/// behind it.
std::string AskTip(HWND window, INT command) {
    NMTTDISPINFOA request = {};
    request.hdr = {window, static_cast<UINT_PTR>(command), TTN_GETDISPINFOA};
    request.lpszText = request.szText;
    SendMessageA(GetParent(window), WM_NOTIFY, static_cast<WPARAM>(command),
                 reinterpret_cast<LPARAM>(&request));
    if (request.lpszText != request.szText) {
        return IS_INTRESOURCE(request.lpszText) ? "" : request.lpszText;
    }
    return {request.szText, strnlen(request.szText, sizeof(request.szText))};
}

void AskLabels(HWND window, ToolBarState& bar) {
    for (std::size_t place = 0; place < bar.buttons.size(); ++place) {
        if (!bar.buttons[place].IsSeparator() && bar.buttons[place].label.empty()) {
            std::string label = AskTip(window, bar.buttons[place].record.idCommand);
            if (place < bar.buttons.size()) {
                bar.buttons[place].label = WithoutMarks(label);
            }
        }
    }
}

/// Columns of a button when labels have at most so many: brackets around the label, or a line, with
/// a space behind it.
int ColumnsWith(const ToolButton& button, int longest) {
    if (button.IsHidden()) {
        return 0;
    }
    return button.IsSeparator() ? 2
                                : std::clamp(ColumnsOf(button.label), shortestLabel, longest) + 3;
}

std::vector<Area> AreasOf(HWND window, const ToolBarState& bar) {
    RECT place = {};
    GetWindowRect(window, &place);
    const int room = static_cast<int>(place.right - place.left) / cellWidth;
    const auto total = [&](int longest) {
        int columns = 0;
        for (const ToolButton& button : bar.buttons) {
            columns += ColumnsWith(button, longest);
        }
        return columns;
    };
    int longest = static_cast<int>(sizeof(NMTTDISPINFOA::szText));
    while (longest > shortestLabel && total(longest) > room) {
        --longest;
    }
    std::vector<Area> areas;
    int left = 0;
    for (const ToolButton& button : bar.buttons) {
        const int columns = ColumnsWith(button, longest);
        areas.push_back({left, 0, std::max(0, columns - 1), 1});
        left += columns;
    }
    return areas;
}

Ink InkOf(const ToolButton& button, bool enabled, bool pressed) {
    if (!enabled || !button.IsEnabled()) {
        return Ink::disabled;
    }
    const bool down = (button.record.fsState & (TBSTATE_CHECKED | TBSTATE_PRESSED)) != 0;
    return down || pressed ? Ink::buttonFocus : Ink::button;
}

void Draw(HWND window, ToolBarState& bar, Canvas& canvas) {
    AskLabels(window, bar);
    const std::vector<Area> areas = AreasOf(window, bar);
    const bool enabled = IsWindowEnabled(window);
    for (std::size_t place = 0; place < areas.size(); ++place) {
        const ToolButton& button = bar.buttons[place];
        const Area& area = areas[place];
        if (area.width == 0) {
            continue;
        }
        if (button.IsSeparator()) {
            canvas.Put(area.left, 0, U'│', Ink::frame);
            continue;
        }
        const Ink ink = InkOf(button, enabled, static_cast<int>(place) == bar.pressed);
        canvas.Fill(area, U' ', ink);
        canvas.Put(area.left, 0, U'[', ink);
        canvas.Text(area.left + 1, 0, button.label, ink, area.Right() - 1);
        canvas.Put(area.Right() - 1, 0, U']', ink);
    }
}

// ---- Buttons ----------------------------------------------------------------------------------

BOOL Insert(HWND window, ToolBarState& bar, WPARAM index, const TBBUTTON* records,
            std::size_t count) {
    if (!records || (bar.recordSize != 0 && bar.recordSize != sizeof(TBBUTTON))) {
        return FALSE;
    }
    auto place = bar.buttons.begin() +
                 static_cast<std::ptrdiff_t>(std::min<WPARAM>(index, bar.buttons.size()));
    for (std::size_t added = 0; added < count; ++added) {
        place = bar.buttons.insert(place, {records[added], ""}) + 1;
    }
    TellChanged(window);
    return TRUE;
}

/// The messages that set or ask a bit of a button's state.
struct StateMessage {
    UINT message;
    BYTE bit;
    bool asks;
};
constexpr StateMessage stateMessages[] = {
    {TB_ENABLEBUTTON, TBSTATE_ENABLED, false},   {TB_CHECKBUTTON, TBSTATE_CHECKED, false},
    {TB_HIDEBUTTON, TBSTATE_HIDDEN, false},      {TB_ISBUTTONENABLED, TBSTATE_ENABLED, true},
    {TB_ISBUTTONCHECKED, TBSTATE_CHECKED, true}, {TB_ISBUTTONHIDDEN, TBSTATE_HIDDEN, true},
};

LRESULT HandleState(HWND window, ToolButton* button, const StateMessage& message, bool set) {
    if (!button) {
        return message.asks ? -1 : FALSE;
    }
    BYTE& state = button->record.fsState;
    if (message.asks) {
        return (state & message.bit) != 0;
    }
    state = static_cast<BYTE>(set ? state | message.bit : state & ~message.bit);
    TellChanged(window);
    return TRUE;
}

LRESULT ButtonRect(HWND window, ToolBarState& bar, WPARAM index, RECT* area) {
    if (!bar.At(index) || bar.buttons[index].IsHidden()) {
        return FALSE;
    }
    const Area cells = AreasOf(window, bar)[index];
    *area = {cells.left * cellWidth, 0, cells.Right() * cellWidth, toolBarHeight};
    return TRUE;
}

LRESULT HandleButtons(HWND window, ToolBarState& bar, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* known = std::ranges::find(stateMessages, message, &StateMessage::message);
    if (known != std::end(stateMessages)) {
        return HandleState(window, bar.Find(wParam), *known, LOWORD(lParam) != 0);
    }
    const auto records = reinterpret_cast<TBBUTTON*>(lParam);
    switch (message) {
        case TB_BUTTONSTRUCTSIZE:
            bar.recordSize = wParam;
            return 0;
        case TB_ADDBUTTONSA:
            return Insert(window, bar, bar.buttons.size(), records, wParam);
        case TB_INSERTBUTTONA:
            return Insert(window, bar, wParam, records, 1);
        case TB_DELETEBUTTON:
            if (!bar.At(wParam)) {
                return FALSE;
            }
            bar.buttons.erase(bar.buttons.begin() + static_cast<std::ptrdiff_t>(wParam));
            bar.pressed = -1;
            TellChanged(window);
            return TRUE;
        case TB_GETBUTTON:
            if (bar.At(wParam)) {
                *records = bar.At(wParam)->record;
            }
            return bar.At(wParam) != nullptr;
        case TB_BUTTONCOUNT:
            return static_cast<LRESULT>(bar.buttons.size());
        case TB_COMMANDTOINDEX:
            return bar.IndexOf(wParam);
        case TB_GETSTATE:
            return bar.Find(wParam) ? bar.Find(wParam)->record.fsState : -1;
        case TB_SETSTATE:
            if (ToolButton* button = bar.Find(wParam)) {
                button->record.fsState = static_cast<BYTE>(lParam);
                TellChanged(window);
                return TRUE;
            }
            return FALSE;
        case TB_GETITEMRECT:
            return ButtonRect(window, bar, wParam, reinterpret_cast<RECT*>(lParam));
        case TB_GETBUTTONSIZE:
            return MAKELONG(toolBarHeight, toolBarHeight);
        case TB_SETBUTTONSIZE:
        case TB_SETBITMAPSIZE:
            return TRUE;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

// ---- The mouse and the place ------------------------------------------------------------------

/// The button that can be pressed there, -1 for none.
int ButtonAt(HWND window, const ToolBarState& bar, LPARAM point) {
    const int x = static_cast<SHORT>(LOWORD(point));
    const int y = static_cast<SHORT>(HIWORD(point));
    if (x < 0 || y < 0) {
        return -1;
    }
    const std::vector<Area> areas = AreasOf(window, bar);
    for (std::size_t place = 0; place < areas.size(); ++place) {
        const ToolButton& button = bar.buttons[place];
        if (areas[place].Contains(x / cellWidth, y / cellHeight) && button.IsEnabled() &&
            !button.IsSeparator()) {
            return static_cast<int>(place);
        }
    }
    return -1;
}

void Press(HWND window, ToolBarState& bar, LPARAM point) {
    bar.pressed = ButtonAt(window, bar, point);
    SetCapture(window);
    TellChanged(window);
}

void Release(HWND window, ToolBarState& bar, LPARAM point) {
    const int pressed = std::exchange(bar.pressed, -1);
    if (GetCapture() == window) {
        ReleaseCapture();
    }
    TellChanged(window);
    if (pressed == -1 || pressed != ButtonAt(window, bar, point)) {
        return;
    }
    TBBUTTON& record = bar.buttons[static_cast<std::size_t>(pressed)].record;
    if ((record.fsStyle & TBSTYLE_CHECK) != 0) {
        record.fsState = static_cast<BYTE>(record.fsState ^ TBSTATE_CHECKED);
    }
    SendMessageA(GetParent(window), WM_COMMAND, MAKEWPARAM(record.idCommand, BN_CLICKED),
                 reinterpret_cast<LPARAM>(window));
}

/// At the parent's upper edge, as wide as it.
void Align(HWND window) {
    const DWORD style = StyleOf(window);
    RECT around = {};
    if ((style & (CCS_NORESIZE | CCS_NOPARENTALIGN)) == 0 &&
        GetWindowRect(GetParent(window), &around)) {
        MoveWindow(window, 0, 0, around.right - around.left, toolBarHeight, TRUE);
    }
}

LRESULT Handle(HWND window, ToolBarState& bar, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_CREATE:
        case WM_SIZE:
        case TB_AUTOSIZE:
            Align(window);
            return 0;
        case QUENNET_DRAW:
            if (wParam == 0) {
                Draw(window, bar, *reinterpret_cast<Canvas*>(lParam));
            }
            return 0;
        case WM_LBUTTONDOWN:
        case WM_LBUTTONDBLCLK:
            Press(window, bar, lParam);
            return 0;
        case WM_LBUTTONUP:
            Release(window, bar, lParam);
            return 0;
        default:
            return HandleButtons(window, bar, message, wParam, lParam);
    }
}

}  // namespace

}  // namespace quennet::user

using namespace quennet::user;

extern "C" LRESULT CALLBACK quennet::user::ToolBarProcedure(HWND window, UINT message,
                                                            WPARAM wParam, LPARAM lParam) {
    if (message == WM_NCCREATE) {
        SetState(window, std::make_shared<ToolBarState>());
    }
    const auto bar = StateOf<ToolBarState>(window);
    return bar ? Handle(window, *bar, message, wParam, lParam)
               : DefWindowProcA(window, message, wParam, lParam);
}
