// The segment's two locks, which outlive their holders: every access of an object is made under the
// segment's own, and a change of the heap under both.
//
// Taking one tries at once, then looks after 2, 4, ... 32 ms who holds it, for 1 s in all. Of a
// dead holder one waiter takes it over, repairs what the dead one left (segment_recovery.h), lets
// it go and queues like everybody else. A waiter that dies at that is a dead holder in its turn. A
// holder that is stopped, or cannot be looked at, is alive.
#ifndef SHARED_MEMORY_SEGMENT_LOCK_H
#define SHARED_MEMORY_SEGMENT_LOCK_H

#include <string>

#include "framework/exit_gate.h"
#include "shared_memory/segment.h"

namespace core_utils {

// Holds the segment's own lock for its lifetime. Throws interprocess_exception with
// timeout_when_locking_error if a live process keeps the lock, std::logic_error if a dead one has
// left the index of the objects damaged. Where something had to be repaired that the owner of an
// object must know, the destructor says so on standard error, after the lock is free.
class CSegmentLock {
  public:
    explicit CSegmentLock(Segment& segment);
    CSegmentLock(const CSegmentLock&) = delete;
    CSegmentLock& operator=(const CSegmentLock&) = delete;
    ~CSegmentLock();

  private:
    void release();

    CExitGate::CWork mWork;  // from before the lock is taken until it is let go
    Segment& mSegment;
    std::string mRepaired;
};

// The heap's lock, under the segment's. Throws like that.
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

// Under the segment's lock: frees the heap's, of which it is known that a dead one held it.
void releaseHeapOfDead(Segment& segment);

// Runs `access` under the segment's own lock, alone among all who take it. It must not print: a
// reader of our output that stands still would stop every process that waits for the lock.
template <typename Access>
auto withSegmentLock(Segment& segment, Access access) {
    const CSegmentLock lock(segment);
    return access();
}

}  // namespace core_utils

#endif
