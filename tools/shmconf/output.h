// What is in objects, as columns for a person, as JSON for a program, or bare for a script.
#ifndef SHMCONF_OUTPUT_H
#define SHMCONF_OUTPUT_H

#include <iosfwd>
#include <string>
#include <vector>

#include "shmconf/segment.h"

namespace shmconf {

struct sRow {
    sObject object;
    sContents contents;
};

// The values, or in words that there are none to show.
std::string describe(const sRow& row);

// Cells below each other, those of numbers to the right.
using Lines = std::vector<std::vector<std::string>>;
void printColumns(std::ostream& out, const Lines& lines, const std::vector<bool>& isNumber);

void printTable(std::ostream& out, const std::vector<sRow>& rows);

// The values alone, one a line, texts as they are: one with a line end in it takes more lines.
void printRaw(std::ostream& out, const std::vector<sRow>& rows);

}  // namespace shmconf

#endif
