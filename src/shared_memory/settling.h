// Keeps values that a dying peer has left half written from being saved.
#ifndef SHARED_MEMORY_SETTLING_H
#define SHARED_MEMORY_SETTLING_H

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "shared_memory/shared_memory.h"

namespace core_utils {

// Remembers what was last read under each key. A peer without the library that dies with the
// segment's lock may leave a valid vector that is half changed; the delay gives its successor time
// to write it again. An instance is for one thread.
template <typename Value>
class CSettling {
  public:
    // True if `value`, just read, may be saved. After the death of such a peer that takes 100 ms in
    // which all calls for the key pass the same value; keep calling until it returns true.
    bool hasSettled(int key, const Value& value) {
        const std::uint32_t deaths = CSharedMemory::foreignDeaths();
        if (deaths == 0) return true;
        const auto now = std::chrono::steady_clock::now();
        sStanding& standing = mStanding[key];
        if (standing.deaths == deaths && standing.isSettled) return true;
        // A value with a NaN never equals itself; it is stored as it stands after the 100 ms.
        const bool hasNaN = !std::equal_to<>{}(value, value);
        const bool isUnchanged = standing.value == value || hasNaN;
        if (standing.deaths != deaths || !isUnchanged) {
            standing = {deaths, false, now, value};
        }
        standing.isSettled = now - standing.since >= STANDS_FOR;
        return standing.isSettled;
    }

  private:
    static constexpr std::chrono::milliseconds STANDS_FOR{100};

    struct sStanding {
        std::uint32_t deaths = 0;  // 0: never asked after one
        bool isSettled = false;
        std::chrono::steady_clock::time_point since;
        Value value{};
    };

    std::map<int, sStanding> mStanding;
};

}  // namespace core_utils

#endif
