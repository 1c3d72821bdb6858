// What makes attaching to a segment safe that others may have left in any state. Names are those
// of the memory object, with the leading "/", except where one is made of a segment's.
#ifndef SHARED_MEMORY_SEGMENT_CHECK_H
#define SHARED_MEMORY_SEGMENT_CHECK_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace core_utils {

inline constexpr char SHARED_MEMORY_FOLDER[] = "/dev/shm";

std::string memoryObjectName(const std::string& segment);

// Tells one memory object from another that comes to have its name; 0 if none has it.
std::uint64_t memoryObjectId(const std::string& name);

// Before attaching. Waits up to a second for another process to finish creating the segment;
// without a segment, makes sure that there is room for one of `size` bytes, 0 for none. Throws
// std::runtime_error: attaching would wait for ever, or creating would end in SIGBUS.
void checkBeforeAttaching(const std::string& name, std::size_t size);

// After attaching. Makes sure that the segment really has the `size` bytes that its header claims,
// and not many more, and gives every page its memory now: a later write to a full file system
// would end in SIGBUS. What a peer cuts off while the segment is attached still does. Throws
// std::runtime_error if the sizes differ or memory is short.
void checkAfterAttaching(const std::string& name, std::size_t size);

// Gives the `size` bytes of an open memory object their memory, where the file system can run out
// of it. Throws std::runtime_error if it is short.
void reservePages(int descriptor, std::size_t size);

}  // namespace core_utils

#endif
