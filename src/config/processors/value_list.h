// The comma-separated lists that are the values of configuration files.
#ifndef CONFIG_PROCESSORS_VALUE_LIST_H
#define CONFIG_PROCESSORS_VALUE_LIST_H

#include <cstdlib>
#include <string>
#include <vector>

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

// The low 8 bits of a number. Throws what std::stoi does for text that is none.
inline unsigned char toByte(const std::string& piece) {
    return static_cast<unsigned char>(std::stoi(piece));
}

// As C reads them: text that is no number is 0.
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
