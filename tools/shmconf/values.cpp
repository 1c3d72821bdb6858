#include "shmconf/values.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdlib>

#include "shmconf/tool_error.h"
#include "support/format.h"

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
                    throw CToolError(STATUS_USAGE, "the value " + tools::quoted(word) + " is not " +
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
                text += tools::format(element);
            }
        },
        values);
    return text;
}

}  // namespace shmconf
