// The scanner beneath CFileConfig: cuts a file into the chunks that its syntax is made of.
#ifndef INI_FILE_CHUNK_READER_H
#define INI_FILE_CHUNK_READER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "storage/locked_file.h"

namespace core_utils {

// Gives, one after the other, exactly the chunks that fgets(buffer, 81) would: up to and
// including a line end, and 80 characters at most. The stream is unbuffered, where fgets costs a
// system call a character; this reads ahead one page and shows the chunks in it.
//
// Borrows the file, whose position belongs to the reader while chunks are drawn. Made for the
// stack, of which it takes little more than its page.
class CChunkReader {
  public:
    static constexpr std::size_t CHUNK_SIZE = 80;
    static constexpr std::size_t WINDOW_SIZE = 4096;

    // Starts at the beginning of the file or, where there is one, of its image in memory.
    explicit CChunkReader(CLockedFile& file, const std::string* image = nullptr)
        : mFile(file), mpImage(image) {
        seek(0);
    }

    // Goes on `offset` bytes into the file; the current chunk is gone.
    void seek(std::int64_t offset);

    // Advances to the next chunk, which is never empty. False at the end, and where a read failed.
    bool next();

    // After next() gave false: whether a read or the positioning failed, as opposed to the end of
    // the file.
    bool failed() const { return mbFailed; }

    // The current chunk, valid until next(). It may hold NUL characters.
    std::string_view chunk() const { return {mWindow + mFirst, mLength}; }
    std::int64_t begin() const { return mBegin; }
    std::int64_t end() const { return mBegin + static_cast<std::int64_t>(mLength); }

    // True if the current chunk is cut off in its line and the line goes on in the next one.
    bool isCutOff() const { return mLength == CHUNK_SIZE && chunk().back() != '\n'; }

  private:
    bool measure();
    void refill();

    CLockedFile& mFile;
    const std::string* mpImage;
    std::int64_t mBegin;  // of the chunk in the file
    std::size_t mFirst;   // of the chunk in the window
    std::size_t mLength;  // of the chunk
    std::size_t mWindowEnd;
    bool mbFailed;
    bool mbExhausted;  // no more to read
    char mWindow[WINDOW_SIZE];
};

}  // namespace core_utils

#endif
