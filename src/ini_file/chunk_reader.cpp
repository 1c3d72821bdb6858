#include "ini_file/chunk_reader.h"

#include <algorithm>
#include <cstring>

namespace core_utils {

void CChunkReader::seek(std::int64_t offset) {
    mBegin = offset;
    mFirst = mLength = mWindowEnd = 0;
    mbFailed = mbExhausted = mpImage == nullptr && !mFile.seek(offset, SEEK_SET);
}

bool CChunkReader::next() {
    mBegin = end();
    mFirst += mLength;
    if (measure()) return true;
    refill();
    // After a failed read, complete chunks are still returned, but not a chunk that may be cut.
    if (!measure() && mbFailed) mLength = 0;
    return mLength > 0;
}

// Finds the end of the chunk at `mFirst`. Returns true if all of it is in the window.
bool CChunkReader::measure() {
    const char* first = mWindow + mFirst;
    const std::size_t available = std::min(mWindowEnd - mFirst, CHUNK_SIZE);
    const auto* lineEnd = static_cast<const char*>(std::memchr(first, '\n', available));
    mLength = lineEnd != nullptr ? static_cast<std::size_t>(lineEnd - first) + 1 : available;
    return lineEnd != nullptr || available == CHUNK_SIZE;
}

// Moves the rest of the window to its front and fills the space behind it.
void CChunkReader::refill() {
    if (mbExhausted) return;
    const std::size_t rest = mWindowEnd - mFirst;
    std::memmove(mWindow, mWindow + mFirst, rest);
    mFirst = 0;
    std::size_t read = 0;
    if (mpImage != nullptr) {
        const std::size_t from = static_cast<std::size_t>(mBegin) + rest;
        read = mpImage->copy(mWindow + rest, WINDOW_SIZE - rest, from);
    } else {
        mbFailed = !mFile.readUpTo(mWindow + rest, WINDOW_SIZE - rest, read);
    }
    mWindowEnd = rest + read;
    mbExhausted = mbFailed || mWindowEnd < WINDOW_SIZE;
}

}  // namespace core_utils
