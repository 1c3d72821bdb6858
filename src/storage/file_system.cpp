#include "storage/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <new>
#include <string_view>

namespace core_utils {

namespace {

constexpr std::size_t MAX_PATH_LENGTH = 255;
constexpr std::int64_t MAX_COPY_SIZE = 0x7FFFFFFF;  // bytes: the limit of a block on 32-bit boards
constexpr std::string_view SEPARATORS = "/\\";

struct sCloser {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, sCloser>;

// As fopen(), but does not wait for the other end of a FIFO.
Stream openStream(const std::string& path, int flags, const char* mode) {
    const int descriptor = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, 0666);
    if (descriptor < 0) return nullptr;
    Stream stream(fdopen(descriptor, mode));
    if (stream == nullptr) ::close(descriptor);
    return stream;
}

// A file's contents in one block.
struct sBlock {
    std::unique_ptr<char[]> pData;
    std::size_t size = 0;
};

bool readWhole(const std::string& path, sBlock& block) {
    const Stream stream = openStream(path, O_RDONLY, "r");
    struct stat status {};
    if (stream == nullptr || fstat(fileno(stream.get()), &status) != 0) return false;
    if (!S_ISREG(status.st_mode) || status.st_size > MAX_COPY_SIZE) return false;
    block.size = static_cast<std::size_t>(status.st_size);
    block.pData.reset(new (std::nothrow) char[block.size]);
    return block.pData != nullptr &&
           std::fread(block.pData.get(), 1, block.size, stream.get()) == block.size;
}

}  // namespace

bool CFileSystem::renameFile(const std::string& oldPath, const std::string& newPath) {
    return std::rename(oldPath.c_str(), newPath.c_str()) == 0;
}

bool CFileSystem::deleteFile(const std::string& path) {
    return unlink(path.c_str()) == 0;
}

bool CFileSystem::makeDirectory(const std::string& path) {
    return mkdir(path.c_str(), 0777) == 0 || errno == EEXIST;
}

bool CFileSystem::removeDirectory(const std::string& path) {
    return rmdir(path.c_str()) == 0;
}

bool CFileSystem::copyFile(const std::string& source, const std::string& destination,
                           bool failIfExists) {
    // First of all: opening the destination empties it, and it may be the source.
    sBlock block;
    if (!readWhole(source, block)) return false;
    if (failIfExists && openStream(destination, O_RDONLY, "r") != nullptr) return false;

    Stream target = openStream(destination, O_RDWR | O_CREAT | O_TRUNC, "w+b");
    if (target == nullptr) return false;
    const bool written = std::fwrite(block.pData.get(), 1, block.size, target.get()) == block.size;
    const bool closed = std::fclose(target.release()) == 0;
    sync();
    return written && closed;
}

bool CFileSystem::makeDirectoryPath(const std::string& path) {
    if (path.empty() || path.size() > MAX_PATH_LENGTH) return false;
    std::string prefix = path.front() == '/' ? "/" : "";
    std::size_t begin = path.find_first_not_of(SEPARATORS);
    while (begin != std::string::npos) {
        const std::size_t end = path.find_first_of(SEPARATORS, begin);
        prefix.append(path, begin, end - begin).append("/");
        if (!makeDirectory(prefix)) break;
        begin = path.find_first_not_of(SEPARATORS, end);
    }
    return true;
}

}  // namespace core_utils
