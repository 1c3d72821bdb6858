// What each command of the tool does, once the command line is understood.
#ifndef SHMCONF_COMMANDS_H
#define SHMCONF_COMMANDS_H

#include <iosfwd>
#include <string>
#include <vector>

#include "shmconf/tool_error.h"
#include "shmconf/watch.h"

namespace shmconf {

using Words = std::vector<std::string>;

// Results go to `out`. Objects are words that findObject() takes; all of them are looked up, and
// the values parsed, before the segment is touched. Failures are thrown as CToolError.

void listObjects(std::ostream& out, bool all, bool json);

// STATUS_FAILED if one of the objects cannot be shown; the others are.
eExitStatus getObjects(std::ostream& out, const Words& objects, bool json);

// Prints what the object holds afterwards.
void setObject(std::ostream& out, const std::string& object, const Words& values, bool create);

// All objects if none is named.
void watchObjects(std::ostream& out, const Words& objects, const sWatchOptions& options);

}  // namespace shmconf

#endif
