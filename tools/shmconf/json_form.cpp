#include "shmconf/json_form.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "config/schema/auto_save_schema.h"
#include "shmconf/tool_error.h"
#include "support/format.h"

namespace shmconf {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* STATE_NAMES[] = {"absent", "unreadable", "present"};
constexpr char HEX[] = "hex";

bool isUtf8(const std::string& text) {
    try {
        Json(text).dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

// Each tells whether `json` is such an element.
bool elementFromJson(const Json& json, unsigned char& value) {
    if (!json.is_number_unsigned() || json.get<std::uint64_t>() > 255) return false;
    value = json.get<unsigned char>();
    return true;
}
bool elementFromJson(const Json& json, double& value) {
    if (json.is_string()) {
        const auto text = json.get<std::string>();
        value = std::strtod(text.c_str(), nullptr);
        return !std::isfinite(value) && tools::format(value) == text;
    }
    if (json.is_number()) value = json.get<double>();
    return json.is_number();
}
bool elementFromJson(const Json& json, std::string& text) {
    if (json.is_string()) {
        text = json.get<std::string>();
        return true;
    }
    if (!json.is_object() || json.size() != 1 || !json.contains(HEX) || !json[HEX].is_string())
        return false;
    const auto hex = json[HEX].get<std::string>();
    for (std::size_t at = 0; at + 1 < hex.size(); at += 2) {
        unsigned char byte = 0;
        const auto* end = hex.data() + at + 2;
        if (std::from_chars(hex.data() + at, end, byte, 16).ptr != end) return false;
        text += static_cast<char>(byte);
    }
    return hex.size() % 2 == 0;
}

Json rowToJson(const sRow& row) {
    Json json = {
        {"id", row.object.id}, {"name", row.object.name}, {"type", typeName(row.object.element)}};
    const std::string unit = hxl_config_handler::unitOf(row.object.id);
    if (!unit.empty()) json["unit"] = unit;
    json["state"] = STATE_NAMES[static_cast<int>(row.contents.state)];
    if (row.contents.state != eState::PRESENT) return json;
    json["values"] = Json::array();
    std::visit(
        [&](const auto& elements) {
            for (const auto& element : elements)
                json["values"].push_back(elementToJson(element));
        },
        row.contents.values);
    return json;
}

// The member's text, or an empty one.
std::string textOf(const Json& json, const char* member) {
    const bool found = json.is_object() && json.contains(member) && json[member].is_string();
    return found ? json[member].get<std::string>() : "";
}

// Fills `values` and returns what is wrong with them, or an empty text.
std::string valuesFromJson(const Json& row, Values& values) {
    if (!row.contains("values") || !row["values"].is_array()) return "has no array \"values\"";
    return std::visit(
        [&](auto& elements) -> std::string {
            for (const Json& json : row["values"]) {
                if (elementFromJson(json, elements.emplace_back())) continue;
                using Escape = Json::error_handler_t;
                return "has the wrong value " + json.dump(-1, ' ', true, Escape::replace);
            }
            return "";
        },
        values);
}

// Appends the row unless it has no values; returns what is wrong with it, or an empty text.
std::string addRow(const Json& json, std::vector<sRow>& rows) {
    const std::string name = textOf(json, "name");
    const std::vector<sObject> objects = allObjects();
    const auto object = std::find_if(objects.begin(), objects.end(),
                                     [&](const sObject& known) { return name == known.name; });
    if (name.empty()) return "a member of the array has no name";
    if (object == objects.end()) return "there is no object " + tools::quoted(name);
    const std::string type = textOf(json, "type");
    if (type != typeName(object->element)) {
        return name + " is of type " + typeName(object->element) + ", not " + tools::quoted(type);
    }
    const std::string state = textOf(json, "state");
    if (state == STATE_NAMES[0] || state == STATE_NAMES[1]) return "";
    if (state != STATE_NAMES[2]) return name + " has the unknown state " + tools::quoted(state);

    const auto isSame = [&](const sRow& row) { return row.object.id == object->id; };
    if (std::any_of(rows.begin(), rows.end(), isSame)) return name + " is there twice";
    sRow row{*object, {eState::PRESENT, emptyValues(object->element)}};
    const std::string fault = valuesFromJson(json, row.contents.values);
    rows.push_back(std::move(row));
    return fault.empty() ? "" : name + ' ' + fault;
}

}  // namespace

Json elementToJson(unsigned char value) {
    return value;
}
Json elementToJson(double value) {
    return std::isfinite(value) ? Json(value) : Json(tools::format(value));
}
Json elementToJson(const std::string& text) {
    if (isUtf8(text)) return text;
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string hex;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        hex += {DIGITS[byte >> 4], DIGITS[byte & 15]};
    }
    return {{HEX, hex}};
}

std::string toJson(const std::vector<sRow>& rows) {
    Json json = Json::array();
    for (const sRow& row : rows)
        json.push_back(rowToJson(row));
    constexpr int INDENT = 2;
    return json.dump(INDENT) + '\n';
}

std::vector<sRow> fromJson(const std::string& text) {
    const Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded()) throw CToolError(STATUS_USAGE, "the input is no JSON");
    if (!json.is_array()) throw CToolError(STATUS_USAGE, "the input is no JSON array");
    std::vector<sRow> rows;
    std::string faults;
    for (const Json& member : json) {
        const std::string fault = addRow(member, rows);
        if (!fault.empty()) faults += "\n  " + fault;
    }
    if (!faults.empty()) throw CToolError(STATUS_USAGE, "nothing was written:" + faults);
    return rows;
}

}  // namespace shmconf
