#include "shared_memory/segment_creation.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <new>

#include "shared_memory/segment_check.h"
#include "shared_memory/segment_lock.h"

namespace core_utils {

namespace {

// Bytes before the segment's manager. Boost keeps the segment's state in the first four.
constexpr std::size_t PREFIX = boost::interprocess::ipcdetail::shmem_open_or_create<
    Segment::memory_algorithm>::type::ManagedOpenOrCreateUserOffset;
constexpr std::uint32_t FINISHED = 2;

// Closes the descriptor, if it is one.
struct sDescriptor {
    const int number;

    ~sDescriptor() {
        if (number >= 0) ::close(number);
    }
};

bool isMissing(const std::string& name) {
    const sDescriptor existing{shm_open(name.c_str(), O_RDONLY, 0)};
    return existing.number < 0 && errno == ENOENT;
}

bool initialise(int descriptor, std::size_t size) {
    void* memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) return false;
    new (static_cast<unsigned char*>(memory) + PREFIX) Segment::segment_manager(size - PREFIX);
    *static_cast<std::uint32_t*>(memory) = FINISHED;
    munmap(memory, size);
    return true;
}

}  // namespace

void createSegment(const std::string& name, std::size_t size) {
    if (!isMissing(name)) return;
    const sDescriptor file{
        open(SHARED_MEMORY_FOLDER, O_TMPFILE | O_RDWR | O_CLOEXEC, SEGMENT_PERMISSIONS)};
    if (file.number < 0 || fchmod(file.number, SEGMENT_PERMISSIONS) != 0 ||
        ftruncate(file.number, static_cast<off_t>(size)) != 0) {
        return;
    }
    reservePages(file.number, size);
    if (!initialise(file.number, size)) return;
    // Fails if another creator was faster; its segment is as good.
    linkat(AT_FDCWD, ("/proc/self/fd/" + std::to_string(file.number)).c_str(), AT_FDCWD,
           (SHARED_MEMORY_FOLDER + name).c_str(), AT_SYMLINK_FOLLOW);
}

}  // namespace core_utils
