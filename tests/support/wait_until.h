#ifndef SUPPORT_WAIT_UNTIL_H
#define SUPPORT_WAIT_UNTIL_H

#include <chrono>
#include <thread>

namespace support {

constexpr std::chrono::seconds BOUND{20};  // also for a busy machine

// Polls `condition` every millisecond; false if it does not hold within `bound`.
template <typename Condition>
bool waitUntil(Condition condition, std::chrono::milliseconds bound = BOUND) {
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace support

#endif
