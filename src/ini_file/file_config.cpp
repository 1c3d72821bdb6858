#include "ini_file/file_config.h"

#include <pthread.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string_view>

#include "ini_file/chunk_reader.h"
#include "ini_file/chunk_syntax.h"
#include "ini_file/number_text.h"
#include "logging/logger.h"

namespace core_utils {

namespace {

constexpr std::size_t MAX_SECTION_LENGTH = 77;
constexpr int MAX_LINE_LENGTH = CHUNK_SIZE;
constexpr int VALUE_CAPACITY = 100;
constexpr int NUMBER_CAPACITY = 320;  // characters of the longest double with six decimals
constexpr int HEAD_CAPACITY = 256;    // line ends, header and line

// The last matching header. A new key goes behind it.
struct sHeaderPosition {
    std::int64_t begin = -1;
    std::int64_t end = -1;
};

// Returns true with `reader` on the chunk of `key`, or false at the end of the file or after a read
// error. A section may appear more than once: the first matching key counts.
bool findKey(CChunkReader& reader, std::string_view section, std::string_view key,
             sHeaderPosition& position) {
    bool inSection = false;
    while (reader.next()) {
        const std::string_view chunk = reader.chunk();
        if (isHeader(chunk)) {
            inSection = isHeaderOf(chunk, section);
            if (inSection) position = {reader.begin(), reader.end()};
        } else if (inSection && !key.empty() && keyOf(chunk) == key) {
            return true;
        }
    }
    return false;
}

void skipRestOfLine(CChunkReader& reader) {
    while (reader.isCutOff() && reader.next()) {
    }
}

// Appends the lines that a rewrite keeps of the rest of the file: key lines, comments, and headers
// with one blank line before each. Throws if there is no memory for them.
void appendRemainder(CChunkReader& reader, std::string& tail) {
    bool continuation = false;
    while (reader.next()) {
        const std::string_view chunk = reader.chunk();
        const eRewritten kind = whenRewritten(chunk);
        if (kind == eRewritten::KEPT_AS_HEADER && !continuation) tail += '\n';
        if (kind != eRewritten::DROPPED || continuation) tail += chunk;
        // Also after a line of 80 characters that is complete: this is part of the file format.
        continuation = chunk.size() == CHUNK_SIZE;
    }
}

// Posts a failed lookup to the maintenance log, if there is memory for the event.
void logMiss(const std::string& section, const std::string& key) {
    core_logger::CLogger* logger = core_logger::CLogger::getInstance();
    if (logger == nullptr || logger->getLevel() > core_logger::LEVEL_ERROR) return;
    char message[256];
    std::snprintf(message, sizeof message, "[TID:0x%0X] %s FAILED to read [%s]:[%s]",
                  static_cast<unsigned int>(pthread_self()), "read", section.c_str(), key.c_str());
    try {
        logger->log(
            new core_logger::CLogEvent(__LINE__, core_logger::LEVEL_ERROR, "CFileConfig", message));
    } catch (const std::exception&) {
    }
}

// The lookup of the typed readers. `type` is the word in the message: "str" or "int", which the
// float and double readers use too.
bool readToken(CFileConfig& file, const std::string& section, const std::string& key,
               const char* type, char (&value)[VALUE_CAPACITY]) {
    int size = VALUE_CAPACITY;
    if (file.readValue(section.c_str(), key.c_str(), value, &size)) return true;
    std::printf("[CFileConfig::read %s] FAILED to read [%s]:[%s]\n", type, section.c_str(),
                key.c_str());
    return false;
}

// As readToken(), but posts a failed lookup to the maintenance log. The int reader does not.
bool readLoggedToken(CFileConfig& file, const std::string& section, const std::string& key,
                     const char* type, char (&value)[VALUE_CAPACITY]) {
    if (readToken(file, section, key, type, value)) return true;
    logMiss(section, key);
    return false;
}

}  // namespace

bool CFileConfig::open(const char* path, const char* mode) {
    if (!mFile.open(path, mode)) return false;
    if (mFile.isRegular() && mFile.setUnbuffered()) return true;
    mFile.close();
    return false;
}

bool CFileConfig::open(const std::string& path, const std::string& mode) {
    return open(path.c_str(), mode.c_str());
}

bool CFileConfig::close() {
    if (mpBatch != nullptr) mpBatch->mbValid = false;
    return mFile.close();
}

bool CFileConfig::isOpen() const {
    return mFile.isOpen();
}

bool CFileConfig::readValue(const char* section, const char* key, char* buffer, int* ioSize) {
    if (ioSize == nullptr) return false;
    const int capacity = *ioSize;
    *ioSize = -1;
    if (!isUsable(section, key) || buffer == nullptr) return false;

    CChunkReader reader(mFile, image());
    sHeaderPosition position;
    if (!findKey(reader, section, key, position)) return false;

    const std::string_view value = valueOf(reader.chunk());
    if (value.empty()) {
        *ioSize = capacity;
        return false;
    }
    if (value.find('=') != std::string_view::npos) return false;

    const int length = static_cast<int>(value.size());
    *ioSize = length;
    if (capacity <= length) return false;
    value.copy(buffer, value.size());
    buffer[length] = '\0';
    return true;
}

bool CFileConfig::read(const std::string& section, const std::string& key, int& out) {
    char value[VALUE_CAPACITY];
    if (!readToken(*this, section, key, "int", value)) return false;
    // As atoi, but without undefined behaviour for numbers out of range.
    out = static_cast<int>(std::strtol(value, nullptr, 10));
    return true;
}

bool CFileConfig::read(const std::string& section, const std::string& key, std::string& out) {
    char value[VALUE_CAPACITY];
    if (!readLoggedToken(*this, section, key, "str", value)) return false;
    try {
        out = value;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

bool CFileConfig::read(const std::string& section, const std::string& key, float& out) {
    char value[VALUE_CAPACITY];
    if (!readLoggedToken(*this, section, key, "int", value)) return false;
    out = static_cast<float>(std::strtod(value, nullptr));
    return true;
}

bool CFileConfig::read(const std::string& section, const std::string& key, double& out) {
    char value[VALUE_CAPACITY];
    if (!readLoggedToken(*this, section, key, "int", value)) return false;
    out = toDouble(value);
    return true;
}

bool CFileConfig::writeValue(const char* section, const char* key, const char* value,
                             int valueLength, bool noCreate) {
    if (!isUsable(section, key) || value == nullptr || valueLength == 0) return false;

    char line[MAX_LINE_LENGTH + 1];
    const int length = std::snprintf(line, sizeof line, "%s=%s\n", key, value);
    // Part of the file format: a line of 81 characters is refused, a longer one is cut to 80.
    if (length < 0 || length == MAX_LINE_LENGTH + 1) return false;

    CChunkReader reader(mFile, image());
    sHeaderPosition position;
    if (findKey(reader, section, key, position)) {
        const std::int64_t begin = reader.begin();
        const std::size_t lengthBefore = reader.chunk().size();
        if (lengthBefore == std::strlen(line)) {
            return replace(begin, static_cast<std::int64_t>(lengthBefore), line);
        }
        skipRestOfLine(reader);
        return rewriteFrom(begin, line, reader);
    }
    if (reader.failed() || noCreate) return false;
    char head[HEAD_CAPACITY];
    std::snprintf(head, sizeof head, "[%s]\n%s", section, line);
    if (position.begin < 0) return append(head);
    reader.seek(position.end);
    return rewriteFrom(position.begin, head, reader);
}

bool CFileConfig::write(const std::string& section, const std::string& key, int value,
                        bool noCreate) {
    char text[NUMBER_CAPACITY];
    const int length = std::snprintf(text, sizeof text, "%d", value);
    return writeValue(section.c_str(), key.c_str(), text, length, noCreate);
}

bool CFileConfig::write(const std::string& section, const std::string& key,
                        const std::string& value, bool noCreate) {
    return writeValue(section.c_str(), key.c_str(), value.c_str(), static_cast<int>(value.size()),
                      noCreate);
}

bool CFileConfig::write(const std::string& section, const std::string& key, double value,
                        bool noCreate) {
    char text[NUMBER_CAPACITY];
    const int length = std::snprintf(text, sizeof text, "%.6f", value);
    return writeValue(section.c_str(), key.c_str(), text, length, noCreate);
}

bool CFileConfig::removeKey(const char* section, const char* key) {
    if (!isUsable(section, key)) return false;

    CChunkReader reader(mFile, image());
    sHeaderPosition position;
    if (!findKey(reader, section, key, position)) return false;
    const std::int64_t begin = reader.begin();
    skipRestOfLine(reader);
    return rewriteFrom(begin, "", reader);
}

bool CFileConfig::append(const char* section) {
    std::int64_t size = 0;
    char last = '\n';
    if (!getSize(size) || (size > 0 && !getLastCharacter(last))) return false;
    char text[HEAD_CAPACITY];
    std::snprintf(text, sizeof text, "%s\n%s", last == '\n' ? "" : "\n", section);
    return replace(size, 0, text);
}

bool CFileConfig::rewriteFrom(std::int64_t offset, const char* head, CChunkReader& rest) {
    try {
        std::string tail = head;
        appendRemainder(rest, tail);
        std::int64_t size = 0;
        if (!rest.failed()) return getSize(size) && replaceOrThrow(offset, size - offset, tail);
        std::puts("riSize = -1,2 ");
    } catch (const std::exception&) {
        if (mpBatch != nullptr) mpBatch->mbValid = false;
        std::puts("riSize = -1 ");
    }
    return false;
}

bool CFileConfig::replace(std::int64_t offset, std::int64_t length, std::string_view text) {
    try {
        return replaceOrThrow(offset, length, text);
    } catch (const std::exception&) {
        if (mpBatch != nullptr) mpBatch->mbValid = false;
        return false;
    }
}

bool CFileConfig::replaceOrThrow(std::int64_t offset, std::int64_t length, std::string_view text) {
    if (mpBatch == nullptr) return mFile.replace(offset, length, text);
    mpBatch->mImage.replace(static_cast<std::size_t>(offset), static_cast<std::size_t>(length),
                            text);
    return true;
}

bool CFileConfig::getSize(std::int64_t& size) {
    if (mpBatch == nullptr) return mFile.getSize(size);
    size = static_cast<std::int64_t>(mpBatch->mImage.size());
    return true;
}

bool CFileConfig::getLastCharacter(char& last) {
    std::size_t read = 0;
    if (mpBatch == nullptr) return mFile.seek(-1, SEEK_END) && mFile.readUpTo(&last, 1, read);
    last = mpBatch->mImage.back();
    return true;
}

bool CFileConfig::isUsable(const char* section, const char* key) const {
    return isOpen() && (mpBatch == nullptr || mpBatch->mbValid) && section != nullptr &&
           key != nullptr && std::strlen(section) <= MAX_SECTION_LENGTH;
}

CFileConfig::CBatch::CBatch(CFileConfig& file) : mFile(file) {
    mFile.mpBatch = this;
    std::size_t read = 0;
    try {
        if (!mFile.mFile.getSize(mSize)) return;
        mImage.resize(static_cast<std::size_t>(mSize));
        mbValid = mFile.mFile.seek(0, SEEK_SET) &&
                  mFile.mFile.readUpTo(mImage.data(), mImage.size(), read) && read == mImage.size();
    } catch (const std::exception&) {
    }
}

CFileConfig::CBatch::~CBatch() {
    if (mFile.mpBatch == this) mFile.mpBatch = nullptr;
}

bool CFileConfig::CBatch::commit() {
    if (mFile.mpBatch != this) return false;
    mFile.mpBatch = nullptr;
    return mbValid && mFile.replace(0, mSize, mImage);
}

}  // namespace core_utils
