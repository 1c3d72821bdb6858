// Recovery of the segment after its lock was taken over from a dead process.
#ifndef SHARED_MEMORY_SEGMENT_RECOVERY_H
#define SHARED_MEMORY_SEGMENT_RECOVERY_H

#include <string>

#include "shared_memory/segment.h"

namespace core_utils {

// Finishes the change of a process that used this library. After the death of a plain peer, one
// without it, checks the heap and the index instead: an object of the directory that is no longer a
// vector becomes an empty one; a damaged heap or index stays as it is. Requires the segment's lock.
// Returns what a user should know, in whole lines for standard error; empty if all is well.
std::string recover(Segment& segment);

}  // namespace core_utils

#endif
