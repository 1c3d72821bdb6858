#include "shared_memory/segment_recovery.h"

#include <stdexcept>
#include <vector>

#include "shared_memory/object_directory.h"
#include "shared_memory/segment_change.h"
#include "shared_memory/segment_journal.h"
#include "shared_memory/segment_lock.h"
#include "shared_memory/vector_access.h"

namespace core_utils {

namespace {

std::string line(const std::string& text) {
    return "shared memory [" + std::string(SEGMENT_NAME) + "]: " + text + '\n';
}

// A plain peer that dies in a change may leave a vector that points to freed memory.
std::string emptyBrokenVectors(Segment& segment, CPrivateCopy& copy) {
    std::string told;
    for (const sSharedObject& object : OBJECT_DIRECTORY) {
        if (!emptyIfBroken(copy, object)) continue;
        told += line("a process died while it changed " + std::string(object.name) +
                     ", which is without elements now; write it again");
    }
    if (told.empty()) return told;
    const std::vector<sPatch> patches = copy.differences();
    CSegmentJournal::apply(segment, patches.data(), patches.size());
    return told;
}

std::string checkAfterForeignDeath(Segment& segment) {
    std::string told;
    try {
        const CHeapLock heap(segment);
        CPrivateCopy copy(segment);
        return emptyBrokenVectors(segment, copy);
    } catch (const std::logic_error& error) {
        told = line(error.what());
    } catch (const boost::interprocess::interprocess_exception&) {
        // A live process keeps the heap's lock. Every later change checks the heap.
    }
    try {
        checkIndex(segment.area(), nullptr);
    } catch (const std::logic_error& error) {
        CSegmentJournal::markIndexDamaged(segment);
        told = line(error.what());
    }
    return told;
}

}  // namespace

std::string recover(Segment& segment) {
    const CSegmentJournal::sDeath death = CSegmentJournal::finish(segment);
    if (!death.isOurs) {
        CSegmentJournal::countForeignDeath(segment);
        return checkAfterForeignDeath(segment);
    }
    if (death.heldHeap) releaseHeapOfDead(segment);
    return {};
}

}  // namespace core_utils
