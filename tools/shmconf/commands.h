// What each command of the tool does, once the command line is understood.
#ifndef SHMCONF_COMMANDS_H
#define SHMCONF_COMMANDS_H

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include "shmconf/tool_error.h"
#include "shmconf/watch.h"

namespace shmconf {

using Words = std::vector<std::string>;

enum class eFormat { COLUMNS, JSON, RAW };

// Results go to `out`. Objects are words that findObject() takes; all of them are looked up, and
// the values parsed, before the segment is touched. Failures are thrown as CToolError.

void listObjects(std::ostream& out, bool all, eFormat format);

// STATUS_FAILED if one of the objects cannot be shown; the others are.
eExitStatus getObjects(std::ostream& out, const Words& objects, eFormat format);

// One element of an object: by its index, or by its channel, counted from 1.
struct sElement {
    std::optional<std::size_t> index;
    std::optional<std::size_t> channel;

    bool isGiven() const { return index || channel; }
};

// These three print what the objects hold afterwards. If that cannot be read, they say so on
// standard error and still succeed: the segment is changed.
void setObject(std::ostream& out, const std::string& object, const Words& values, bool create);
void setElement(std::ostream& out, const std::string& object, const sElement& element,
                const Words& values);

// STATUS_FAILED if one of the objects did not exist; the others are removed.
eExitStatus unsetObjects(std::ostream& out, const Words& objects);

// All objects if none is named.
void watchObjects(std::ostream& out, const Words& objects, const sWatchOptions& options);

// All objects that exist, as JSON. STATUS_FAILED if one cannot be shown; the others are.
eExitStatus dumpObjects(std::ostream& out);

struct sLoadOptions {
    std::string file = "-";  // standard input
    bool identity = false;
    bool create = false;
};

// Writes what dumpObjects() has printed, object by object once all of it is checked; leaves the
// others alone, and the identity unless it is asked for. Says on `out` how many were written.
void loadObjects(std::ostream& out, const sLoadOptions& options);

// The directory, with no segment needed: identifier, name and type, one object a line.
void printDirectory(std::ostream& out);

}  // namespace shmconf

#endif
