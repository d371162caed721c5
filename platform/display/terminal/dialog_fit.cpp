#include "dialog_fit.h"

#include <algorithm>
#include <cstring>

namespace quennet::terminal {

namespace {

/// What a row of a dialog is for.
enum class Use { nothing, room, content };

bool GivesRows(HWND control) {
    char name[32] = "";
    GetClassNameA(control, name, sizeof(name));
    if (lstrcmpiA(name, "Button") == 0) {
        return (GetWindowLongA(control, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
    }
    return lstrcmpiA(name, "ListBox") == 0 || lstrcmpiA(name, "SysListView32") == 0;
}

/// Of the rows that are for no more than `use`: one whose neighbour above is like it, or the last
/// one, in a first turn, and any in a second. From the bottom up.
void CloseSome(std::vector<bool>& closed, const std::vector<Use>& uses, Use use, int& surplus) {
    for (const bool first : {true, false}) {
        bool isLast = true;
        for (std::size_t row = uses.size(); row-- > 0 && surplus > 0;) {
            const bool free = uses[row] <= use && !closed[row];
            const bool doubled = row > 0 && uses[row - 1] <= use && !closed[row - 1];
            if (free && (!first || isLast || doubled)) {
                closed[row] = true;
                --surplus;
            }
            isLast = isLast && closed[row];
        }
    }
}

int OpenRows(const std::vector<bool>& closed, int before) {
    return static_cast<int>(std::count(closed.begin(), closed.begin() + before, false));
}

}  // namespace

bool DialogFit::Place::operator==(const Place& other) const {
    return window == other.window && std::memcmp(&pixels, &other.pixels, sizeof(pixels)) == 0;
}

DialogFit::Places DialogFit::PlacesOf(HWND dialog) {
    RECT around = {};
    GetWindowRect(dialog, &around);
    const LONG height = around.bottom - around.top;
    Places places = {{dialog,
                      {0, 0, around.right - around.left, height},
                      {0, 0, 0, static_cast<int>((height + cellHeight - 1) / cellHeight)},
                      true}};
    HWND control = nullptr;
    while ((control = FindWindowExA(dialog, control, nullptr, nullptr)) != nullptr) {
        RECT place = {};
        GetWindowRect(control, &place);
        places.push_back({control,
                          {place.left - around.left, place.top - around.top,
                           place.right - around.left, place.bottom - around.top},
                          CellsOf(control),
                          GivesRows(control)});
    }
    return places;
}

DialogFit::Places DialogFit::Without(const Places& places, const std::vector<bool>& closed) {
    const int rows = static_cast<int>(closed.size());
    const auto taken = [&](int before) {
        before = std::clamp(before, 0, rows);
        return (before - OpenRows(closed, before)) * cellHeight;
    };
    Places moved = places;
    for (Place& place : moved) {
        place.pixels.top -= taken(place.cells.top);
        place.pixels.bottom -= taken(place.cells.Bottom());
    }
    return moved;
}

void DialogFit::Move(const Places& places, const Places& before) {
    for (std::size_t index = 0; index < places.size(); ++index) {
        if (places[index] == before[index]) {
            continue;
        }
        const RECT& place = places[index].pixels;
        SetWindowPos(places[index].window, nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top,
                     SWP_NOZORDER | SWP_NOACTIVATE | (index == 0 ? SWP_NOMOVE : 0U));
    }
}

void DialogFit::Fit(HWND dialog, int rows) {
    const Places now = PlacesOf(dialog);
    if (now != set_) {
        own_ = now;
    }
    std::vector<Use> uses(static_cast<std::size_t>(own_.front().cells.height), Use::nothing);
    const int height = static_cast<int>(uses.size());
    for (auto place = own_.begin() + 1; place != own_.end(); ++place) {
        const Area& cells = place->cells;
        for (int row = std::max(0, cells.top); row < std::min(height, cells.Bottom()); ++row) {
            const bool given = place->gives && row > cells.top + 1 && row + 1 < cells.Bottom();
            Use& use = uses[static_cast<std::size_t>(row)];
            use = std::max(use, given ? Use::room : Use::content);
        }
    }
    std::vector<bool> closed(uses.size(), false);
    int surplus = height - rows;
    CloseSome(closed, uses, Use::nothing, surplus);
    CloseSome(closed, uses, Use::room, surplus);
    Move(Without(own_, closed), now);
    set_ = PlacesOf(dialog);
}

}  // namespace quennet::terminal
