// The segment's own process-shared lock, which every access of an object is made under.
#ifndef SHARED_MEMORY_SEGMENT_LOCK_H
#define SHARED_MEMORY_SEGMENT_LOCK_H

#include <boost/interprocess/managed_shared_memory.hpp>

#include "framework/exit_gate.h"

namespace core_utils {

using Segment = boost::interprocess::managed_shared_memory;

// Runs `access` under the segment's own lock, alone among all who take it. It must not print: a
// reader of our output that stands still would stop every process that waits for the lock.
template <typename Access>
auto withSegmentLock(Segment& segment, Access access) {
    const CExitGate::CWork work;  // from before the lock is taken until it is let go
    decltype(access()) result{};
    auto keepResult = [&] { result = access(); };
    segment.atomic_func(keepResult);
    return result;
}

}  // namespace core_utils

#endif
