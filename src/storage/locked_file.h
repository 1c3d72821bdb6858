// A stdio stream with a mutex around each operation. Configuration files and log files use it.
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

// Owns at most one stream. There is none after construction; the destructor closes it.
//
// Any thread may call any operation. Each operation locks the mutex for its own duration only, so a
// sequence of operations is not atomic. They return true on success and false on failure or if the
// file is closed.
class CLockedFile {
  public:
    CLockedFile() = default;
    CLockedFile(const CLockedFile&) = delete;
    CLockedFile& operator=(const CLockedFile&) = delete;
    ~CLockedFile() { close(); }

    // `mode` is that of fopen: "r", "w" or "a", with "+" to read and write. Never blocks, not even
    // on a FIFO or a device. Returns false if a stream is open already, which then stays open.
    bool open(const char* path, const char* mode);

    // Forces unsaved writes to storage and closes the stream. The stream is closed even if this
    // returns false.
    bool close();

    bool isOpen() const;

    // False for a directory, a device, a FIFO or a socket.
    bool isRegular() const;

    // Switches buffering off: from now on every write reaches the kernel before it returns.
    bool setUnbuffered();

    // Forces pending writes to storage, then reads exactly `size` bytes. Returns false if the file
    // ends before them.
    bool readBlock(void* buffer, std::size_t size);

    // Reads up to `size` bytes and sets `read` to their number. It is less than `size` only at the
    // end of the file or after an error, which returns false.
    bool readUpTo(char* buffer, std::size_t size, std::size_t& read);

    // Writes `size` bytes and forces them to storage.
    bool writeBlock(const void* buffer, std::size_t size);

    // Replaces `length` bytes at `offset` by `text` as changeDurably() does. The position is
    // undefined afterwards. Throws std::bad_alloc without having changed anything.
    bool replace(std::int64_t offset, std::int64_t length, std::string_view text);

    // Forces all writes to storage.
    bool flush();

    // `offset` is in bytes, `whence` is that of fseek. Clears an earlier read error.
    bool seek(std::int64_t offset, int whence);
    bool rewind();
    bool getPosition(fpos_t& position);
    bool setPosition(const fpos_t& position);

    // Cuts the file to `offset` bytes. Keeps the position. Prints the error number on failure.
    bool truncate(std::int64_t offset);

    // `size` is in bytes.
    bool getSize(std::int64_t& size);

    // Returns true if no byte follows the position. Keeps the position.
    bool isAtEnd();

  private:
    bool flushLocked();

    mutable std::mutex mMutex;
    std::FILE* mpStream = nullptr;
    std::string mPath;
    bool mbStored = true;  // false after a write until the next flush
};

}  // namespace core_utils

#endif
