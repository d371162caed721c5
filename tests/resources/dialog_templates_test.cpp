// How the controls of the module's dialogs stand to each other, in dialog units.

#include <gtest/gtest.h>
#include <windows.h>

#include <string_view>
#include <vector>

namespace {

struct Box {
    int id;
    std::string_view kind;
    unsigned long style;
    int left, top, right, bottom;

    bool IsFrame() const { return kind == "Button" && (style & BS_TYPEMASK) == BS_GROUPBOX; }
    bool Meets(const Box& other) const {
        return left < other.right && other.left < right && top < other.bottom && other.top < bottom;
    }
    bool Holds(const Box& other) const {
        return left < other.left && other.right < right && top < other.top && other.bottom < bottom;
    }
};

struct Dialog {
    int id, width, height;
    std::vector<Box> boxes;
};

/// A combo box counts as it is while its list is closed.
Box MakeBox(std::string_view kind, int id, unsigned long style, int x, int y, int width,
            int height) {
    constexpr int closed = 14;
    return {id, kind, style, x, y, x + width, y + (kind == "ComboBox" ? closed : height)};
}

// clang-format off
const Dialog dialogs[] = {
#define QUENNET_DIALOG(id, width, height, title) {id, width, height, {
#define QUENNET_CONTROL(text, kind, id, style, x, y, width, height) \
    MakeBox(kind, id, style, x, y, width, height),
#define QUENNET_DIALOG_END }},
#include "resources/dialogs.inc"
};
// clang-format on

TEST(DialogTemplates, ControlsStandApartAndClearOfTheEdges) {
    constexpr int margin = 3;
    for (const Dialog& dialog : dialogs) {
        const Box inside = {0,
                            "",
                            0,
                            margin - 1,
                            margin - 1,
                            dialog.width - margin + 1,
                            dialog.height - margin + 1};
        for (const Box& box : dialog.boxes) {
            EXPECT_TRUE(inside.Holds(box)) << dialog.id << ": " << box.id << " is at the edge";
            for (const Box& other : dialog.boxes) {
                const bool framed =
                    box.IsFrame() ? box.Holds(other) : other.IsFrame() && other.Holds(box);
                EXPECT_TRUE(&box == &other || framed || !box.Meets(other))
                    << dialog.id << ": " << box.id << " covers " << other.id;
            }
        }
    }
}

}  // namespace
