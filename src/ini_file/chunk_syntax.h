// What a chunk of a configuration file is: header, key line or neither. For CFileConfig, and for
// tools that tell people what it makes of their lines.
#ifndef INI_FILE_CHUNK_SYNTAX_H
#define INI_FILE_CHUNK_SYNTAX_H

#include <cstddef>
#include <string_view>

namespace core_utils {

// Chunks are never empty; the results are parts of them.

inline bool isBlank(char character) {
    return static_cast<unsigned char>(character) <= ' ';
}

// A header of any section, also of none that has a name: it ends the section before it.
inline bool isHeader(std::string_view chunk) {
    return chunk.front() == '[';
}

inline bool isHeaderOf(std::string_view chunk, std::string_view section) {
    return isHeader(chunk) && chunk.size() >= section.size() + 2 &&
           chunk[section.size() + 1] == ']' && chunk.compare(1, section.size(), section) == 0;
}

// The key of a key line, or empty for every other chunk that is no header: a comment is never a
// key.
inline std::string_view keyOf(std::string_view chunk) {
    const std::size_t equals = chunk.find('=');
    if (equals == std::string_view::npos || chunk.front() == '#') return {};
    return chunk.substr(0, equals);
}

// The first token after the "=" of a key line; empty if there is none.
inline std::string_view valueOf(std::string_view chunk) {
    std::string_view value = chunk.substr(chunk.find('=') + 1);
    while (!value.empty() && isBlank(value.front()))
        value.remove_prefix(1);
    std::size_t length = 0;
    while (length < value.size() && !isBlank(value[length]))
        ++length;
    return value.substr(0, length);
}

}  // namespace core_utils

#endif
