#pragma once
// Templates of the host's own dialogs, measured in character cells.

#include <quennet_platform.h>

namespace hostkit {

// A dialog unit is a quarter of a character's width and an eighth of its height.
constexpr int unitsAcross = 4;
constexpr int unitsDown = 8;

inline QuennetControlTemplate CellControl(const char* className, WORD id, DWORD style, int x, int y,
                                          int width, int height = 1) {
    return {className,
            id,
            style,
            static_cast<SHORT>(x * unitsAcross),
            static_cast<SHORT>(y * unitsDown),
            static_cast<SHORT>(width * unitsAcross),
            static_cast<SHORT>(height * unitsDown)};
}

}  // namespace hostkit
