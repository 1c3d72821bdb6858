// The elements of a shared object, as words of a command line and as text for a person.
#ifndef SHMCONF_VALUES_H
#define SHMCONF_VALUES_H

#include <string>
#include <variant>
#include <vector>

#include "shmconf/object_table.h"

namespace shmconf {

using Values =
    std::variant<std::vector<double>, std::vector<unsigned char>, std::vector<std::string>>;

Values emptyValues(eElement element);

// One element of each word. Throws CToolError that names the first word of another type.
Values parseValues(eElement element, const std::vector<std::string>& words);

// Separated by blanks. Numbers have the fewest digits that read back the same; texts are in double
// quotes, with control characters and bytes that are not UTF-8 escaped: safe on any terminal.
std::string formatValues(const Values& values);

}  // namespace shmconf

#endif
