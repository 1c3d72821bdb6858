// Between the values of the configuration files and their text: every conversion of a list.
#ifndef CONFIG_SCHEMA_VALUE_TEXT_H
#define CONFIG_SCHEMA_VALUE_TEXT_H

#include <cstdlib>
#include <iterator>
#include <string>
#include <vector>

#include "ini_file/number_text.h"

namespace hxl_config_handler {

// Cuts `text` at every comma. Pieces may be empty; an empty text has none.
inline std::vector<std::string> splitList(const std::string& text) {
    std::vector<std::string> pieces;
    if (text.empty()) return pieces;
    std::string::size_type begin = 0;
    std::string::size_type comma;
    while ((comma = text.find(',', begin)) != std::string::npos) {
        pieces.push_back(text.substr(begin, comma - begin));
        begin = comma + 1;
    }
    pieces.push_back(text.substr(begin));
    return pieces;
}

// These two throw for non-numeric text: what core_utils::toDouble() does, and what std::stoi does.
// A byte is the low 8 bits of the number.
inline double toDouble(const std::string& piece) {
    return core_utils::toDouble(piece.c_str());
}
inline unsigned char toByte(const std::string& piece) {
    return static_cast<unsigned char>(std::stoi(piece));
}

// As C reads them: non-numeric text is 0.
inline void convert(const std::string& piece, float& value) {
    value = static_cast<float>(std::strtod(piece.c_str(), nullptr));
}
inline void convert(const std::string& piece, unsigned char& value) {
    value = static_cast<unsigned char>(std::strtol(piece.c_str(), nullptr, 10));
}

inline std::string formatValue(const std::string& value) {
    return value;
}
// Six decimals for a floating-point number.
template <typename Number>
std::string formatValue(Number value) {
    return std::to_string(value);
}

// Joins the values of any sequence with commas, without blanks.
template <typename Values>
std::string joinList(const Values& values) {
    std::string text;
    for (const auto& value : values) {
        if (&value != &*std::begin(values)) text += ',';
        text += formatValue(value);
    }
    return text;
}

}  // namespace hxl_config_handler

#endif
