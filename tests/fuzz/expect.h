#pragma once

#include <cstdlib>

/// Ends the run when a promise is not kept.
inline void Expect(bool kept) {
    if (!kept) {
        std::abort();
    }
}
