// The check of a configuration folder: what the daemon takes from each file, and what it does not
// see or does not use as meant.
#ifndef CONFCHECK_CHECK_H
#define CONFCHECK_CHECK_H

#include <string>
#include <vector>

#include "confcheck/lines.h"

namespace confcheck {

enum class eSource { FILE, DEFAULT, NOTHING };

struct sValue {
    std::string section;
    std::string key;
    std::string unit;   // of the value; empty if it has none
    std::string value;  // as it is used; empty if the source is NOTHING
    std::string note;   // why it is not what the file says, or what it means; may be empty
    eSource source;
    int line;  // that has the key; 0 if none does
};

struct sFileReport {
    std::string path;
    std::string family;  // of the preset file, where that can be seen; otherwise empty
    std::string error;   // why the file cannot be read; empty if it can
    std::vector<sValue> values;
    std::vector<sFinding> findings;  // by line
};

struct sReport {
    int devType = 0;  // 0: not known
    bool typeGiven = false;
    std::vector<sFileReport> files;
};

struct sUnit {
    int devType = 0;          // 1 to 3; 0 for what the file of the device type tells
    std::string family = {};  // "ZEV" or "KOL"; empty for that of the device type
};

// Checks the six files in `folder` for a unit, or the one of them that is called `only`. Opens
// regular files only, to read, and never waits.
sReport checkFolder(const std::string& folder, const sUnit& unit, const std::string& only = {});

// Whether one of the six files has this name.
bool isConfigFile(const std::string& name);

}  // namespace confcheck

#endif
