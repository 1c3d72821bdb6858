// A stdio stream whose every operation holds a mutex: what the configuration files and the log
// files are read and written through.
#ifndef STORAGE_LOCKED_FILE_H
#define STORAGE_LOCKED_FILE_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <string_view>

namespace core_utils {

static_assert(sizeof(off_t) == sizeof(std::int64_t), "compile with -D_FILE_OFFSET_BITS=64");

// Owns one stream, closed after construction and closed by the destructor.
//
// Any thread may call any operation; each takes the mutex for its own duration only, so a
// sequence of them is not atomic. Operations return false on failure, and on a closed file.
class CLockedFile {
  public:
    CLockedFile() = default;
    CLockedFile(const CLockedFile&) = delete;
    CLockedFile& operator=(const CLockedFile&) = delete;
    ~CLockedFile() { close(); }

    // `mode` as fopen takes it: "r", "w" or "a", with "+" to read and write. Never waits for the
    // other end of a FIFO or for a device. False if a stream is already open, which then stays.
    bool open(const char* path, const char* mode);

    // Has what was written since the last flush put to storage, then closes. False if any of it
    // failed; the file is closed all the same.
    bool close();

    bool isOpen() const;

    // As opposed to a directory, a device, a FIFO or a socket.
    bool isRegular() const;

    // From here on every write reaches the kernel before it returns.
    bool setUnbuffered();

    // Puts pending writes to storage, then reads exactly `size` bytes; false on end of file.
    bool readBlock(void* buffer, std::size_t size);

    // Reads up to `size` bytes into `buffer` and sets `read` to their number, which is less only
    // at the end of the file. False on a read error.
    bool readUpTo(char* buffer, std::size_t size, std::size_t& read);

    // Writes `size` bytes and puts them to storage.
    bool writeBlock(const void* buffer, std::size_t size);

    // Hands `text` to the kernel, not yet to storage: close() or flush() does that.
    bool writeText(std::string_view text);

    // Puts `text` in the place of `length` bytes as changeDurably() does. Moves the position.
    // Throws std::bad_alloc, and has then changed nothing.
    bool replace(std::int64_t offset, std::int64_t length, std::string_view text);

    // Puts what was written to storage.
    bool flush();

    // `whence` as fseek takes it. Clears an earlier read error.
    bool seek(std::int64_t offset, int whence);
    bool rewind();
    bool getPosition(fpos_t& position);
    bool setPosition(const fpos_t& position);

    // Cuts the file at `offset` bytes; prints the error number on failure. The position stays.
    bool truncate(std::int64_t offset);

    // In bytes.
    bool getSize(std::int64_t& size);

    // True when no byte follows the position, which stays.
    bool isAtEnd();

  private:
    bool flushLocked();

    mutable std::mutex mMutex;
    std::FILE* mpStream = nullptr;
    std::string mPath;
    bool mbStored = true;  // nothing was written since the last flush
};

}  // namespace core_utils

#endif
