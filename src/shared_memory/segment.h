// The attached segment and its two process-shared mutexes.
#ifndef SHARED_MEMORY_SEGMENT_H
#define SHARED_MEMORY_SEGMENT_H

#include <pthread.h>
#include <sys/types.h>

#include <boost/interprocess/managed_shared_memory.hpp>
#include <cstddef>
#include <cstdint>
#include <string>

namespace core_utils {

using SegmentManager = boost::interprocess::managed_shared_memory::segment_manager;

// The mapping of a segment, or of a private copy of it, in this process.
struct sArea {
    unsigned char* base;
    std::size_t size;  // bytes
    SegmentManager* manager;

    std::uint32_t offsetOf(const void* address) const {
        return static_cast<std::uint32_t>(static_cast<const unsigned char*>(address) - base);
    }

    // True if all `bytes` from `first` on lie inside. Peers may leave anything in an object, so
    // check each pointer before following it.
    bool contains(const void* first, std::size_t bytes) const {
        const auto begin = reinterpret_cast<std::uintptr_t>(first);
        const auto start = reinterpret_cast<std::uintptr_t>(base);
        return begin >= start && bytes <= size && begin - start <= size - bytes;
    }
};

// Boost's segment, with access to its memory object and its mutexes: needed to take over the locks
// of dead processes and to map private copies.
class Segment : public boost::interprocess::managed_shared_memory {
  public:
    using basic_managed_shared_memory::basic_managed_shared_memory;
    Segment(const Segment&) = delete;
    Segment& operator=(const Segment&) = delete;
    ~Segment();

    // Opens the memory object `name` (with the leading "/") that this segment has just attached to.
    // Throws std::runtime_error if it was removed or replaced in the meantime.
    void openMemoryObject(const std::string& name);

    int descriptor() const { return mDescriptor; }
    ino_t id() const { return mId; }  // inode number of the memory object

    sArea area() const {
        return {static_cast<unsigned char*>(get_address()), get_size(), get_segment_manager()};
    }

    // The segment's own lock; every access holds it.
    pthread_mutex_t& lock() const;
    // The heap's lock; allocating holds it, with or without the segment's.
    pthread_mutex_t& heapLock() const;

  private:
    int mDescriptor = -1;
    ino_t mId = 0;
};

}  // namespace core_utils

#endif
