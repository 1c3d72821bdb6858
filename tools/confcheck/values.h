// One value of a file: what those who read it make of it.
#ifndef CONFCHECK_VALUES_H
#define CONFCHECK_VALUES_H

#include <string>
#include <vector>

#include "confcheck/config_files.h"
#include "ini_file/file_config.h"

namespace confcheck {

struct sReading {
    std::string value;
    std::string note;
    bool readable = false;
    bool endsLoad = false;  // non-numeric text aborts the load
    bool fresh = false;     // of a STATE: the file holds no saved values
    std::vector<std::string> faults;
};

// Reads `item` from the open `file`, which has its key.
sReading readItem(core_utils::CFileConfig& file, const sItem& item);

}  // namespace confcheck

#endif
