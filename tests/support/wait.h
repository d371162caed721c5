#pragma once
// Waiting for what another thread or process does.

#include <chrono>
#include <functional>
#include <thread>

constexpr std::chrono::seconds usualPatience{30};

/// Looks again and again until it has happened. False when it has not within the time.
inline bool WaitUntil(const std::function<bool()>& happened,
                      std::chrono::milliseconds patience = usualPatience) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!happened()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}
