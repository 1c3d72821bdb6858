#include "support/closest.h"

#include <algorithm>
#include <numeric>

#include "support/format.h"

namespace tools {

namespace {

// Whether `text` is what is left of `name` when some of its characters are dropped.
bool isAbbreviation(const std::string& text, const std::string& name) {
    std::size_t at = 0;
    for (const char c : name) {
        if (at < text.size() && text[at] == c) ++at;
    }
    return at == text.size();
}

// How many single-character edits make one text the other.
std::size_t editDistance(const std::string& from, const std::string& to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t substituted = diagonal + (from[i - 1] != to[j - 1] ? 1 : 0);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, substituted});
        }
    }
    return row[to.size()];
}

}  // namespace

Distance distanceOf(const std::string& text, const std::string& name) {
    return {!isAbbreviation(text, name), editDistance(text, name)};
}

std::string closestOf(const std::string& text, const std::vector<std::string>& names) {
    const std::string wanted = toUpper(text);
    return *std::min_element(names.begin(), names.end(), [&](const auto& a, const auto& b) {
        return distanceOf(wanted, toUpper(a)) < distanceOf(wanted, toUpper(b));
    });
}

}  // namespace tools
