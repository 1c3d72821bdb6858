// The objects of the shared segment as a person names them.
#ifndef SHMCONF_OBJECT_TABLE_H
#define SHMCONF_OBJECT_TABLE_H

#include <string>
#include <vector>

namespace shmconf {

enum class eType { DOUBLE, BYTE, TEXT };

const char* typeName(eType type);

// The segment does not say what the elements of an object are: `type` is what the daemon, which
// owns the object's file, reads and writes it as.
struct sObject {
    int id;
    const char* name;
    eType type;
};

// The whole directory, by identifier.
std::vector<sObject> allObjects();

// The object with this identifier, this name, or the only one whose name begins so; upper and
// lower case are the same. Throws CToolError with the closest names.
sObject findObject(const std::string& text);

}  // namespace shmconf

#endif
