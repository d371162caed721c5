// Drawing on cells, and putting windows together on a screen of any size. No terminal is needed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <locale.h>
#include <quennet_canvas.h>

#include <string>
#include <vector>

#include "display/terminal/composition.h"

using quennet::Area;
using quennet::Canvas;
using quennet::Cell;
using quennet::Ink;
using quennet::Surface;
using quennet::terminal::Composer;
using quennet::terminal::Picture;
using testing::ElementsAre;

namespace {

/// Lines of a surface; '<' stands for the cell behind a wide character, which is shown as 'W', and
/// '^' for a mark.
std::string Rows(const Surface& surface) {
    std::string rows;
    for (int y = 0; y < surface.height; ++y) {
        for (int x = 0; x < surface.width; ++x) {
            const Cell& cell = surface.At(x, y);
            rows += cell.columns == 0   ? '<'
                    : cell.columns == 2 ? 'W'
                    : cell.code < 0x80  ? static_cast<char>(cell.code)
                                        : '*';
            rows += cell.marks[0] != 0 ? "^" : "";
        }
        rows += '|';
    }
    return rows;
}

class CanvasTest : public testing::Test {
  protected:
    CanvasTest() { setlocale(LC_CTYPE, "C.UTF-8"); }
};

}  // namespace

TEST_F(CanvasTest, CutsTextAndShowsNothingThatATerminalWouldObey) {
    struct {
        int x;
        const char* text;
        const char* rows;
        int behind;
    } const cases[] = {
        {0, "abcdefgh", "abcdef|", 8},
        {-2, "abcdefghij", "cdefgh|", 8},
        {4, "abc", "    ab|", 7},
        {0, "\x1B[1m\x7F\t", "?[1m? |", 6},
        {0, "\x9B.\xC2\x9B.", "?.?.  |", 4},
        {0, "\xE4\xC3\xA4", "**    |", 2},                 // Latin-1 and UTF-8
        {0, "\xE6\x97\xA5x", "W<x   |", 3},                // wide
        {5, "\xE6\x97\xA5", "      |", 7},                 // half of it does not fit
        {-1, "\xE6\x97\xA5x", " x    |", 2},               // nor here
        {0, "e\xCC\x81\xCC\x81\xCC\x81x", "e^x    |", 2},  // marks, however many
        {0, "\xCC\x81x", "x     |", 1},                    // a mark on nothing
        {0, "\xE2\x80\xAEx\xE2\x80\x8F", "?x?   |", 3},
        {0, "\xED\xA0\x80\xC0\x80", "**?*? |", 5},  // what only looks like UTF-8
    };
    for (const auto& step : cases) {
        Surface surface(6, 1, Ink::window);
        Canvas canvas(surface, {0, 0, 6, 1}, {0, 0, 6, 1}, false);
        EXPECT_EQ(canvas.Text(step.x, 0, step.text, Ink::window), step.behind) << step.text;
        EXPECT_EQ(Rows(surface), step.rows) << step.text;
    }
}

TEST_F(CanvasTest, LeavesNoHalfOfAWideCharacterBehind) {
    for (const int x : {1, 2}) {
        Surface surface(4, 1, Ink::window);
        Canvas canvas(surface, {0, 0, 4, 1}, {0, 0, 4, 1}, false);
        canvas.Text(1, 0, "\xE6\x97\xA5", Ink::window);
        canvas.Put(x, 0, U'x', Ink::window);
        EXPECT_EQ(Rows(surface), x == 1 ? " x  |" : "  x |");
    }
}

TEST_F(CanvasTest, WrapsTextBetweenWordsWherePossible) {
    using quennet::WrapText;
    EXPECT_THAT(WrapText("one two three", 7), ElementsAre("one two", "three"));
    EXPECT_THAT(WrapText("abcdefgh\n\nij", 3), ElementsAre("abc", "def", "gh", "", "ij"));
    EXPECT_THAT(WrapText("\xE6\x97\xA5\xE6\x9C\xAC", 1),
                ElementsAre("\xE6\x97\xA5", "\xE6\x9C\xAC"));
}

TEST_F(CanvasTest, ShowsOfALargeWindowThePartWithTheFocus) {
    struct {
        const char* what;
        Area focus;
        Area withLabel;
        int caret;
        int columns;
        int left;  // where the window's corner is
    } const steps[] = {
        {"it fits", {30, 0, 5, 1}, {20, 0, 15, 1}, 30, 50, 5},
        {"all in sight", {4, 0, 5, 1}, {1, 0, 8, 1}, 4, 20, 0},
        {"focus and label, with a margin", {30, 0, 5, 1}, {20, 0, 15, 1}, 30, 20, -16},
        {"moves back no more than it must", {10, 0, 5, 1}, {10, 0, 5, 1}, 10, 20, -9},
        {"the focus alone", {30, 0, 5, 1}, {10, 0, 25, 1}, 30, 6, -29},
        {"only its beginning", {20, 0, 15, 1}, {20, 0, 15, 1}, 22, 6, -20},
        {"only the caret", {20, 0, 15, 1}, {20, 0, 15, 1}, 33, 6, -28},
        {"one cell", {20, 0, 15, 1}, {20, 0, 15, 1}, 33, 1, -33},
        {"no focus", {}, {}, 0, 20, 0},
    };
    Composer composer;
    for (const auto& step : steps) {
        auto picture = std::make_shared<Picture>();
        picture->surface = Surface(40, 1, Ink::window);
        picture->surface.focus = step.focus;
        picture->surface.hasCaret = true;
        picture->surface.caretX = step.caret;
        picture->focusWithLabel = step.withLabel;
        const HWND window = reinterpret_cast<HWND>(INT_PTR{1});
        const auto composition = composer.Compose({{window, picture, true}}, step.columns, 1);
        EXPECT_EQ(composition.placements.front().area.left, step.left) << step.what;
        EXPECT_TRUE(composition.screen.hasCaret) << step.what;
        EXPECT_EQ(composition.screen.caretX, step.caret + step.left) << step.what;
    }
}

TEST_F(CanvasTest, PutsWindowsAboveEachOtherWithoutHalvesOfWideCharacters) {
    const auto picture = [](int columns, const std::string& text) {
        auto made = std::make_shared<Picture>();
        made->surface = Surface(columns, 1, Ink::window);
        Canvas canvas(made->surface, {0, 0, columns, 1}, {0, 0, columns, 1}, false);
        canvas.Text(0, 0, text, Ink::window);
        return made;
    };
    const std::string wide = "\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5\xE6\x97\xA5";
    const auto window = [](INT_PTR number) { return reinterpret_cast<HWND>(number); };
    Composer composer;
    const auto composition = composer.Compose(
        {{window(1), picture(8, wide), false}, {window(2), picture(2, "ab"), true}}, 8, 1);
    EXPECT_EQ(Rows(composition.screen), "W< ab W<|");
    EXPECT_EQ(Rows(composer.Compose({{window(1), picture(8, wide), true}}, 3, 1).screen), "W< |");
}
