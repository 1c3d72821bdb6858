// The pace of every handler that polls.
#ifndef CONFIG_HANDLERS_POLL_PERIOD_H
#define CONFIG_HANDLERS_POLL_PERIOD_H

#include <time.h>

// Sleeps for the 1 ms between two polls.
inline void sleepPollPeriod() {
    constexpr timespec PERIOD{0, 1'000'000};
    nanosleep(&PERIOD, nullptr);
}

#endif
