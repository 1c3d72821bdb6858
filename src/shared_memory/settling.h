// Keeps what a dying peer has left half written from being stored for good.
#ifndef SHARED_MEMORY_SETTLING_H
#define SHARED_MEMORY_SETTLING_H

#include <chrono>
#include <cstdint>
#include <map>
#include <utility>

#include "shared_memory/shared_memory.h"

namespace core_utils {

// What was read lately under each key, for one thread that stores changes. A peer without the
// library that dies with the segment's lock may leave a vector half changed and yet sound; whoever
// starts it again gets a moment to write it whole.
template <typename Value>
class CSettling {
  public:
    // True if `value`, just read, may be stored. After the death of such a peer that is so once it
    // is unchanged for 100 ms, as seen by these calls, which must go on until then.
    bool hasSettled(int key, const Value& value) {
        const std::uint32_t deaths = CSharedMemory::foreignDeaths();
        if (deaths == 0) return true;
        const auto now = std::chrono::steady_clock::now();
        sStanding& standing = mStanding[key];
        if (standing.deaths == deaths && standing.isSettled) return true;
        // A value with a NaN never equals itself; it is stored as it stands after the 100 ms.
        const bool isUnchanged = standing.value == value || !(value == value);
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
