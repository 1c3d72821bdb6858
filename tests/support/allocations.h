// Counts the allocations of a test and lets one of them fail. For programs with allocations.cpp.
#ifndef SUPPORT_ALLOCATIONS_H
#define SUPPORT_ALLOCATIONS_H

namespace support {

// Starts counting this thread's allocations. The `number`-th from now on throws std::bad_alloc;
// with 0 none does.
void countAllocations(int number = 0);

// How many there were, the failed one included.
int allocations();

}  // namespace support

#endif
