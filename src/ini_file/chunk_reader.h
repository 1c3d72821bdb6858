// The scanner beneath CFileConfig: cuts a file into the chunks that its syntax is made of.
#ifndef INI_FILE_CHUNK_READER_H
#define INI_FILE_CHUNK_READER_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "storage/locked_file.h"

namespace core_utils {

// Gives, one after the other, exactly the chunks that fgets(buffer, 81) would: up to and
// including a line end, and 80 characters at most. The stream is unbuffered, where fgets costs a
// system call a character; this reads a window of 80 and lets its rest open the next chunk.
//
// Borrows the file, whose position belongs to the reader while chunks are drawn.
class CChunkReader {
  public:
    static constexpr std::size_t CHUNK_SIZE = 80;

    // Starts at `offset` bytes into the file.
    CChunkReader(CLockedFile& file, std::int64_t offset);

    // Advances to the next chunk, which is never empty. False at the end and on a read error.
    bool next();

    // True if a read or the first positioning failed, as opposed to the end of the file.
    bool failed() const { return mbFailed; }

    // The current chunk, valid until next(). It may hold NUL characters.
    std::string_view chunk() const { return {mChunk, mLength}; }
    std::int64_t begin() const { return mBegin; }
    std::int64_t end() const { return mBegin + static_cast<std::int64_t>(mLength); }

    // True if the current chunk is cut off in its line and the line goes on in the next one.
    bool isCutOff() const { return mLength == CHUNK_SIZE && mChunk[mLength - 1] != '\n'; }

  private:
    bool fillWindow();

    CLockedFile& mFile;
    char mChunk[CHUNK_SIZE + 1] = {};
    char mWindow[CHUNK_SIZE + 1] = {};
    std::size_t mLength = 0;      // of the chunk
    std::size_t mWindowNext = 0;  // first unread character of the window
    std::size_t mWindowEnd = 0;
    std::int64_t mBegin;
    bool mbFailed;
    bool mbLastWindow = false;
};

}  // namespace core_utils

#endif
