#include "ini_file/file_config.h"

#include <pthread.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>

#include "ini_file/chunk_reader.h"
#include "logging/logger.h"

namespace core_utils {

namespace {

constexpr std::size_t MAX_SECTION_LENGTH = 77;
constexpr std::size_t MAX_LINE_LENGTH = 80;
constexpr int VALUE_CAPACITY = 100;

bool isBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

bool isUsable(const char* section, const char* key) {
    return section != nullptr && key != nullptr && std::strlen(section) <= MAX_SECTION_LENGTH;
}

std::string headerOf(const char* section) {
    return "[" + std::string(section) + "]";
}

// The key of a key line, or empty for every other chunk: a comment is never a key.
std::string_view keyOf(std::string_view chunk) {
    const std::size_t equals = chunk.find('=');
    if (equals == std::string_view::npos || chunk.front() == '#') return {};
    return chunk.substr(0, equals);
}

// The last header that matched, which is where a new key goes.
struct sHeaderPosition {
    std::int64_t begin = -1;
    std::int64_t end = -1;
};

// Leaves `reader` on the chunk of `key` and returns true, or runs to the end of the file.
// A section may appear more than once; the first key that matches wins.
bool findKey(CChunkReader& reader, const std::string& header, std::string_view key,
             sHeaderPosition& position) {
    bool inSection = false;
    while (reader.next()) {
        const std::string_view chunk = reader.chunk();
        if (chunk.front() == '[') {
            inSection = chunk.substr(0, header.size()) == header;
            if (inSection) position = {reader.begin(), reader.end()};
        } else if (inSection && !key.empty() && keyOf(chunk) == key) {
            return true;
        }
    }
    return false;
}

// The first token after the "=" of a key line; empty if there is none.
std::string_view valueOf(std::string_view chunk) {
    std::string_view value = chunk.substr(chunk.find('=') + 1);
    while (!value.empty() && isBlank(value.front()))
        value.remove_prefix(1);
    std::size_t length = 0;
    while (length < value.size() && !isBlank(value[length]))
        ++length;
    return value.substr(0, length);
}

void skipRestOfLine(CChunkReader& reader) {
    while (reader.isCutOff() && reader.next()) {
    }
}

// Reads what a rewrite keeps of the rest of the file: key lines, comments, and headers with one
// blank line before each. Other lines go.
bool readRemainder(CChunkReader& reader, std::string& remainder) {
    bool continuation = false;
    while (reader.next()) {
        const std::string_view chunk = reader.chunk();
        const std::size_t equals = chunk.find('=');
        const bool keyLine = equals != std::string_view::npos && equals > 0;
        const bool header = !keyLine && chunk.front() == '[';
        if (header && !continuation) remainder += '\n';
        if (keyLine || header || chunk.front() == '#' || continuation) remainder += chunk;
        // Also after a line of 80 characters that is complete: rewritten files rely on it.
        continuation = chunk.size() == CChunkReader::CHUNK_SIZE;
    }
    if (reader.failed()) std::puts("riSize = -1,2 ");
    return !reader.failed();
}

// One lookup for the typed readers. `type` is the word in the message, which three share.
bool readToken(CFileConfig& file, const std::string& section, const std::string& key,
               const char* type, char (&value)[VALUE_CAPACITY]) {
    int size = VALUE_CAPACITY;
    if (file.readValue(section.c_str(), key.c_str(), value, &size)) return true;
    std::printf("[CFileConfig::read %s] FAILED to read [%s]:[%s]\n", type, section.c_str(),
                key.c_str());
    return false;
}

void logMiss(const std::string& section, const std::string& key) {
    core_logger::CLogger* logger = core_logger::CLogger::getInstance();
    if (logger == nullptr || logger->getLevel() > core_logger::LEVEL_ERROR) return;
    char message[256];
    std::snprintf(message, sizeof message, "[TID:0x%0X] %s FAILED to read [%s]:[%s]",
                  static_cast<unsigned int>(pthread_self()), "read", section.c_str(), key.c_str());
    auto* event = new (std::nothrow)
        core_logger::CLogEvent(__LINE__, core_logger::LEVEL_ERROR, "CFileConfig", message);
    if (event != nullptr) logger->log(event);
}

// As readToken(), for the readers whose misses go to the maintenance log too: all but int's.
bool readLoggedToken(CFileConfig& file, const std::string& section, const std::string& key,
                     const char* type, char (&value)[VALUE_CAPACITY]) {
    if (readToken(file, section, key, type, value)) return true;
    logMiss(section, key);
    return false;
}

}  // namespace

double toDouble(const char* text) {
    errno = 0;
    char* end = nullptr;
    const double number = std::strtod(text, &end);
    if (end == text) throw std::invalid_argument("stod");
    if (errno == ERANGE) throw std::out_of_range("stod");
    return number;
}

bool CFileConfig::open(const char* path, const char* mode) {
    return mFile.open(path, mode) && mFile.setUnbuffered();
}

bool CFileConfig::open(const std::string& path, const std::string& mode) {
    return open(path.c_str(), mode.c_str());
}

bool CFileConfig::close() {
    return mFile.close();
}

bool CFileConfig::isOpen() const {
    return mFile.isOpen();
}

bool CFileConfig::readValue(const char* section, const char* key, char* buffer, int* ioSize) {
    if (ioSize == nullptr) return false;
    const int capacity = *ioSize;
    *ioSize = -1;
    if (!isOpen() || !isUsable(section, key) || buffer == nullptr) return false;

    CChunkReader reader(mFile, 0);
    sHeaderPosition position;
    if (!findKey(reader, headerOf(section), key, position)) return false;

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
    // As atoi, but defined for a number beyond the range.
    out = static_cast<int>(std::strtol(value, nullptr, 10));
    return true;
}

bool CFileConfig::read(const std::string& section, const std::string& key, std::string& out) {
    char value[VALUE_CAPACITY];
    if (!readLoggedToken(*this, section, key, "str", value)) return false;
    out = value;
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
    if (!isOpen() || !isUsable(section, key) || value == nullptr || valueLength == 0) return false;

    std::string line = std::string(key) + "=" + value + "\n";
    // Peers rely on the odd limit: one character too many is refused, more are cut off.
    if (line.size() == MAX_LINE_LENGTH + 1) return false;
    if (line.size() > MAX_LINE_LENGTH) line.resize(MAX_LINE_LENGTH);

    const std::string header = headerOf(section);
    CChunkReader reader(mFile, 0);
    sHeaderPosition position;
    std::string remainder;
    if (findKey(reader, header, key, position)) {
        const std::int64_t begin = reader.begin();
        if (reader.chunk().size() == line.size()) {
            return mFile.seek(begin, SEEK_SET) && mFile.writeText(line);
        }
        skipRestOfLine(reader);
        return readRemainder(reader, remainder) && replaceTail(begin, line + remainder);
    }
    if (reader.failed() || noCreate) return false;
    if (position.begin < 0) return appendSection(header, line);

    CChunkReader rest(mFile, position.end);
    return readRemainder(rest, remainder) &&
           replaceTail(position.begin, header + "\n" + line + remainder);
}

bool CFileConfig::write(const std::string& section, const std::string& key, int value,
                        bool noCreate) {
    return write(section, key, std::to_string(value), noCreate);
}

bool CFileConfig::write(const std::string& section, const std::string& key,
                        const std::string& value, bool noCreate) {
    return writeValue(section.c_str(), key.c_str(), value.c_str(), static_cast<int>(value.size()),
                      noCreate);
}

bool CFileConfig::write(const std::string& section, const std::string& key, double value,
                        bool noCreate) {
    return write(section, key, std::to_string(value), noCreate);
}

bool CFileConfig::removeKey(const char* section, const char* key) {
    if (!isOpen() || !isUsable(section, key)) return false;

    CChunkReader reader(mFile, 0);
    sHeaderPosition position;
    if (!findKey(reader, headerOf(section), key, position)) return false;
    const std::int64_t begin = reader.begin();
    skipRestOfLine(reader);
    std::string remainder;
    return readRemainder(reader, remainder) && replaceTail(begin, remainder);
}

bool CFileConfig::appendSection(const std::string& header, const std::string& line) {
    std::int64_t size = 0;
    if (!mFile.getSize(size)) return false;
    std::string text = "\n" + header + "\n" + line;
    if (size > 0) {
        char last = '\0';
        std::size_t read = 0;
        if (!mFile.seek(-1, SEEK_END) || !mFile.readUpTo(&last, 1, read)) return false;
        if (last != '\n') text.insert(0, "\n");
    }
    return mFile.seek(0, SEEK_END) && mFile.writeText(text);
}

bool CFileConfig::replaceTail(std::int64_t offset, const std::string& text) {
    return mFile.truncate(offset) && mFile.seek(offset, SEEK_SET) && mFile.writeText(text);
}

}  // namespace core_utils
