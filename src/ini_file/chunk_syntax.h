// Classifies a chunk of a configuration file: section header, key line or other text. Used by
// CFileConfig and by the tools that check files.
#ifndef INI_FILE_CHUNK_SYNTAX_H
#define INI_FILE_CHUNK_SYNTAX_H

#include <cstddef>
#include <string_view>

namespace core_utils {

// Characters of the longest chunk, which is also the longest line that is written whole; its line
// feed counts.
inline constexpr std::size_t CHUNK_SIZE = 80;

// No chunk may be empty. The results point into the chunk.

inline bool isBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

// Any header line, even one without a valid name. It ends the section before it.
inline bool isHeader(std::string_view chunk) {
    return chunk.front() == '[';
}

inline bool isHeaderOf(std::string_view chunk, std::string_view section) {
    return isHeader(chunk) && chunk.size() >= section.size() + 2 &&
           chunk[section.size() + 1] == ']' && chunk.compare(1, section.size(), section) == 0;
}

// Returns the key of a key line. Returns an empty text for a comment and for any other chunk
// without a key. The chunk must not be a header.
inline std::string_view keyOf(std::string_view chunk) {
    const std::size_t equals = chunk.find('=');
    if (equals == std::string_view::npos || chunk.front() == '#') return {};
    return chunk.substr(0, equals);
}

// Returns the first blank-free token after the "=" of a key line, or an empty text without one.
inline std::string_view valueOf(std::string_view chunk) {
    std::string_view value = chunk.substr(chunk.find('=') + 1);
    while (!value.empty() && isBlank(value.front()))
        value.remove_prefix(1);
    std::size_t length = 0;
    while (length < value.size() && !isBlank(value[length]))
        ++length;
    return value.substr(0, length);
}

// How a rewrite treats a chunk that begins a line. Unlike in a lookup, a header with a "=" in it is
// a key line: this is part of the file format.
enum class eRewritten { DROPPED, KEPT, KEPT_AS_HEADER };

inline eRewritten whenRewritten(std::string_view chunk) {
    const std::size_t equals = chunk.find('=');
    const bool keyLine = equals != std::string_view::npos && equals > 0;
    if (keyLine || chunk.front() == '#') return eRewritten::KEPT;
    return isHeader(chunk) ? eRewritten::KEPT_AS_HEADER : eRewritten::DROPPED;
}

}  // namespace core_utils

#endif
