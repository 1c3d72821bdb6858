#include "shared_memory/segment.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/interprocess/sync/interprocess_mutex.hpp>
#include <boost/interprocess/sync/interprocess_recursive_mutex.hpp>
#include <stdexcept>

#include "shared_memory/lock_holder.h"

namespace core_utils {

namespace bip = boost::interprocess;

// Boost's mutexes are those of the C library, and each stands first in its part of the manager.
static_assert(sizeof(bip::interprocess_mutex) == sizeof(pthread_mutex_t));
static_assert(sizeof(bip::interprocess_recursive_mutex) == sizeof(pthread_mutex_t));

Segment::~Segment() {
    if (mDescriptor >= 0) ::close(mDescriptor);
}

void Segment::openMemoryObject(const std::string& name) {
    mDescriptor = shm_open(name.c_str(), O_RDWR | O_CLOEXEC, 0);
    struct stat status {};
    if (mDescriptor < 0 || fstat(mDescriptor, &status) != 0) {
        throw std::runtime_error("it was removed while attaching");
    }
    mId = status.st_ino;
    if (!mayHaveMapped(getpid(), mId)) throw std::runtime_error("it was replaced while attaching");
}

pthread_mutex_t& Segment::lock() const {
    auto* manager = reinterpret_cast<unsigned char*>(get_segment_manager());
    return *reinterpret_cast<pthread_mutex_t*>(manager +
                                               sizeof(SegmentManager::segment_manager_base_type));
}

pthread_mutex_t& Segment::heapLock() const {
    return *reinterpret_cast<pthread_mutex_t*>(get_segment_manager());
}

}  // namespace core_utils
