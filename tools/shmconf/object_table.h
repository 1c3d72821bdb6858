// The objects of the shared segment as a person names them.
#ifndef SHMCONF_OBJECT_TABLE_H
#define SHMCONF_OBJECT_TABLE_H

#include <string>
#include <vector>

#include "shared_memory/object_directory.h"

namespace shmconf {

// Its element type is what the daemon, which owns the object's file, reads and writes it as: the
// segment does not say.
using sObject = core_utils::sSharedObject;
using core_utils::eElement;

const char* typeName(eElement element);

// Whether element 0 of the object is channel 1, and so on: the settings of the outputs.
bool isByChannel(const sObject& object);

// The whole directory, by identifier.
std::vector<sObject> allObjects();

// The object with this identifier, this name, or the only one whose name begins so; upper and
// lower case are the same. Throws CToolError with the closest names.
sObject findObject(const std::string& text);

}  // namespace shmconf

#endif
