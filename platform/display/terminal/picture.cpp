#include "picture.h"

#include <algorithm>

namespace quennet::terminal {

namespace {

/// Cells that the frame takes at each side.
struct FrameSize {
    int top = 0;    // with the menu bar
    int sides = 0;  // left, right and bottom
    bool hasTitle = false;
    bool hasMenu = false;
};

DWORD StyleOf(HWND window) {
    return static_cast<DWORD>(GetWindowLongA(window, GWL_STYLE));
}

FrameSize FrameOf(HWND top) {
    const DWORD style = StyleOf(top);
    const bool isPopup = (style & WS_POPUP) != 0;
    FrameSize frame;
    frame.hasTitle =
        isPopup ? (style & (WS_BORDER | WS_DLGFRAME)) != 0 : (style & WS_CAPTION) == WS_CAPTION;
    frame.hasMenu = HasMenuBar(top);
    frame.sides = isPopup && frame.hasTitle ? 1 : 0;
    frame.top = (frame.hasTitle ? 1 : 0) + (frame.hasMenu ? 1 : 0);
    return frame;
}

std::string TextOf(HWND window) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(window)) + 1, '\0');
    text.resize(static_cast<std::size_t>(
        GetWindowTextA(window, text.data(), static_cast<INT>(text.size()))));
    return text;
}

int CellsUp(LONG pixels, int cell) {
    return static_cast<int>(pixels + cell - 1) / cell;
}

Area Moved(Area area, int x, int y) {
    area.left += x;
    area.top += y;
    return area;
}

Area Union(const Area& one, const Area& other) {
    const int left = std::min(one.left, other.left);
    const int top = std::min(one.top, other.top);
    return {left, top, std::max(one.Right(), other.Right()) - left,
            std::max(one.Bottom(), other.Bottom()) - top};
}

bool IsShown(HWND window) {
    return (StyleOf(window) & WS_VISIBLE) != 0;
}

template <typename Take>
void ForEachChild(HWND parent, Take take) {
    HWND child = nullptr;
    while ((child = FindWindowExA(parent, child, nullptr, nullptr)) != nullptr) {
        take(child);
    }
}

bool IsLabel(HWND window) {
    return (SendMessageA(window, WM_GETDLGCODE, 0, 0) & DLGC_STATIC) != 0;
}

void Draw(HWND window, Canvas& canvas, WPARAM above) {
    SendMessageA(window, QUENNET_DRAW, above, reinterpret_cast<LPARAM>(&canvas));
}

class WindowDrawing {
  public:
    explicit WindowDrawing(HWND top) : top_(top), frame_(FrameOf(top)) {}

    Picture Run() {
        const Area inside = AreaOfTop();
        picture_.surface = Surface(inside.width + 2 * frame_.sides,
                                   inside.height + frame_.top + frame_.sides, Ink::window);
        Canvas all(picture_.surface, Whole(), Whole(), false);
        if (frame_.hasTitle) {
            DrawFrame(all);
        }
        Canvas own = all.Part(inside, focus_ == top_);
        Draw(top_, own, 0);
        DrawChildren(top_, own);
        if (IsChild(top_, focus_)) {
            Canvas control = all.Part(AreaInPicture(focus_), true).Above();
            Draw(focus_, control, 1);
        }
        if (frame_.hasMenu) {
            DrawMenu(
                all.Part({inside.left, inside.top - 1, inside.width, inside.height + 1}, true));
        }
        return std::move(picture_);
    }

  private:
    Area Whole() const { return {0, 0, picture_.surface.width, picture_.surface.height}; }

    Area AreaOfTop() const {
        RECT place = {};
        GetWindowRect(top_, &place);
        constexpr int most = 1000;
        return {frame_.sides, frame_.top,
                std::clamp(CellsUp(place.right - place.left, cellWidth), 1, most),
                std::clamp(CellsUp(place.bottom - place.top, cellHeight), 1, most)};
    }

    Area AreaInPicture(HWND window) const {
        return Moved(CellsOf(window), frame_.sides, frame_.top);
    }

