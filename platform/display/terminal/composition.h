#pragma once
// All windows on one screen. A window that is larger than the screen is shown in part: the part
// with the focus, and marks at the edges that it goes on behind.

#include "picture.h"

#include <map>
#include <memory>
#include <vector>

namespace quennet::terminal {

struct Layer {
    HWND window;
    std::shared_ptr<const Picture> picture;
    bool active;  // it has the caret
};

/// Where a picture's upper left corner is on the screen; negative where it is scrolled.
struct Placement {
    HWND window;
    Area area;
};

struct Composition {
    Surface screen;
    std::vector<Placement> placements;  // the lowest window first
};

class Composer {
  public:
    /// The layers from the lowest to the highest.
    Composition Compose(const std::vector<Layer>& layers, int columns, int rows);

  private:
    struct Scroll {
        int x = 0;
        int y = 0;
    };
    std::map<HWND, Scroll> scrolls_;  // as last shown, so that no more moves than must
};

}  // namespace quennet::terminal
