#pragma once
// What windows draw on: a field of character cells. No terminal is needed for it.
//
// A window that a display shows is sent QUENNET_DRAW, always on its own thread. lParam is a
// quennet::Canvas*, whose origin is the window's upper left corner; a cell is 8 pixels wide and 16
// high. wParam is 0 for the window itself. The window with the focus gets a second one with 1, when
// all others are drawn, for what it shows above its neighbours (an open list). The controls of the
// layer answer it; a window class of a program's own does likewise, and calls InvalidateRect when
// it wants to be drawn again.

#include "windows.h"

#define QUENNET_DRAW 0x0318

#ifdef __cplusplus

#include <climits>
#include <string>
#include <string_view>
#include <vector>

namespace quennet {

constexpr int cellWidth = 8;
constexpr int cellHeight = 16;

/// What a cell is part of. A display gives each its colours, or attributes where there are none.
enum class Ink : unsigned char {
    screen,  // behind all windows
    window,
    frame,
    title,
    mark,  // the letter behind a '&'
    disabled,
    field,
    fieldRest,  // of a field, behind its text
    fieldReadOnly,
    list,
    selection,
    selectionIdle,  // in a control without the focus
    button,
    buttonFocus,
    scrollBar,
    menu,
    menuMark,
    menuSelection,
    status,
    header,
    marked,
    count
};

struct Area {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;

    int Right() const { return left + width; }
    int Bottom() const { return top + height; }
    bool Contains(int x, int y) const {
        return x >= left && x < Right() && y >= top && y < Bottom();
    }
};

/// A character with at most two marks above or below it. A wide one has an empty cell behind it.
struct Cell {
    char32_t code = U' ';
    char32_t marks[2] = {};
    Ink ink = Ink::screen;
    unsigned char columns = 1;  // 2 for a wide one, 0 for the cell behind it

    bool operator==(const Cell&) const = default;
};

struct Surface {
    Surface() = default;
    Surface(int columns, int rows, Ink ink)
        : width(columns), height(rows), cells(static_cast<std::size_t>(columns * rows)) {
        for (Cell& cell : cells) {
            cell.ink = ink;
        }
    }

    Cell& At(int x, int y) { return cells[static_cast<std::size_t>(y * width + x)]; }
    const Cell& At(int x, int y) const { return cells[static_cast<std::size_t>(y * width + x)]; }

    int width = 0;
    int height = 0;
    std::vector<Cell> cells;
    bool hasCaret = false;
    int caretX = 0;
    int caretY = 0;
    Area focus;  // of the control with the focus
};

/// A part of a surface to draw on. What does not fit is cut off. Control characters, and those that
/// turn the direction of text, are drawn as '?', a tab as a space.
class QUENNET_PLATFORM_API Canvas {
  public:
    /// `area` is the window's, `clip` what of the surface may be drawn on.
    Canvas(Surface& surface, const Area& area, const Area& clip, bool focused);

    int Width() const { return area_.width; }
    int Height() const { return area_.height; }
    /// Has the window the focus?
    bool Focused() const { return focused_; }

    /// The part of a child window, placed relative to this one.
    Canvas Part(const Area& area, bool focused) const;
    /// The same origin, and nothing cut off but at the surface's edges.
    Canvas Above() const;

    /// A character of one column.
    void Put(int x, int y, char32_t code, Ink ink);
    void Fill(const Area& area, char32_t code, Ink ink);
    /// A line around the area.
    void Frame(const Area& area, Ink ink);
    /// Draws the text up to column `end`; returns the column behind it.
    int Text(int x, int y, std::string_view text, Ink ink, int end = INT_MAX);
    /// The same for a text with marked letters.
    int MarkedText(int x, int y, std::string_view text, Ink ink, Ink markInk, int end = INT_MAX);
    /// A bar of `rows` rows for a list of `count` entries that begins with entry `top`.
    void ScrollBar(int x, int y, int rows, long count, long top);
    /// Shows the caret there when the window has the focus.
    void Caret(int x, int y);

  private:
    void PutCell(int x, int y, const Cell& cell);
    void AddMark(int x, int y, char32_t mark);

    Surface& surface_;
    Area area_;
    Area clip_;
    bool focused_;
};

/// The cells that a control takes in its top window, by the rule for places in winuser.h.
QUENNET_PLATFORM_API Area CellsOf(HWND window);
/// How many columns a text takes.
QUENNET_PLATFORM_API int ColumnsOf(std::string_view text);
/// The text without the signs that mark letters.
QUENNET_PLATFORM_API std::string WithoutMarks(std::string_view text);
/// Lines of at most so many columns, broken between words where that is possible. "\n" ends one.
QUENNET_PLATFORM_API std::vector<std::string> WrapText(std::string_view text, int columns);

/// A window with a menu bar has a row for it above its own first one, below the title.
QUENNET_PLATFORM_API bool HasMenuBar(HWND window);
/// Draws that row; the canvas begins at its left end. On the window's thread.
QUENNET_PLATFORM_API void DrawMenuRow(HWND window, Canvas& canvas);
/// Draws what is open of the window's menus, after everything else of the window, on a canvas from
/// that row to the window's lower edge, and puts the caret there. The area of the popup with the
/// keyboard, of width 0 when none is open. On the window's thread.
QUENNET_PLATFORM_API Area DrawOpenMenus(HWND window, Canvas& canvas);

}  // namespace quennet

#endif
