// The text of a floating-point number, for the file class and for the lists in its values.
#ifndef INI_FILE_NUMBER_TEXT_H
#define INI_FILE_NUMBER_TEXT_H

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace core_utils {

// `text` as C reads a floating-point number. Throws std::invalid_argument if it does not begin with
// one and std::out_of_range if a double cannot hold it; both say "stod" with every C++ library, as
// the text ends up in printed lines.
inline double toDouble(const char* text) {
    errno = 0;
    char* end = nullptr;
    const double number = std::strtod(text, &end);
    if (end == text) throw std::invalid_argument("stod");
    if (errno == ERANGE) throw std::out_of_range("stod");
    return number;
}

}  // namespace core_utils

#endif
