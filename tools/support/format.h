// Numbers and texts as a person reads them.
#ifndef SUPPORT_FORMAT_H
#define SUPPORT_FORMAT_H

#include <charconv>
#include <string>

namespace tools {

// Control characters and bytes that are not UTF-8 as \xNN: safe on any terminal.
std::string printable(const std::string& text);

// The same in double quotes, with a backslash before those in the text and before backslashes.
std::string quoted(const std::string& text);

// ASCII letters in upper case.
std::string toUpper(std::string text);

inline std::string format(const std::string& text) {
    return quoted(text);
}
// The fewest digits that read back the same.
template <typename Number>
std::string format(Number value) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof(digits), value).ptr};
}

}  // namespace tools

#endif
