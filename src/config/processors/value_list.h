// The comma-separated lists that are the values of configuration files.
#ifndef CONFIG_PROCESSORS_VALUE_LIST_H
#define CONFIG_PROCESSORS_VALUE_LIST_H

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
