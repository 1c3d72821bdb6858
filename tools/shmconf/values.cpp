#include "shmconf/values.h"

#include <boost/nowide/utf/utf.hpp>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "shmconf/tool_error.h"

namespace shmconf {

namespace {

constexpr const char* EXPECTED[] = {"a number", "a whole number from 0 to 255", "a text"};

bool parse(const std::string& word, std::string& out) {
    out = word;
    return true;
}
bool parse(const std::string& word, unsigned char& out) {
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, out);
    return error == std::errc() && stop == end;
}
// Not every C++ library has from_chars for doubles; this takes the same words.
bool parse(const std::string& word, double& out) {
    if (word.empty() || word[0] <= ' ' || word[0] == '+') return false;
    if (word.find_first_of("xX") != std::string::npos) return false;
    char* end = nullptr;
    errno = 0;
    out = std::strtod(word.c_str(), &end);
    const bool inRange = errno == 0 || (out != 0.0 && std::isfinite(out));
    return inRange && end == word.c_str() + word.size();
}

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

std::string format(const std::string& text) {
    using Utf8 = boost::nowide::utf::utf_traits<char>;
    std::string out = "\"";
    for (auto begin = text.begin(); begin != text.end();) {
        auto next = begin;
        const auto point = Utf8::decode(next, text.end());
        if (!boost::nowide::utf::is_valid_codepoint(point)) {
            next = begin + 1;
            appendEscaped(out, begin, next);
        } else if (isControl(point)) {
            appendEscaped(out, begin, next);
        } else {
            if (point == '"' || point == '\\') out += '\\';
            out.append(begin, next);
        }
        begin = next;
    }
    return out + '"';
}
template <typename Number>
std::string format(Number value) {
    char digits[32];
    return {digits, std::to_chars(digits, digits + sizeof(digits), value).ptr};
}

}  // namespace

Values emptyValues(eElement element) {
    if (element == eElement::DOUBLE) return std::vector<double>();
    if (element == eElement::BYTE) return std::vector<unsigned char>();
    return std::vector<std::string>();
}

Values parseValues(eElement element, const std::vector<std::string>& words) {
    Values values = emptyValues(element);
    std::visit(
        [&](auto& elements) {
            for (const std::string& word : words) {
                if (!parse(word, elements.emplace_back())) {
                    throw CToolError(STATUS_USAGE, "the value " + format(word) + " is not " +
                                                       EXPECTED[static_cast<int>(element)]);
                }
            }
        },
        values);
    return values;
}

std::string formatValues(const Values& values) {
    std::string text;
    std::visit(
        [&text](const auto& elements) {
            for (const auto& element : elements) {
                if (!text.empty()) text += ' ';
                text += format(element);
            }
        },
        values);
    return text;
}

}  // namespace shmconf
