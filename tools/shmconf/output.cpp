#include "shmconf/output.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <ostream>

#include "support/format.h"

namespace shmconf {

namespace {

constexpr std::size_t COLUMNS = 5;
using Cells = std::array<std::string, COLUMNS>;

std::size_t countOf(const Values& values) {
    return std::visit([](const auto& elements) { return elements.size(); }, values);
}

Cells cellsOf(const sRow& row) {
    const bool present = row.contents.state == eState::PRESENT;
    return {std::to_string(row.object.id), row.object.name, typeName(row.object.element),
            present ? std::to_string(countOf(row.contents.values)) : "-", describe(row)};
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

void printTable(std::ostream& out, const std::vector<sRow>& rows) {
    std::vector<Cells> lines = {{"ID", "NAME", "TYPE", "COUNT", "VALUES"}};
    for (const sRow& row : rows)
        lines.push_back(cellsOf(row));
    std::array<std::size_t, COLUMNS> widths{};
    for (const Cells& cells : lines) {
        for (std::size_t i = 0; i < COLUMNS; ++i)
            widths[i] = std::max(widths[i], cells[i].size());
    }
    constexpr std::array<bool, COLUMNS> IS_NUMBER = {true, false, false, true, false};
    for (const Cells& cells : lines) {
        std::string line;
        for (std::size_t i = 0; i < COLUMNS; ++i) {
            const std::string padding(widths[i] - cells[i].size(), ' ');
            line += IS_NUMBER[i] ? padding + cells[i] : cells[i] + padding;
            line += "  ";
        }
        out << line.erase(line.find_last_not_of(' ') + 1) << '\n';
    }
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
