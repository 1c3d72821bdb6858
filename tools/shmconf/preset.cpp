#include "shmconf/preset.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "peer/preset.h"
#include "shmconf/json_form.h"
#include "shmconf/tool_error.h"
#include "support/closest.h"
#include "support/format.h"

namespace shmconf {

namespace {

using core_utils::sPresetField;
using hxl_config_handler::CHANNEL_COUNT;

Values readObject(const CSegment& segment, const sObject& object) {
    const sContents contents = segment.read(object);
    if (contents.state != eState::PRESENT) {
        throw CToolError(STATUS_FAILED,
                         std::string(object.name) + ' ' + describe({object, contents}));
    }
    return contents.values;
}

// Calls `use` with each value of the setting that the object holds.
template <typename Use>
void forEachChannel(const sPresetField& field, const Values& values, Use use) {
    std::visit(
        [&](const auto& elements) {
            for (std::size_t i = field.index;
                 i < field.index + CHANNEL_COUNT && i < elements.size(); ++i)
                use(elements[i]);
        },
        values);
}

void printFields(std::ostream& out, const CSegment& segment,
                 const std::vector<sPresetField>& fields) {
    Lines lines = {{"SETTING", "UNIT", "CHANNEL 1", "CHANNEL 2"}};
    for (const sPresetField& field : fields) {
        auto& line = lines.emplace_back(std::vector<std::string>{field.key, field.unit});
        forEachChannel(field, readObject(segment, *field.object),
                       [&](const auto& value) { line.push_back(tools::format(value)); });
        line.resize(lines.front().size(), "-");
    }
    printColumns(out, lines, {false, false, true, true});
}

void printFieldsAsJson(std::ostream& out, const CSegment& segment, int number,
                       const std::vector<sPresetField>& fields) {
    nlohmann::ordered_json json = {{"preset", number}, {"settings", nlohmann::json::array()}};
    for (const sPresetField& field : fields) {
        nlohmann::ordered_json row = {{"name", field.key}};
        if (*field.unit != '\0') row["unit"] = field.unit;
        row["values"] = nlohmann::json::array();
        forEachChannel(field, readObject(segment, *field.object),
                       [&](const auto& value) { row["values"].push_back(elementToJson(value)); });
        json["settings"].push_back(row);
    }
    out << json.dump(2) << '\n';
}

sPresetField findField(const std::vector<sPresetField>& fields, const std::string& word) {
    const std::string wanted = tools::toUpper(word);
    std::vector<sPresetField> matches;
    std::vector<std::string> keys;
    for (const sPresetField& field : fields) {
        const std::string key = tools::toUpper(field.key);
        if (key == wanted) return field;
        if (key.rfind(wanted, 0) == 0) matches.push_back(field);
        keys.emplace_back(field.key);
    }
    if (matches.size() == 1 && !word.empty()) return matches.front();
    if (matches.empty()) {
        throw CToolError(STATUS_USAGE, "a preset has no setting " + tools::quoted(word) +
                                           "; the closest is " + tools::closestOf(word, keys));
    }
    throw CToolError(STATUS_USAGE, tools::quoted(word) +
                                       " is the beginning of more than one setting: " +
                                       matches[0].key + ", " + matches[1].key);
}

}  // namespace

void showPreset(std::ostream& out, int number, bool json) {
    const CSegment segment(false);
    const std::vector<sPresetField> fields = core_utils::presetFields(number);
    json ? printFieldsAsJson(out, segment, number, fields) : printFields(out, segment, fields);
}

void changePreset(std::ostream& out, int number, const sPresetValue& change) {
    const sPresetField field = findField(core_utils::presetFields(number), change.setting);
    const Values value = parseValues(field.object->element, {change.value});
    CSegment segment(false);
    segment.writeElement(*field.object, field.index + change.channel - 1, value);
    printFields(out, segment, {field});
}

}  // namespace shmconf
