#include "composition.h"

#include <algorithm>

namespace quennet::terminal {

namespace {

struct Span {
    int first = 0;
    int size = 0;
};

/// The part of a line of `size` cells that begins at the result and fits `room`: with all of
/// `wanted` in it, and as near to the part that began at `before` as that allows.
int ScrollTo(int size, int room, const Span& wanted, int before) {
    int first = std::max(before, wanted.first + wanted.size - room);
    first = std::min(first, wanted.first);
    return std::clamp(first, 0, std::max(0, size - room));
}

/// The largest of these that fits: focus with label and a margin, with label, focus, its beginning
/// with the caret, the caret.
Span Wanted(int room, const Span& labelled, const Span& focus, int caret) {
    if (labelled.size + 2 <= room) {
        return {labelled.first - 1, labelled.size + 2};
    }
    if (labelled.size <= room) {
        return labelled;
    }
    if (focus.size <= room) {
        return focus;
    }
    return caret >= focus.first && caret < focus.first + room ? Span{focus.first, room}
                                                              : Span{caret, 1};
}

void CopyCell(Surface& screen, int x, int y, const Cell& cell) {
    const bool cut = cell.columns == 2 && x + 1 >= screen.width;
    const bool orphan = cell.columns == 0 && (x == 0 || screen.At(x - 1, y).columns != 2);
    Cell& target = screen.At(x, y);
    target = cell;
    if (cut || orphan) {
        target = Cell{U' ', {}, cell.ink, 1};
    }
}

/// A wide character of a lower window of which a higher one covers half becomes a space.
void MendBorders(Surface& screen, int x, int y) {
    if (x > 0 && screen.At(x - 1, y).columns == 2 && screen.At(x, y).columns != 0) {
        screen.At(x - 1, y) = Cell{U' ', {}, screen.At(x - 1, y).ink, 1};
    }
    if (x < screen.width && screen.At(x, y).columns == 0 &&
        (x == 0 || screen.At(x - 1, y).columns != 2)) {
        screen.At(x, y) = Cell{U' ', {}, screen.At(x, y).ink, 1};
    }
}

void CopyPicture(Surface& screen, const Surface& picture, const Area& place) {
    const int left = std::max(0, place.left);
    const int right = std::min(screen.width, place.Right());
    const int bottom = std::min(screen.height, place.Bottom());
    for (int y = std::max(0, place.top); y < bottom; ++y) {
        for (int x = left; x < right; ++x) {
            CopyCell(screen, x, y, picture.At(x - place.left, y - place.top));
        }
        if (left < right) {
            MendBorders(screen, left, y);
        }
        if (right < screen.width) {
            MendBorders(screen, right, y);
        }
    }
}

int Centred(int room, int size) {
    return (room - size) / 2;
}

bool IsFree(const Cell& cell) {
    return cell.ink == Ink::frame ||
           (cell.code == U' ' && (cell.ink == Ink::window || cell.ink == Ink::list));
}

/// Marks the edges of the screen that the picture goes on behind, where nothing else stands if
/// there is such a cell, and away from the focus if there are several. A screen that is hardly
/// larger than the marks does without.
void MarkHiddenParts(Surface& screen, const Area& place, const Area& focus) {
    constexpr int fewestColumns = 8;
    constexpr int fewestRows = 4;
    if (screen.width < fewestColumns || screen.height < fewestRows) {
        return;
    }
    const int right = std::min(screen.width, place.Right()) - 1;
    const int top = std::max(0, place.top);
    const int bottom = std::min(screen.height, place.Bottom()) - 1;
    const auto put = [&](int x, int y, char32_t code) {
        screen.At(x, y) = Cell{code, {}, Ink::title, 1};
        MendBorders(screen, x, y);
        MendBorders(screen, x + 1, y);
    };
    const auto markRow = [&](int y, char32_t code) {
        int x = right;
        while (x > 0 && !IsFree(screen.At(x, y))) {
            --x;
        }
        put(x > 0 ? x : right, y, code);
    };
    const auto markColumn = [&](int x, char32_t code) {
        const int focusTop = place.top + focus.top;
        int chosen = -1;
        for (int y = top; y <= bottom; ++y) {
            const bool hasFocus = y >= focusTop && y < focusTop + focus.height;
            if (IsFree(screen.At(x, y)) && (chosen < 0 || !hasFocus)) {
                chosen = y;
                if (!hasFocus) {
                    break;
                }
            }
        }
        put(x, std::max(top, chosen), code);
    };
    if (place.left < 0) {
        markColumn(0, U'◄');
    }
    if (place.Right() > screen.width) {
        markColumn(right, U'►');
    }
    if (place.top < 0) {
        markRow(0, U'▲');
    }
    if (place.Bottom() > screen.height) {
        markRow(bottom, U'▼');
    }
}

}  // namespace

Composition Composer::Compose(const std::vector<Layer>& layers, int columns, int rows) {
    Composition composition = {Surface(columns, rows, Ink::screen), {}};
    std::map<HWND, Scroll> scrolls;
    for (const Layer& layer : layers) {
        const Surface& picture = layer.picture->surface;
        const Area& focus = picture.focus;
        const Area& labelled = layer.picture->focusWithLabel;
        const Scroll before = scrolls_[layer.window];
        const Scroll scroll = {ScrollTo(picture.width, columns,
                                        Wanted(columns, {labelled.left, labelled.width},
                                               {focus.left, focus.width}, picture.caretX),
                                        before.x),
                               ScrollTo(picture.height, rows,
                                        Wanted(rows, {labelled.top, labelled.height},
                                               {focus.top, focus.height}, picture.caretY),
                                        before.y)};
        scrolls[layer.window] = scroll;
        const Area place = {picture.width > columns ? -scroll.x : Centred(columns, picture.width),
                            picture.height > rows ? -scroll.y : Centred(rows, picture.height),
                            picture.width, picture.height};
        CopyPicture(composition.screen, picture, place);
        MarkHiddenParts(composition.screen, place, focus);
        composition.placements.push_back({layer.window, place});
        if (layer.active) {
            composition.screen.caretX = place.left + picture.caretX;
            composition.screen.caretY = place.top + picture.caretY;
            composition.screen.hasCaret =
                picture.hasCaret && Area{0, 0, columns, rows}.Contains(composition.screen.caretX,
                                                                       composition.screen.caretY);
        }
    }
    scrolls_ = std::move(scrolls);
    return composition;
}

}  // namespace quennet::terminal
