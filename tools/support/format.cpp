#include "support/format.h"

#include <boost/nowide/utf/utf.hpp>
#include <cctype>

namespace tools {

namespace {

bool isControl(boost::nowide::utf::code_point point) {
    return point < 0x20 || (point >= 0x7f && point < 0xa0);
}

void appendEscaped(std::string& out, std::string::const_iterator begin,
                   std::string::const_iterator end) {
    constexpr char DIGITS[] = "0123456789abcdef";
    for (; begin != end; ++begin) {
        const auto byte = static_cast<unsigned char>(*begin);
        out += {'\\', 'x', DIGITS[byte >> 4], DIGITS[byte & 15]};
    }
}

// `quote`: in double quotes.
std::string escaped(const std::string& text, bool quote) {
    using Utf8 = boost::nowide::utf::utf_traits<char>;
    std::string out;
    for (auto begin = text.begin(); begin != text.end();) {
        auto next = begin;
        const auto point = Utf8::decode(next, text.end());
        if (!boost::nowide::utf::is_valid_codepoint(point)) {
            next = begin + 1;
            appendEscaped(out, begin, next);
        } else if (isControl(point)) {
            appendEscaped(out, begin, next);
        } else {
            if (quote && (point == '"' || point == '\\')) out += '\\';
            out.append(begin, next);
        }
        begin = next;
    }
    return quote ? '"' + out + '"' : out;
}

}  // namespace

std::string printable(const std::string& text) {
    return escaped(text, false);
}

std::string toUpper(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string quoted(const std::string& text) {
    return escaped(text, true);
}

}  // namespace tools
