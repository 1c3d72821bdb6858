#include "shmconf/object_table.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "shmconf/tool_error.h"
#include "support/closest.h"
#include "support/format.h"

namespace shmconf {

namespace {

bool isIdentifier(const std::string& text, int& id) {
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, id);
    return error == std::errc() && stop == end;
}

std::string listed(const std::vector<sObject>& objects) {
    std::string text;
    for (const sObject& object : objects)
        text += "\n  " + std::to_string(object.id) + "\t" + object.name;
    return text;
}

template <typename Distance>
[[noreturn]] void throwUnknown(const std::string& text, Distance distance) {
    constexpr std::size_t SUGGESTIONS = 3;
    std::vector<sObject> closest = allObjects();
    std::stable_sort(closest.begin(), closest.end(),
                     [&](const sObject& a, const sObject& b) { return distance(a) < distance(b); });
    closest.resize(SUGGESTIONS);
    throw CToolError(STATUS_USAGE,
                     "there is no object \"" + text + "\"; closest are:" + listed(closest));
}

sObject findById(const std::string& text, int id) {
    for (const sObject& object : allObjects()) {
        if (object.id == id) return object;
    }
    throwUnknown(text, [id](const sObject& object) {
        return id > object.id ? id - object.id : object.id - id;
    });
}

}  // namespace

const char* typeName(eElement element) {
    return core_utils::nameOf(element);
}

bool isByChannel(const sObject& object) {
    constexpr int LAST_OUTPUT_SETTING = 16;  // OUTP_MODE_MEM
    return object.id <= LAST_OUTPUT_SETTING;
}

std::vector<sObject> allObjects() {
    return {std::begin(core_utils::OBJECT_DIRECTORY), std::end(core_utils::OBJECT_DIRECTORY)};
}

sObject findObject(const std::string& text) {
    int id = 0;
    if (isIdentifier(text, id)) return findById(text, id);

    const std::string name = tools::toUpper(text);
    std::vector<sObject> matches;
    for (const sObject& object : allObjects()) {
        if (name == object.name) return object;
        if (!name.empty() && std::string(object.name).rfind(name, 0) == 0)
            matches.push_back(object);
    }
    if (matches.size() == 1) return matches.front();
    if (!matches.empty()) {
        throw CToolError(
            STATUS_USAGE,
            "\"" + text + "\" is the beginning of more than one object:" + listed(matches));
    }
    throwUnknown(text,
                 [&name](const sObject& object) { return tools::distanceOf(name, object.name); });
}

}  // namespace shmconf
