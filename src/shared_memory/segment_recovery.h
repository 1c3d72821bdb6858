// What a process does that has taken the segment's lock over from a dead one.
#ifndef SHARED_MEMORY_SEGMENT_RECOVERY_H
#define SHARED_MEMORY_SEGMENT_RECOVERY_H

#include <string>

#include "shared_memory/segment.h"

namespace core_utils {

// Finishes the change that a process of this library was making. After a plain peer's death it
// looks at the heap and the index instead: an object of the directory that is no vector any more is
// left without elements, and damage is left as it is. Returns what people should know, in whole
// lines for standard error.
std::string recover(Segment& segment);

}  // namespace core_utils

#endif
