// Objects as JSON: an array with a member for each object, of its identifier, name, type, unit if
// it has one, state and values.
#ifndef SHMCONF_JSON_FORM_H
#define SHMCONF_JSON_FORM_H

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "shmconf/output.h"

namespace shmconf {

// What JSON does not know is lossless, too: a number that is not finite is one of the texts "nan",
// "-nan", "inf" and "-inf", a text that is not UTF-8 the object {"hex": "..."} of its bytes.
nlohmann::ordered_json elementToJson(unsigned char value);
nlohmann::ordered_json elementToJson(double value);
nlohmann::ordered_json elementToJson(const std::string& text);
std::string toJson(const std::vector<sRow>& rows);

// The rows that have values. Throws CToolError with a line for each object that is unknown, there
// twice or of another type, and for each that has a wrong value.
std::vector<sRow> fromJson(const std::string& text);

}  // namespace shmconf

#endif
