// Checks that make it safe to attach to a segment, whatever state other processes left it in.
// `name` is that of the memory object, with the leading "/".
#ifndef SHARED_MEMORY_SEGMENT_CHECK_H
#define SHARED_MEMORY_SEGMENT_CHECK_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace core_utils {

inline constexpr char SHARED_MEMORY_FOLDER[] = "/dev/shm";

// The name of the memory object of a segment: with a leading "/".
std::string memoryObjectName(const std::string& segment);

// The inode number, which tells a memory object from a later one of the same name; 0 if there is no
// such object.
std::uint64_t memoryObjectId(const std::string& name);

// Call it before attaching. Waits up to 1 s for another process to finish creating the segment. If
// there is no segment, checks that there is room for `size` bytes; 0 skips that. Throws
// std::runtime_error where attaching would wait for ever or creating would end in SIGBUS.
void checkBeforeAttaching(const std::string& name, std::size_t size);

// Call it after attaching. Checks that the memory object has the `size` bytes that the segment's
// header states and not many more, and allocates every page now: a later write on a full file
// system would end in SIGBUS. A peer that truncates an attached segment still causes that. Throws
// std::runtime_error if the sizes differ or memory is short.
void checkAfterAttaching(const std::string& name, std::size_t size);

// Allocates the `size` bytes of an open memory object, if its file system supports that. Throws
// std::runtime_error if memory is short.
void reservePages(int descriptor, std::size_t size);

}  // namespace core_utils

#endif
