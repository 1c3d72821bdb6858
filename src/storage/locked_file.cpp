#include "storage/locked_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <exception>

#include "storage/durable_change.h"

namespace core_utils {

namespace {
using Lock = std::lock_guard<std::mutex>;

// The flags of open() for a mode of fopen(), or -1 for an unknown mode.
int flagsOf(const char* mode) {
    const bool update = std::strchr(mode, '+') != nullptr;
    switch (mode[0]) {
        case 'r':
            return update ? O_RDWR : O_RDONLY;
        case 'w':
            return (update ? O_RDWR : O_WRONLY) | O_CREAT | O_TRUNC;
        case 'a':
            return (update ? O_RDWR : O_WRONLY) | O_CREAT | O_APPEND;
        default:
            return -1;
    }
}
}  // namespace

bool CLockedFile::open(const char* path, const char* mode) {
    const Lock lock(mMutex);
    if (mpStream != nullptr || path == nullptr || mode == nullptr) return false;
    const int flags = flagsOf(mode);
    if (flags < 0) return false;
    try {
        mPath = path;
    } catch (const std::exception&) {
        return false;
    }
    const int descriptor = ::open(path, flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0666);
    if (descriptor < 0) return false;
    mpStream = fdopen(descriptor, mode);
    if (mpStream == nullptr) ::close(descriptor);
    mbStored = (flags & O_CREAT) == 0;
    return mpStream != nullptr;
}

bool CLockedFile::close() {
    const Lock lock(mMutex);
    if (mpStream == nullptr) return false;
    const bool stored = mbStored || flushLocked();
    const bool closed = std::fclose(mpStream) == 0;
    mpStream = nullptr;
    mPath.clear();
    return stored && closed;
}

bool CLockedFile::isOpen() const {
    const Lock lock(mMutex);
    return mpStream != nullptr;
}

bool CLockedFile::isRegular() const {
    const Lock lock(mMutex);
    struct stat status {};
    return mpStream != nullptr && fstat(fileno(mpStream), &status) == 0 && S_ISREG(status.st_mode);
}

bool CLockedFile::setUnbuffered() {
    const Lock lock(mMutex);
    if (mpStream == nullptr) return false;
    std::setbuf(mpStream, nullptr);
    return true;
}

bool CLockedFile::readBlock(void* buffer, std::size_t size) {
    const Lock lock(mMutex);
    return mpStream != nullptr && flushLocked() && std::fread(buffer, 1, size, mpStream) == size;
}

bool CLockedFile::readUpTo(char* buffer, std::size_t size, std::size_t& read) {
    const Lock lock(mMutex);
    if (mpStream == nullptr) return false;
    read = std::fread(buffer, 1, size, mpStream);
    return std::ferror(mpStream) == 0;
}

bool CLockedFile::writeBlock(const void* buffer, std::size_t size) {
    const Lock lock(mMutex);
    if (mpStream == nullptr) return false;
    mbStored = false;
    const bool written = std::fwrite(buffer, 1, size, mpStream) == size;
    const bool stored = flushLocked();
    if (std::ferror(mpStream) == 0) return written && stored;
    std::clearerr(mpStream);
    return false;
}

bool CLockedFile::replace(std::int64_t offset, std::int64_t length, std::string_view text) {
    const Lock lock(mMutex);
    // fflush() also drops the bytes that the stream has read ahead.
    return mpStream != nullptr && std::fflush(mpStream) == 0 &&
           changeDurably(fileno(mpStream), mPath.c_str(), offset, length, text);
}

bool CLockedFile::flush() {
    const Lock lock(mMutex);
    return mpStream != nullptr && flushLocked();
}

bool CLockedFile::seek(std::int64_t offset, int whence) {
    const Lock lock(mMutex);
    if (mpStream == nullptr) return false;
    std::clearerr(mpStream);
    return fseeko(mpStream, offset, whence) == 0;
}

bool CLockedFile::rewind() {
    return seek(0, SEEK_SET);
}

bool CLockedFile::getPosition(fpos_t& position) {
    const Lock lock(mMutex);
    return mpStream != nullptr && fgetpos(mpStream, &position) == 0;
}

bool CLockedFile::setPosition(const fpos_t& position) {
    const Lock lock(mMutex);
    return mpStream != nullptr && fsetpos(mpStream, &position) == 0;
}

bool CLockedFile::truncate(std::int64_t offset) {
    const Lock lock(mMutex);
    if (mpStream == nullptr) return false;
    mbStored = false;
    if (ftruncate(fileno(mpStream), offset) == 0) return true;
    std::printf("truncate fail : %d \n", errno);
    return false;
}

bool CLockedFile::getSize(std::int64_t& size) {
    const Lock lock(mMutex);
    struct stat status {};
    if (mpStream == nullptr || fstat(fileno(mpStream), &status) != 0) return false;
    size = status.st_size;
    return true;
}

bool CLockedFile::isAtEnd() {
    const Lock lock(mMutex);
    fpos_t position;
    if (mpStream == nullptr || fgetpos(mpStream, &position) != 0) return false;
    char probe = 0;
    const bool atEnd = std::fread(&probe, 1, 1, mpStream) == 0 && std::feof(mpStream) != 0;
    return fsetpos(mpStream, &position) == 0 && atEnd;
}

bool CLockedFile::flushLocked() {
    mbStored = std::fflush(mpStream) == 0 && fsync(fileno(mpStream)) == 0;
    return mbStored;
}

}  // namespace core_utils
