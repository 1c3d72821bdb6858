// The pace of every handler that polls.
#ifndef CONFIG_HANDLERS_POLL_INTERVAL_H
#define CONFIG_HANDLERS_POLL_INTERVAL_H

#include <time.h>

inline constexpr timespec POLL_INTERVAL{0, 1'000'000};  // 1 ms

inline void sleepPollInterval() {
    nanosleep(&POLL_INTERVAL, nullptr);
}

#endif
