// What makes attaching to a segment safe that others may have left in any state. Names are those
// of the memory object, with the leading "/".
#ifndef SHARED_MEMORY_SEGMENT_CHECK_H
#define SHARED_MEMORY_SEGMENT_CHECK_H

#include <cstddef>
#include <string>

namespace core_utils {

// Before attaching. Waits up to a second for another process to finish creating the segment;
// without a segment, makes sure that there is room for one of `size` bytes. Throws
// std::runtime_error: attaching would wait for ever, or creating would end in SIGBUS.
void checkBeforeAttaching(const std::string& name, std::size_t size);

// After attaching. Gives every page of the segment its memory now, so that no later write to a
// full file system ends in SIGBUS, and makes sure that the segment really has the `size` bytes
// that its header claims, and not many more. Throws std::runtime_error if not.
void checkAfterAttaching(const std::string& name, std::size_t size);

}  // namespace core_utils

#endif
