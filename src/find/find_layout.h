#pragma once
// Where the controls of a Find window stand.

#include "host/types.h"

namespace quennet {

struct ControlPlace {
    int control;
    i32 x;
    i32 y;
    i32 width;
    i32 height;
};

constexpr int findPlaces = 7;

struct FindLayout {
    ControlPlace places[findPlaces];
    i32 minimumWidth;  // smallest size of the window
    i32 minimumHeight;
};

/// The places in a window with `width` pixels, and `height` of them between tool bar and status
/// bar; the tool bar ends at `top`. `itemHeight` is the height of a row of the mask box, 0 when it
/// is not known.
FindLayout PlaceFindControls(i32 top, i32 width, i32 height, i32 itemHeight);

}  // namespace quennet
