// What a person may have meant by a name that does not exist.
#ifndef SUPPORT_CLOSEST_H
#define SUPPORT_CLOSEST_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace tools {

// How far `text` is from `name`: the less, the closer. What is left of a name when some of its
// characters are dropped is closer than anything else; then the number of single-character edits
// counts. Upper and lower case differ.
using Distance = std::pair<bool, std::size_t>;
Distance distanceOf(const std::string& text, const std::string& name);

// The closest of `names`, of which there is at least one; upper and lower case are the same.
std::string closestOf(const std::string& text, const std::vector<std::string>& names);

}  // namespace tools

#endif
