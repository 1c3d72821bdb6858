// Changes of the heap and the objects, all or nothing: Boost's code changes a copy-on-write
// mapping, and the bytes that differ afterwards are written to the segment through the redo
// journal.
#ifndef SHARED_MEMORY_SEGMENT_CHANGE_H
#define SHARED_MEMORY_SEGMENT_CHANGE_H

#include <optional>
#include <vector>

#include "shared_memory/heap_check.h"
#include "shared_memory/segment_journal.h"
#include "shared_memory/segment_lock.h"

namespace core_utils {

// A copy-on-write mapping of the segment, private to this process. Both locks must be held for its
// whole life. In the copy the heap's mutex is free and the segment's is locked.
class CPrivateCopy {
  public:
    // Throws std::logic_error if the heap or the index is damaged, std::bad_alloc if this process
    // is out of memory.
    explicit CPrivateCopy(const Segment& segment);
    CPrivateCopy(const CPrivateCopy&) = delete;
    CPrivateCopy& operator=(const CPrivateCopy&) = delete;
    ~CPrivateCopy();

    const sArea& area() const { return mArea; }
    const CBlocks& blocks() const { return *mBlocks; }  // before the change

    // The bytes that were changed in this copy, except in free memory. The patches point into the
    // copy.
    std::vector<sPatch> differences() const;

  private:
    bool isObjects(const sBlock& block) const;
    void keepObjects();
    void compareObjects(std::vector<sPatch>& patches) const;
    void compareHeap(std::vector<sPatch>& patches) const;
    void compare(std::uint32_t begin, std::uint32_t end, const unsigned char* before,
                 std::vector<sPatch>& patches) const;
    void compareWithSegment(std::size_t begin, std::size_t end, std::vector<sPatch>& patches) const;

    const Segment& mSegment;
    sArea mArea;
    std::optional<CBlocks> mBlocks;
    // Contents of the allocated blocks before the change, one after the other. Plain peers may
    // write to the segment without a lock: comparing with the segment itself would undo their
    // writes.
    std::vector<unsigned char> mObjects;
};

// Runs `make` on a private copy and writes its changes to the segment. The caller holds the
// segment's lock. If `make` throws, the segment is unchanged.
template <typename Make>
auto changeStructure(Segment& segment, Make make) {
    const CHeapLock heap(segment);
    CSegmentJournal::provide(segment);
    const CPrivateCopy copy(segment);
    const auto result = make(copy);
    const std::vector<sPatch> patches = copy.differences();
    CSegmentJournal::apply(segment, patches.data(), patches.size());
    return result;
}

}  // namespace core_utils

#endif
