#include "shared_memory/segment_check.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <stdexcept>

namespace core_utils {

namespace {

// The first word of a managed segment is its state: 0 and 1 until its creator has finished.
constexpr std::uint32_t LAST_UNFINISHED_STATE = 1;
// Most bytes of the memory object that the segment's own size does not count.
constexpr std::size_t LARGEST_PREFIX = 4096;
constexpr int CREATOR_PATIENCE_MS = 1000;

// The segment's memory object, opened if it exists.
class CSegmentFile {
  public:
    explicit CSegmentFile(const std::string& name)
        : mDescriptor(shm_open(name.c_str(), O_RDWR, 0)) {}
    CSegmentFile(const CSegmentFile&) = delete;
    CSegmentFile& operator=(const CSegmentFile&) = delete;
    ~CSegmentFile() {
        if (exists()) ::close(mDescriptor);
    }

    bool exists() const { return mDescriptor >= 0; }
    int descriptor() const { return mDescriptor; }

    std::size_t size() const {
        struct stat status {};
        return fstat(mDescriptor, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
    }

    std::uint64_t id() const {
        struct stat status {};
        return fstat(mDescriptor, &status) == 0 ? status.st_ino : 0;
    }

    bool isFinished() const {
        std::uint32_t state = 0;
        return pread(mDescriptor, &state, sizeof state, 0) == sizeof state &&
               state > LAST_UNFINISHED_STATE;
    }

  private:
    const int mDescriptor;
};

void waitForCreator(const CSegmentFile& file) {
    constexpr timespec ONE_MS{0, 1'000'000};
    for (int waited = 0; !file.isFinished(); ++waited) {
        // A creator that gave up leaves one byte; attaching reports it.
        if (file.size() == 1) return;
        if (waited == CREATOR_PATIENCE_MS) {
            throw std::runtime_error("its creator never finished it; remove it and restart");
        }
        nanosleep(&ONE_MS, nullptr);
    }
}

void requireRoom(std::size_t size) {
    struct statvfs space {};
    // A file system without a limit of its own has no blocks.
    if (statvfs(SHARED_MEMORY_FOLDER, &space) != 0 || space.f_blocks == 0) return;
    if (space.f_bavail * space.f_bsize < size) throw std::runtime_error("no room to create it");
}

}  // namespace

std::string memoryObjectName(const std::string& segment) {
    return segment.rfind('/', 0) == 0 ? segment : "/" + segment;
}

std::uint64_t memoryObjectId(const std::string& name) {
    return CSegmentFile(name).id();
}

void checkBeforeAttaching(const std::string& name, std::size_t size) {
    const CSegmentFile file(name);
    if (file.exists()) {
        waitForCreator(file);
    } else {
        requireRoom(size);
    }
}

void checkAfterAttaching(const std::string& name, std::size_t size) {
    const CSegmentFile file(name);
    if (!file.exists() || file.size() < size || file.size() - size > LARGEST_PREFIX) {
        throw std::runtime_error("its header says another size; is it of the other word size?");
    }
    reservePages(file.descriptor(), file.size());
}

// Not posix_fallocate(): where the file system cannot reserve, a C library may write zeros instead,
// over what peers store at that moment. Such a file system has no limit to run into either.
void reservePages(int descriptor, std::size_t size) {
    int result = 0;
    do {
        result = fallocate(descriptor, 0, 0, static_cast<off_t>(size));
    } while (result != 0 && errno == EINTR);
    if (result != 0 && errno != EOPNOTSUPP) {
        throw std::runtime_error("no room for all of its pages");
    }
}

}  // namespace core_utils
