#include "shmconf/values.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include "shmconf/tool_error.h"
#include "support/format.h"

namespace shmconf {

namespace {

// Each tells what is wrong with the word, or null.
const char* parse(const std::string& word, std::string& out) {
    out = word;
    return nullptr;
}
const char* parse(const std::string& word, unsigned char& out) {
    const bool signedNumber = word.size() > 1 && word[0] == '+' && word[1] != '-';
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data() + signedNumber, end, out);
    return error == std::errc() && stop == end ? nullptr : "is not a whole number from 0 to 255";
}
// As C reads it, but for blanks before it. What is too small for a double is 0 or close to it.
const char* parse(const std::string& word, double& out) {
    char* end = nullptr;
    out = std::strtod(word.c_str(), &end);
    if (word.empty() || word[0] <= ' ' || end != word.c_str() + word.size())
        return "is not a number";
    const bool named = word.find_first_of("nN") != std::string::npos;  // inf, infinity
    return std::isinf(out) && !named ? "is too large for a double" : nullptr;
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
                const char* fault = parse(word, elements.emplace_back());
                if (fault == nullptr) continue;
                throw CToolError(STATUS_USAGE, "the value " + tools::quoted(word) + ' ' + fault);
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
