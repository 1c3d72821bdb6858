// The segment's two locks, which survive the death of their holder. Every access of an object holds
// the segment's own lock; a change of the heap holds both.
//
// Locking tries at once and then checks the holder after 2, 4, 8, 16, 32 ms and every further 32
// ms, for 1 s in all. If the holder is dead, one waiter takes the lock over, recovers the segment
// (segment_recovery.h), unlocks and queues like all others. If it dies in that, the next waiter
// does the same. A holder that is stopped, or cannot be examined, counts as alive. A lock that
// names no owner for 400 ms counts as a dead holder's.
#ifndef SHARED_MEMORY_SEGMENT_LOCK_H
#define SHARED_MEMORY_SEGMENT_LOCK_H

#include <string>

#include "framework/exit_gate.h"
#include "shared_memory/segment.h"

namespace core_utils {

// Holds the segment's own lock for its lifetime. The constructor throws interprocess_exception with
// timeout_when_locking_error if a live process keeps the lock, and std::logic_error if the index of
// the objects is damaged. What recovery has emptied or found damaged is printed to standard error
// after unlocking.
class CSegmentLock {
  public:
    explicit CSegmentLock(Segment& segment);
    CSegmentLock(const CSegmentLock&) = delete;
    CSegmentLock& operator=(const CSegmentLock&) = delete;
    ~CSegmentLock();

  private:
    void release();  // unlocks

    CExitGate::CWork mWork;  // begins before locking, ends after unlocking
    Segment& mSegment;
    std::string mRepaired;
};

// Holds the heap's lock; the segment's must be held already. Throws timeout_when_locking_error as
// CSegmentLock does.
class CHeapLock {
  public:
    explicit CHeapLock(Segment& segment);
    CHeapLock(const CHeapLock&) = delete;
    CHeapLock& operator=(const CHeapLock&) = delete;
    ~CHeapLock();

  private:
    Segment& mSegment;
    bool mIsTakenOver;
};

// Unlocks the heap's lock, which a dead process held. Requires the segment's lock.
void releaseHeapOfDead(Segment& segment);

// Runs `access` with the segment's own lock held and returns its result. `access` must not print: a
// blocked reader of this process's output would block every process that waits for the lock.
template <typename Access>
auto withSegmentLock(Segment& segment, Access access) {
    const CSegmentLock lock(segment);
    return access();
}

}  // namespace core_utils

#endif
