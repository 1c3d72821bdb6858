// The six configuration files as flat lists of items, made from the rows of their schemas.
#ifndef CONFCHECK_CONFIG_FILES_H
#define CONFCHECK_CONFIG_FILES_H

#include <string>
#include <vector>

namespace confcheck {

// How a value is read.
enum class eKind {
    TEXT,
    IDENTITY,  // a device string
    STATE,     // whether the auto-save file holds saved values
    DOUBLES,   // the list of an auto-save item, here and in the next two
    BYTES,
    TEXTS,
    FLOAT_PAIR,  // the two channels of a preset's setting, here and in the next one
    BYTE_PAIR,
    INTEGER,
    FLOAT,
    DOUBLE,
    FACTOR,  // a double that no load reads
};

struct sItem {
    std::string section;
    std::string key;
    eKind kind;
    std::string fallback;  // what it is when it cannot be read; empty for nothing
    // Of its file's load: non-numeric text can abort the load in its step, of which nothing is
    // published then, nor of later ones.
    int step;
    std::string unit = {};
};

struct sConfigFile {
    std::string name;
    std::vector<sItem> items;   // what a unit of the device type takes, in the order of the load
    std::vector<sItem> others;  // what only units of other types take
};

// For device type 1, 2 or 3, or 0 for a unit that does not know its own. The file of the device
// type is the first; its items are the same for all.
std::vector<sConfigFile> configFiles(int devType);

}  // namespace confcheck

#endif
