// The scanner of CFileConfig: splits a configuration file into chunks of at most 80 characters.
#ifndef INI_FILE_CHUNK_READER_H
#define INI_FILE_CHUNK_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "ini_file/chunk_syntax.h"
#include "storage/locked_file.h"

namespace core_utils {

// Returns the same chunks as repeated fgets(buffer, 81): each ends behind a line feed or after 80
// characters. It reads 4096 bytes at a time, because on the unbuffered stream fgets would make one
// system call per character.
//
// Borrows the file, which must outlive the reader. Nobody else may move the file position while the
// reader is in use. One thread only. An object takes about 4.2 KB of the stack.
class CChunkReader {
  public:
    static constexpr std::size_t WINDOW_SIZE = 4096;

    // Starts at the beginning of `image` if it is not null, otherwise of the file.
    explicit CChunkReader(CLockedFile& file, const std::string* image = nullptr)
        : mFile(file), mpImage(image) {
        seek(0);
    }

    // The next chunk begins `offset` bytes into the file. There is no current chunk until next().
    void seek(std::int64_t offset);

    // Advances to the next chunk, which is never empty. Returns false at the end of the file and
    // after a failed read.
    bool next();

    // After next() returned false: true if a read or a seek failed, false at the end of the file.
    bool failed() const { return mbFailed; }

    // The current chunk, valid until next() or seek(). It may contain NUL characters. begin() and
    // end() are its offsets in the file, in bytes.
    std::string_view chunk() const { return {mWindow + mFirst, mLength}; }
    std::int64_t begin() const { return mBegin; }
    std::int64_t end() const { return mBegin + static_cast<std::int64_t>(mLength); }

    // True if the current chunk has 80 characters and its line is longer.
    bool isCutOff() const { return mLength == CHUNK_SIZE && chunk().back() != '\n'; }

  private:
    bool measure();
    void refill();

    CLockedFile& mFile;
    const std::string* mpImage;
    std::int64_t mBegin;  // offset of the chunk in the file
    std::size_t mFirst;   // offset of the chunk in the window
    std::size_t mLength;  // of the chunk
    std::size_t mWindowEnd;
    bool mbFailed;
    bool mbExhausted;  // nothing is left to read behind the window
    char mWindow[WINDOW_SIZE];
};

}  // namespace core_utils

#endif
