// A report, as text for a person and as JSON for a program.
#ifndef CONFCHECK_OUTPUT_H
#define CONFCHECK_OUTPUT_H

#include <iosfwd>

#include "confcheck/check.h"

namespace confcheck {

// `quiet`: findings alone.
void printText(std::ostream& out, const sReport& report, bool quiet);

// JSON knows only UTF-8: other bytes become the replacement character.
void printJson(std::ostream& out, const sReport& report, bool quiet);

}  // namespace confcheck

#endif
