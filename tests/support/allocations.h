// Counts the allocations of a test and lets one of them fail. For programs with allocations.cpp.
#ifndef SUPPORT_ALLOCATIONS_H
#define SUPPORT_ALLOCATIONS_H

namespace support {

inline thread_local int allocationCount = 0;
inline thread_local int failingAllocation = 0;

// Starts counting this thread's allocations. The `number`-th from now on throws std::bad_alloc;
// with 0 none does.
inline void countAllocations(int number = 0) {
    allocationCount = 0;
    failingAllocation = number;
}

// How many there were, the failed one included.
inline int allocations() {
    return allocationCount;
}

}  // namespace support

#endif
