// Whether Boost's bookkeeping of a segment can be followed: its blocks, the tree of the free ones,
// the index of the named objects. A plain peer that dies leaves it at any instruction. What is
// found here is what Boost's own code then relies on; nothing is mended.
#ifndef SHARED_MEMORY_HEAP_CHECK_H
#define SHARED_MEMORY_HEAP_CHECK_H

#include <cstdint>
#include <vector>

#include "shared_memory/segment.h"

namespace core_utils {

// A block of the heap, its bookkeeping included, as offsets in the segment.
struct sBlock {
    std::uint32_t begin;
    std::uint32_t end;
    std::uint32_t memory;  // what allocate() returned, if it is allocated
    bool isAllocated;

    // An allocated block's memory reaches over the first word of the next one's bookkeeping.
    std::uint32_t memoryEnd() const { return end + sizeof(SegmentManager::size_type); }
};

// In the order of their offsets. Finding one by its memory takes a binary search.
class CBlocks {
  public:
    // Under the heap's lock, or of a private copy. Throws std::logic_error over a damaged heap.
    explicit CBlocks(const sArea& area);

    const std::vector<sBlock>& all() const { return mBlocks; }

    // Where the memory that begins at `memory` ends; 0 if none does that has been allocated.
    std::uint32_t endOf(std::uint32_t memory) const;

    // True if the memory that begins at `memory` has been allocated, with `bytes` bytes at least.
    bool isAllocated(std::uint32_t memory, std::size_t bytes) const;

  private:
    std::vector<sBlock> mBlocks;
};

// Bytes at a block's beginning that are the heap's, free or not.
std::size_t sizeOfBlockHeader(bool isAllocated);
// Offset of the block that ends the heap, and has only a header.
std::uint32_t heapEnd(const sArea& area);

// The index of the objects; under the segment's lock, or of a private copy. Without `blocks` an
// object is only known to lie in the segment. Throws std::logic_error over a damaged index.
void checkIndex(const sArea& area, const CBlocks* blocks);

}  // namespace core_utils

#endif
