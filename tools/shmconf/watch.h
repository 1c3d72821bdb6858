// The changes of objects, as they happen.
#ifndef SHMCONF_WATCH_H
#define SHMCONF_WATCH_H

#include <chrono>
#include <iosfwd>
#include <vector>

#include "shmconf/segment.h"

namespace shmconf {

struct sWatchOptions {
    unsigned int count = 0;  // changes to stop after; 0 for no end
    std::chrono::milliseconds interval{};
};

// Prints how many objects it watches once their first contents are taken, then a line for each
// change, with the local time, until the count is reached. Looks every interval: a value that is
// gone within one is not seen. Throws CToolError when the segment loses its name.
void watch(std::ostream& out, const CSegment& segment, const std::vector<sObject>& objects,
           const sWatchOptions& options);

}  // namespace shmconf

#endif
