// The attached segment, and where its two process-shared mutexes lie.
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

// A segment, or a private copy of one, as it lies in this process.
struct sArea {
    unsigned char* base;
    std::size_t size;  // bytes
    SegmentManager* manager;

    std::uint32_t offsetOf(const void* address) const {
        return static_cast<std::uint32_t>(static_cast<const unsigned char*>(address) - base);
    }

    // True if all `bytes` from `first` on lie inside. Peers may leave anything in an object; a
    // pointer is followed only after this.
    bool contains(const void* first, std::size_t bytes) const {
        const auto begin = reinterpret_cast<std::uintptr_t>(first);
        const auto start = reinterpret_cast<std::uintptr_t>(base);
        return begin >= start && bytes <= size && begin - start <= size - bytes;
    }
};

// Boost's segment, with what taking its lock over and changing it as a whole need.
class Segment : public boost::interprocess::managed_shared_memory {
  public:
    using basic_managed_shared_memory::basic_managed_shared_memory;
    Segment(const Segment&) = delete;
    Segment& operator=(const Segment&) = delete;
    ~Segment();

    // Opens the memory object `name` (with the leading "/"), to which this segment has just been
    // attached. Throws std::runtime_error if another has come to have the name.
    void openMemoryObject(const std::string& name);

    int descriptor() const { return mDescriptor; }
    ino_t id() const { return mId; }  // of the memory object

    sArea area() const {
        return {static_cast<unsigned char*>(get_address()), get_size(), get_segment_manager()};
    }

    // Every access is made under this one.
    pthread_mutex_t& lock() const;
    // Allocating takes this one, after the other or without it.
    pthread_mutex_t& heapLock() const;

  private:
    int mDescriptor = -1;
    ino_t mId = 0;
};

}  // namespace core_utils

#endif
