// The status bar: one row of parts at the lower edge of its parent.

#include "commctrl.h"
#include "quennet_canvas.h"
#include "user/controls.h"
#include "user/desktop.h"
#include "user/display_calls.h"

#include <algorithm>

namespace quennet::user {

namespace {

constexpr std::size_t partsAtMost = 256;
constexpr WPARAM partMask = 0x00FF;

struct StatusPart {
    INT right = -1;  // pixels; -1 is the bar's end
    WPARAM type = 0;
    std::string text;
    HICON icon = nullptr;
};

struct StatusBarState : ControlState {
    std::vector<StatusPart> parts = std::vector<StatusPart>(1);

    StatusPart* At(WPARAM part) { return part < parts.size() ? &parts[part] : nullptr; }
};

LRESULT SetParts(HWND window, StatusBarState& bar, WPARAM count, const INT* rights) {
    if (count == 0 || count > partsAtMost || !rights) {
        return FALSE;
    }
    bar.parts.resize(count);
    for (std::size_t part = 0; part < count; ++part) {
        bar.parts[part].right = rights[part];
    }
    TellChanged(window);
    return TRUE;
}

LRESULT GetParts(const StatusBarState& bar, WPARAM room, INT* rights) {
    for (std::size_t part = 0; rights && part < std::min<std::size_t>(room, bar.parts.size());
         ++part) {
        rights[part] = bar.parts[part].right;
    }
    return static_cast<LRESULT>(bar.parts.size());
}

LRESULT SetText(HWND window, StatusBarState& bar, WPARAM wParam, const char* text) {
    StatusPart* part = bar.At(wParam & partMask);
    if (!part) {
        return FALSE;
    }
    part->text = text ? text : "";
    part->type = wParam & ~partMask & 0xFFFF;
    TellChanged(window);
    return TRUE;
}

/// The length below, the type above.
LRESULT LengthOf(const StatusPart* part) {
    return part ? MAKELONG(part->text.size(), part->type) : 0;
}

/// There is no room that the caller names: it asked for the length before.
LRESULT GetText(const StatusPart* part, char* buffer) {
    if (part && buffer) {
        CopyText(part->text.data(), part->text.size(), buffer, part->text.size() + 1);
    }
    return LengthOf(part);
}

LRESULT SetIcon(HWND window, StatusBarState& bar, WPARAM index, HICON icon) {
    StatusPart* part = bar.At(index);
    if (!part) {
        return FALSE;
    }
    part->icon = icon;
    TellChanged(window);
    return TRUE;
}

LRESULT RectOf(HWND window, const StatusBarState& bar, WPARAM index, RECT* area) {
    if (index >= bar.parts.size() || !area || !GetClientRect(window, area)) {
        return FALSE;
    }
    area->left = index == 0 ? 0 : bar.parts[index - 1].right;
    if (bar.parts[index].right >= 0) {
        area->right = bar.parts[index].right;
    }
    return TRUE;
}

/// At the lower edge of the parent, unless its style keeps it where it is.
void PutAtEdge(HWND window) {
    RECT around = {};
    if ((StyleOf(window) & CCS_NOPARENTALIGN) != 0 || !GetClientRect(GetParent(window), &around)) {
        return;
    }
    MoveWindow(window, 0, around.bottom - characterHeight, around.right, characterHeight, TRUE);
}

/// A text behind one tab stands in the middle, behind two at the right end.
void DrawPart(const StatusPart& part, Canvas canvas) {
    std::string_view text = part.text;
    const std::size_t tabs =
        std::min<std::size_t>(2, std::min(text.find_first_not_of('\t'), text.size()));
    text.remove_prefix(tabs);
    const int mark = part.icon ? 1 : 0;
    const int room = canvas.Width() - ColumnsOf(text) - mark;
    const int start = static_cast<int>(tabs) * std::max(0, room) / 2;
    if (part.icon) {
        canvas.Put(start, 0, U'*', Ink::status);
    }
    canvas.Text(start + mark, 0, text, Ink::status, canvas.Width());
}

void Draw(const StatusBarState& bar, Canvas& canvas) {
    canvas.Fill({0, 0, canvas.Width(), canvas.Height()}, U' ', Ink::status);
    int left = 0;
    for (const StatusPart& part : bar.parts) {
        const bool toEnd = part.right < 0 || part.right / cellWidth >= canvas.Width();
        const int right = toEnd ? canvas.Width() : part.right / cellWidth;
        if (right > left) {
            DrawPart(part, canvas.Part({left, 0, right - left, 1}, false));
        }
        if (toEnd) {
            return;
        }
        canvas.Put(right, 0, U'│', Ink::status);
        left = right + 1;
    }
}

LRESULT Handle(HWND window, StatusBarState& bar, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_GETDLGCODE:
            return DLGC_STATIC;
        case WM_CREATE:
        case WM_SIZE:
            PutAtEdge(window);
            return 0;
        case QUENNET_DRAW:
            if (wParam == 0) {
                Draw(bar, *reinterpret_cast<Canvas*>(lParam));
            }
            return 0;
        case WM_SETTEXT:
            return SetText(window, bar, 0, reinterpret_cast<const char*>(lParam));
        case WM_GETTEXT:
            return CopyText(bar.parts[0].text.data(), bar.parts[0].text.size(),
                            reinterpret_cast<char*>(lParam), wParam);
        case WM_GETTEXTLENGTH:
            return static_cast<LRESULT>(bar.parts[0].text.size());
        case SB_SETTEXTA:
            return SetText(window, bar, wParam, reinterpret_cast<const char*>(lParam));
        case SB_GETTEXTA:
            return GetText(bar.At(wParam), reinterpret_cast<char*>(lParam));
        case SB_GETTEXTLENGTHA:
            return LengthOf(bar.At(wParam));
        case SB_SETPARTS:
            return SetParts(window, bar, wParam, reinterpret_cast<const INT*>(lParam));
        case SB_GETPARTS:
            return GetParts(bar, wParam, reinterpret_cast<INT*>(lParam));
        case SB_GETRECT:
            return RectOf(window, bar, wParam, reinterpret_cast<RECT*>(lParam));
        case SB_SETICON:
            return SetIcon(window, bar, wParam, reinterpret_cast<HICON>(lParam));
        case SB_GETICON:
            return bar.At(wParam) ? reinterpret_cast<LRESULT>(bar.At(wParam)->icon) : 0;
        default:
            return DefWindowProcA(window, message, wParam, lParam);
    }
}

}  // namespace

extern "C" LRESULT CALLBACK StatusBarProcedure(HWND window, UINT message, WPARAM wParam,
                                               LPARAM lParam) {
    if (message == WM_NCCREATE) {
        auto bar = std::make_shared<StatusBarState>();
        const char* text = reinterpret_cast<const CREATESTRUCTA*>(lParam)->lpszName;
        bar->parts[0].text = text ? text : "";
        SetState(window, std::move(bar));
        return TRUE;
    }
    const auto bar = StateOf<StatusBarState>(window);
    return bar ? Handle(window, *bar, message, wParam, lParam)
               : DefWindowProcA(window, message, wParam, lParam);
}

}  // namespace quennet::user

extern "C" {

HWND WINAPI CreateStatusWindowA(LONG style, LPCSTR text, HWND parent, UINT id) {
    return CreateWindowExA(0, STATUSCLASSNAMEA, text, static_cast<DWORD>(style), 0, 0, 0, 0, parent,
                           reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), nullptr, nullptr);
}
}