    void DrawFrame(Canvas& all) const {
        if (frame_.sides > 0) {
            all.Frame(Whole(), Ink::frame);
        } else {
            all.Fill({0, 0, all.Width(), 1}, U' ', Ink::title);
        }
        std::string title = TextOf(top_);
        title.erase(0, title.find_first_not_of(' '));
        if (!title.empty()) {
            title = " " + title + " ";
            const int start = std::max(1, (all.Width() - ColumnsOf(title)) / 2);
            all.Text(start, 0, title, Ink::title, all.Width() - 1);
        }
    }

    /// What is open has the caret, and is what must be in sight.
    void DrawMenu(Canvas canvas) {
        DrawMenuRow(top_, canvas);
        const Area open = DrawOpenMenus(top_, canvas);
        if (open.width > 0) {
            picture_.surface.focus = Moved(open, frame_.sides, frame_.top - 1);
            picture_.focusWithLabel = picture_.surface.focus;
        }
    }

    void DrawChildren(HWND parent, const Canvas& canvas) {
        const Area around = parent == top_ ? Area{} : CellsOf(parent);
        HWND before = nullptr;
        ForEachChild(parent, [&](HWND child) {
            if (IsShown(child)) {
                const Area place = Moved(CellsOf(child), -around.left, -around.top);
                Canvas part = canvas.Part(place, child == focus_);
                Draw(child, part, 0);
                DrawChildren(child, part);
                if (child == focus_) {
                    NoteFocus(before);
                }
            }
            before = child;
        });
    }

    void NoteFocus(HWND before) {
        const Area place = AreaInPicture(focus_);
        picture_.surface.focus = place;
        picture_.focusWithLabel = place;
        if (before && IsShown(before) && IsLabel(before)) {
            const Area label = AreaInPicture(before);
            const bool inFront = label.Bottom() <= place.Bottom() && label.left <= place.left;
            picture_.focusWithLabel = inFront ? Union(label, place) : place;
        }
    }

    HWND top_;
    FrameSize frame_;
    HWND focus_ = GetFocus();
    Picture picture_;
};

/// The innermost control under a cell; labels and frames let clicks through.
HWND ControlAt(HWND top, HWND parent, int x, int y) {
    HWND found = nullptr;
    ForEachChild(parent, [&](HWND child) {
        if (IsShown(child) && CellsOf(child).Contains(x, y) && !IsLabel(child)) {
            found = child;
        }
    });
    if (!found) {
        return parent;
    }
    return ControlAt(top, found, x, y);
}

/// The middle of the cell.
LPARAM PointIn(HWND window, int x, int y) {
    const Area area = CellsOf(window);
    return MAKELPARAM(static_cast<WORD>((x - area.left) * cellWidth + cellWidth / 2),
                      static_cast<WORD>((y - area.top) * cellHeight + cellHeight / 2));
}

LPARAM PointOnScreen(HWND top, int x, int y) {
    RECT place = {};
    GetWindowRect(top, &place);
    return MAKELPARAM(static_cast<WORD>(place.left + x * cellWidth + cellWidth / 2),
                      static_cast<WORD>(place.top + y * cellHeight + cellHeight / 2));
}

}  // namespace

void FitToScreen(HWND top, DialogFit& fit, int columns, int rows) {
    const FrameSize frame = FrameOf(top);
    const int inside = std::max(1, rows - frame.top - frame.sides);
    if ((StyleOf(top) & WS_POPUP) == 0) {
        MoveWindow(top, 0, 0, columns * cellWidth, inside * cellHeight, TRUE);
    } else {
        fit.Fit(top, inside);
    }
}

Picture DrawWindow(HWND top) {
    return WindowDrawing(top).Run();
}

Target TargetAt(HWND top, int x, int y) {
    const FrameSize frame = FrameOf(top);
    x -= frame.sides;
    y -= frame.top;
    const HWND captured = GetCapture();
    if (captured && (captured == top || IsChild(top, captured))) {
        return {captured, PointIn(captured, x, y)};
    }
    if (frame.hasMenu && y == -1) {
        return {top, PointOnScreen(top, x, y), true};
    }
    const HWND window = ControlAt(top, top, x, y);
    const bool hit = window != top || (x >= 0 && y >= 0);
    return {hit && IsWindowEnabled(window) ? window : nullptr, PointIn(window, x, y)};
}

}  // namespace quennet::terminal
