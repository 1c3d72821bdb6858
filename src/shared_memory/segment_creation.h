// Creates the segment in one step: other processes find all of it under its name, or nothing.
#ifndef SHARED_MEMORY_SEGMENT_CREATION_H
#define SHARED_MEMORY_SEGMENT_CREATION_H

#include <cstddef>
#include <string>

namespace core_utils {

inline constexpr int SEGMENT_PERMISSIONS = 0644;

// If no memory object has the name `name` (with the leading "/"), makes a segment of `size` bytes
// in a file without a name, with memory for all its pages, readable by all whatever the umask, and
// then gives it the name. A creator that dies before leaves nothing. One that comes second leaves
// the first one's.
//
// Does nothing where the system cannot do that or does not permit it: attaching with
// open_or_create then creates the segment in several steps, or tells the reason. Throws
// std::runtime_error if there is no room.
void createSegment(const std::string& name, std::size_t size);

}  // namespace core_utils

#endif
