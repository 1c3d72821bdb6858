// The shared segment as the tool sees it: never made by accident, and an object that does not
// exist is not the same as one without elements.
#ifndef SHMCONF_SEGMENT_H
#define SHMCONF_SEGMENT_H

#include "shared_memory/peer_segment.h"
#include "shmconf/object_table.h"
#include "shmconf/values.h"

namespace shmconf {

enum class eState { ABSENT, UNREADABLE, PRESENT };

// UNREADABLE: an object has the name, but it cannot be a vector of the object's type.
struct sContents {
    eState state = eState::ABSENT;
    Values values;
};

// One thread. Operations throw CToolError if the segment cannot be used: it was removed, it is
// damaged, or a live process has kept its lock for one second.
class CSegment {
  public:
    // Attaches to the segment; without one, throws unless `create` is set.
    explicit CSegment(bool create);

    sContents read(const sObject& object) const;

    // Leaves exactly `values` in the object, creating it if it does not exist.
    void write(const sObject& object, const Values& values);

    // Replaces one element by the only one of `value`; throws if there is none at `index`.
    void writeElement(const sObject& object, std::size_t index, const Values& value);

    // False if the object does not exist.
    bool remove(const sObject& object);

  private:
    core_utils::CPeerSegment mSegment;
};

}  // namespace shmconf

#endif
