#include "hostkit/panels.h"

#include <algorithm>
#include <stdexcept>

namespace hostkit {

u8 Panels::Add(Panel& panel) {
    const std::lock_guard lock(mutex_);
    const auto place = std::find(panels_.begin() + 1, panels_.end(), nullptr);
    if (place == panels_.end()) {
        throw std::runtime_error("too many connections");
    }
    *place = &panel;
    return static_cast<u8>(place - panels_.begin());
}

void Panels::Remove(u8 number) {
    const std::lock_guard lock(mutex_);
    panels_[number] = nullptr;
}

u16 Panels::NextCookie() {
    for (;;) {
        if (const u16 cookie = ++cookie_; cookie != 0) {
            return cookie;
        }
    }
}

}  // namespace hostkit
