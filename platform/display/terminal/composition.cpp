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
