// A change of the segment's heap and objects, all or nothing: Boost makes it on a private copy, and
// what has become different there comes into the segment through the journal.
#ifndef SHARED_MEMORY_SEGMENT_CHANGE_H
#define SHARED_MEMORY_SEGMENT_CHANGE_H

#include <optional>
#include <vector>

#include "shared_memory/heap_check.h"
#include "shared_memory/segment_journal.h"
#include "shared_memory/segment_lock.h"

namespace core_utils {

// The segment as it is now, in memory of this process alone: pages are copied as they are written.
// Made and used under both locks. In it the heap's lock is free, and the segment's is held.
class CPrivateCopy {
  public:
    // Throws std::logic_error if the heap or the index is damaged, std::bad_alloc without memory.
    explicit CPrivateCopy(const Segment& segment);
    CPrivateCopy(const CPrivateCopy&) = delete;
    CPrivateCopy& operator=(const CPrivateCopy&) = delete;
    ~CPrivateCopy();

    const sArea& area() const { return mArea; }
    const CBlocks& blocks() const { return *mBlocks; }  // as they were before the change

    // What has been changed in this copy. What free memory holds does not matter. The patches
    // point into the copy.
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
    // What the allocated memory held before the change, one block after the other. Plain peers
    // write there without a lock at any moment: comparing with the segment would take that back.
    std::vector<unsigned char> mObjects;
};

// Under the segment's lock: runs `make` on a private copy and brings its changes in. If it throws,
// the segment is as before.
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
