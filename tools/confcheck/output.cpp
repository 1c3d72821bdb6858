#include "confcheck/output.h"

#include <algorithm>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <ostream>

#include "support/format.h"

namespace confcheck {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* SOURCES[] = {"file", "default", "nothing"};

void printType(std::ostream& out, const sReport& report) {
    if (report.devType == 0) {
        out << "device type not known: devtype_info.cfg tells none, and --type was not given\n";
        return;
    }
    out << "device type " << report.devType << ", "
        << (report.typeGiven ? "as given" : "as devtype_info.cfg says") << '\n';
}

std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width - text.size(), ' ');
}

void printValues(std::ostream& out, const std::vector<sValue>& values) {
    std::size_t widestKey = 0;
    std::size_t widestUnit = 0;
    for (const sValue& value : values) {
        widestKey = std::max(widestKey, value.key.size());
        widestUnit = std::max(widestUnit, value.unit.size());
    }
    constexpr int LINE_WIDTH = 6;
    const std::string* section = nullptr;
    for (const sValue& value : values) {
        if (section == nullptr || *section != value.section) out << "  [" << value.section << "]\n";
        section = &value.section;
        out << std::setw(LINE_WIDTH) << (value.line == 0 ? "-" : std::to_string(value.line)) << "  "
            << padded(value.key, widestKey) << (widestUnit == 0 ? "" : "  ")
            << padded(value.unit, widestUnit) << "  "
            << (value.source == eSource::NOTHING ? "-" : tools::printable(value.value));
        if (!value.note.empty()) out << "  (" << value.note << ')';
        out << '\n';
    }
}

Json toJson(const sValue& value) {
    Json json = {{"section", value.section},
                 {"key", value.key},
                 {"value", nullptr},
                 {"source", SOURCES[static_cast<int>(value.source)]},
                 {"line", nullptr}};
    if (!value.unit.empty()) json["unit"] = value.unit;
    if (value.source != eSource::NOTHING) json["value"] = value.value;
    if (value.line != 0) json["line"] = value.line;
    if (!value.note.empty()) json["note"] = value.note;
    return json;
}

Json toJson(const sFileReport& file, bool quiet) {
    Json json = {{"file", file.path}};
    if (!file.error.empty()) json["error"] = file.error;
    if (!file.family.empty()) json["family"] = file.family;
    if (!quiet) {
        json["values"] = Json::array();
        for (const sValue& value : file.values)
            json["values"].push_back(toJson(value));
    }
    json["findings"] = Json::array();
    for (const sFinding& finding : file.findings) {
        json["findings"].push_back(
            {{"file", file.path}, {"line", finding.line}, {"reason", finding.reason}});
    }
    return json;
}

}  // namespace

void printText(std::ostream& out, const sReport& report, bool quiet) {
    if (!quiet) printType(out, report);
    for (const sFileReport& file : report.files) {
        if (!quiet) {
            out << '\n' << file.path;
            if (!file.family.empty()) out << "  (of the " << file.family << " family)";
            out << '\n';
            printValues(out, file.values);
        }
        for (const sFinding& finding : file.findings)
            out << file.path << ':' << finding.line << ": " << finding.reason << '\n';
    }
}

void printJson(std::ostream& out, const sReport& report, bool quiet) {
    Json json = {{"type", nullptr}, {"files", Json::array()}};
    if (report.devType != 0) json["type"] = report.devType;
    for (const sFileReport& file : report.files)
        json["files"].push_back(toJson(file, quiet));
    constexpr int INDENT = 2;
    out << json.dump(INDENT, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace confcheck
