#include "ini_file/chunk_reader.h"

#include <algorithm>

namespace core_utils {

CChunkReader::CChunkReader(CLockedFile& file, std::int64_t offset)
    : mFile(file), mBegin(offset), mbFailed(!file.seek(offset, SEEK_SET)) {}

bool CChunkReader::next() {
    mBegin = end();
    mLength = 0;
    while (mLength < CHUNK_SIZE && (mWindowNext < mWindowEnd || fillWindow())) {
        const char* first = mWindow + mWindowNext;
        const std::size_t available = std::min(mWindowEnd - mWindowNext, CHUNK_SIZE - mLength);
        const char* lineEnd = std::find(first, first + available, '\n');
        const bool lineEnds = lineEnd != first + available;
        const char* last = lineEnds ? lineEnd + 1 : lineEnd;
        std::copy(first, last, mChunk + mLength);
        mLength += static_cast<std::size_t>(last - first);
        mWindowNext += static_cast<std::size_t>(last - first);
        if (lineEnds) break;
    }
    return mLength > 0 && !mbFailed;
}

bool CChunkReader::fillWindow() {
    if (mbFailed || mbLastWindow) return false;
    mWindowNext = 0;
    mbFailed = !mFile.readUpTo(mWindow, CHUNK_SIZE, mWindowEnd);
    mbLastWindow = mWindowEnd < CHUNK_SIZE;
    return !mbFailed && mWindowEnd > 0;
}

}  // namespace core_utils
