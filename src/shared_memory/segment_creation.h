// Creates the segment atomically: other processes find a complete one under the name, or nothing.
#ifndef SHARED_MEMORY_SEGMENT_CREATION_H
#define SHARED_MEMORY_SEGMENT_CREATION_H

#include <cstddef>
#include <string>

namespace core_utils {

inline constexpr int SEGMENT_PERMISSIONS = 0644;

// Does nothing if the memory object `name` (with the leading "/") exists. Otherwise makes a segment
// of `size` bytes in an unnamed file, allocates all its pages, makes it readable by all whatever
// the umask, and then links it to the name. A creator that dies before that leaves nothing. If
// another creator was faster, its segment stays.
//
// Also does nothing where the system does not support or permit this: attaching with open_or_create
// then creates the segment in several steps, or fails with the reason. Throws std::runtime_error if
// there is no room.
void createSegment(const std::string& name, std::size_t size);

}  // namespace core_utils

#endif
