#include "quennet_canvas.h"

#include "user/characters.h"

#include <wchar.h>

#include <algorithm>

namespace quennet {

namespace {

constexpr char32_t standIn = U'?';

struct Range {
    char32_t first;
    char32_t last;
};
// Controls, and what changes the direction of text or the meaning of what follows.
constexpr Range neverShown[] = {
    {0x0000, 0x001F}, {0x007F, 0x009F}, {0x061C, 0x061C}, {0x200E, 0x200F},   {0x2028, 0x202E},
    {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF},
};

struct Glyph {
    char32_t code;
    int columns;  // 0 for a mark on the one before
};

bool IsHidden(char32_t code) {
    return std::ranges::any_of(
        neverShown, [&](const Range& range) { return code >= range.first && code <= range.last; });
}

Glyph GlyphOf(char32_t code) {
    if (code == U'\t') {
        return {U' ', 1};
    }
    const int columns = IsHidden(code) ? -1 : wcwidth(static_cast<wchar_t>(code));
    return columns < 0 ? Glyph{standIn, 1} : Glyph{code, columns};
}

/// Calls take(glyph, byte offset, byte length) for each character.
template <typename Take>
void ForEachGlyph(std::string_view text, Take take) {
    for (std::size_t place = 0; place < text.size();) {
        const user::Character character = user::CharacterAt(text, place);
        take(GlyphOf(character.code), place, character.length);
        place += character.length;
    }
}

Area Intersection(const Area& one, const Area& other) {
    const int left = std::max(one.left, other.left);
    const int top = std::max(one.top, other.top);
    return {left, top, std::max(0, std::min(one.Right(), other.Right()) - left),
            std::max(0, std::min(one.Bottom(), other.Bottom()) - top)};
}

/// Breaks one line; at least one character goes into each part.
void WrapLine(std::string_view line, int columns, std::vector<std::string>& wrapped) {
    for (;;) {
        std::size_t fits = 0;   // bytes that fit
        std::size_t space = 0;  // the last space among them, and the end
        int used = 0;
        ForEachGlyph(line, [&](Glyph glyph, std::size_t place, std::size_t length) {
            used += glyph.columns;
            if (used <= columns || place == 0) {
                fits = place + length;
            }
            if (line[place] == ' ' && used <= columns + 1) {
                space = place;
            }
        });
        if (used <= columns || fits == line.size()) {
            wrapped.emplace_back(line);
            return;
        }
        const std::size_t end = space > 0 ? space : fits;
        wrapped.emplace_back(line.substr(0, end));
        line.remove_prefix(space > 0 ? end + 1 : end);
    }
}

}  // namespace

Canvas::Canvas(Surface& surface, const Area& area, const Area& clip, bool focused)
    : surface_(surface),
      area_(area),
      clip_(Intersection(clip, Area{0, 0, surface.width, surface.height})),
      focused_(focused) {}

Canvas Canvas::Part(const Area& area, bool focused) const {
    const Area moved = {area_.left + area.left, area_.top + area.top, area.width, area.height};
    return {surface_, moved, Intersection(moved, clip_), focused};
}

Canvas Canvas::Above() const {
    return {surface_, area_, Area{0, 0, surface_.width, surface_.height}, focused_};
}

void Canvas::PutCell(int x, int y, const Cell& cell) {
    x += area_.left;
    y += area_.top;
    const int columns = cell.columns;
    if (!clip_.Contains(x, y) || !clip_.Contains(x + columns - 1, y)) {
        return;
    }
    // Half of a wide character must not stay behind.
    if (surface_.At(x, y).columns == 0 && x > 0) {
        surface_.At(x - 1, y).code = U' ';
        surface_.At(x - 1, y).columns = 1;
    }
    const int next = x + columns;
    if (next < surface_.width && surface_.At(next, y).columns == 0) {
        surface_.At(next, y).code = U' ';
        surface_.At(next, y).columns = 1;
    }
    surface_.At(x, y) = cell;
    if (columns == 2) {
        surface_.At(x + 1, y) = Cell{U' ', {}, cell.ink, 0};
    }
}

void Canvas::AddMark(int x, int y, char32_t mark) {
    x += area_.left;
    y += area_.top;
    if (!clip_.Contains(x, y)) {
        return;
    }
    Cell* cell = &surface_.At(x, y);
    if (cell->columns == 0 && x > 0) {
        --cell;
    }
    char32_t* const free = std::ranges::find(cell->marks, char32_t{0});
    if (free != std::end(cell->marks)) {
        *free = mark;
    }
}

void Canvas::Put(int x, int y, char32_t code, Ink ink) {
    PutCell(x, y, Cell{IsHidden(code) ? standIn : code, {}, ink, 1});
}

void Canvas::Fill(const Area& area, char32_t code, Ink ink) {
    for (int y = area.top; y < area.Bottom(); ++y) {
        for (int x = area.left; x < area.Right(); ++x) {
            PutCell(x, y, Cell{code, {}, ink, 1});
        }
    }
}

void Canvas::Frame(const Area& area, Ink ink) {
    const int right = area.Right() - 1;
    const int bottom = area.Bottom() - 1;
    const auto line = [&](int x, int y, char32_t code) { PutCell(x, y, Cell{code, {}, ink, 1}); };
    for (int x = area.left + 1; x < right; ++x) {
        line(x, area.top, U'─');
        line(x, bottom, U'─');
    }
    for (int y = area.top + 1; y < bottom; ++y) {
        line(area.left, y, U'│');
        line(right, y, U'│');
    }
    line(area.left, area.top, U'┌');
    line(right, area.top, U'┐');
    line(area.left, bottom, U'└');
    line(right, bottom, U'┘');
}

int Canvas::Text(int x, int y, std::string_view text, Ink ink, int end) {
    bool cut = false;
    ForEachGlyph(text, [&](Glyph glyph, std::size_t place, std::size_t) {
        cut = cut || x + glyph.columns > end;
        if (cut) {
            return;
        }
        if (glyph.columns > 0) {
            PutCell(x, y, Cell{glyph.code, {}, ink, static_cast<unsigned char>(glyph.columns)});
        } else if (place > 0) {
            AddMark(x - 1, y, glyph.code);
        }
        x += glyph.columns;
    });
    return x;
}

int Canvas::MarkedText(int x, int y, std::string_view text, Ink ink, Ink markInk, int end) {
    bool marked = false;  // only the first letter is
    while (!text.empty() && x < end) {
        const std::size_t sign = text.find('&');
        x = Text(x, y, text.substr(0, sign), ink, end);
        if (sign == text.npos || sign + 1 == text.size()) {
            break;
        }
        text.remove_prefix(sign + 1);
        const std::size_t letter = user::BehindCharacter(text, 0);
        const bool isMark = text[0] != '&' && !marked;
        marked = marked || isMark;
        x = Text(x, y, text.substr(0, letter), isMark ? markInk : ink, end);
        text.remove_prefix(letter);
    }
    return x;
}

void Canvas::ScrollBar(int x, int y, int rows, long count, long top) {
    if (rows < 2 || count <= rows) {
        return;
    }
    const long thumb = top * (rows - 1) / std::max(1L, count - rows);
    for (int row = 0; row < rows; ++row) {
        Put(x, y + row, row == thumb ? U'█' : U'░', Ink::scrollBar);
    }
}

void Canvas::Caret(int x, int y) {
    if (focused_) {
        surface_.hasCaret = true;
        surface_.caretX = area_.left + std::clamp(x, 0, std::max(0, area_.width - 1));
        surface_.caretY = area_.top + y;
    }
}

int ColumnsOf(std::string_view text) {
    int columns = 0;
    ForEachGlyph(text, [&](Glyph glyph, std::size_t, std::size_t) { columns += glyph.columns; });
    return columns;
}

std::string WithoutMarks(std::string_view text) {
    std::string plain;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == '&' && ++place == text.size()) {
            break;
        }
        plain += text[place];
    }
    return plain;
}

std::vector<std::string> WrapText(std::string_view text, int columns) {
    std::vector<std::string> wrapped;
    for (;;) {
        const std::size_t end = text.find('\n');
        WrapLine(text.substr(0, end), std::max(1, columns), wrapped);
        if (end == text.npos) {
            return wrapped;
        }
        text.remove_prefix(end + 1);
    }
}

}  // namespace quennet
