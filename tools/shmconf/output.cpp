#include "shmconf/output.h"

#include <algorithm>
#include <ostream>

#include "config/schema/auto_save_schema.h"
#include "support/format.h"

namespace shmconf {

namespace {

std::size_t countOf(const Values& values) {
    return std::visit([](const auto& elements) { return elements.size(); }, values);
}

std::vector<std::string> cellsOf(const sRow& row) {
    const bool present = row.contents.state == eState::PRESENT;
    return {std::to_string(row.object.id),
            row.object.name,
            typeName(row.object.element),
            hxl_config_handler::unitOf(row.object.id),
            present ? std::to_string(countOf(row.contents.values)) : "-",
            describe(row)};
}

const std::string& rawText(const std::string& text) {
    return text;
}
template <typename Number>
std::string rawText(Number value) {
    return tools::format(value);
}

}  // namespace

std::string describe(const sRow& row) {
    switch (row.contents.state) {
        case eState::ABSENT:
            return "(absent)";
        case eState::UNREADABLE:
            return std::string("(is no vector of type ") + typeName(row.object.element) + ")";
        case eState::PRESENT:
            break;
    }
    return countOf(row.contents.values) == 0 ? "(empty)" : formatValues(row.contents.values);
}

void printColumns(std::ostream& out, const Lines& lines, const std::vector<bool>& isNumber) {
    std::vector<std::size_t> widths(isNumber.size());
    for (const auto& cells : lines) {
        for (std::size_t i = 0; i < widths.size(); ++i)
            widths[i] = std::max(widths[i], cells.at(i).size());
    }
    for (const auto& cells : lines) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const std::string padding(widths[i] - cells[i].size(), ' ');
            line += isNumber[i] ? padding + cells[i] : cells[i] + padding;
            line += "  ";
        }
        out << line.erase(line.find_last_not_of(' ') + 1) << '\n';
    }
}

void printTable(std::ostream& out, const std::vector<sRow>& rows) {
    Lines lines = {{"ID", "NAME", "TYPE", "UNIT", "COUNT", "VALUES"}};
    for (const sRow& row : rows)
        lines.push_back(cellsOf(row));
    printColumns(out, lines, {true, false, false, false, true, false});
}

void printRaw(std::ostream& out, const std::vector<sRow>& rows) {
    for (const sRow& row : rows) {
        if (row.contents.state != eState::PRESENT) continue;
        std::visit(
            [&out](const auto& elements) {
                for (const auto& element : elements)
                    out << rawText(element) << '\n';
            },
            row.contents.values);
    }
}

}  // namespace shmconf
