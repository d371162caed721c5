#pragma once

#include <cstdio>
#include <cstdlib>

/// Ends the run when a promise is not kept, and says which one.
inline void Expect(bool kept, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (!kept) {
        std::fprintf(stderr, "%s:%d: not as expected\n", file, line);
        std::abort();
    }
}
