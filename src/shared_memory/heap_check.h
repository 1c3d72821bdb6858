// Checks Boost's bookkeeping of a segment: the heap's blocks, the tree of its free blocks, and the
// index of the named objects. A plain peer, one without this library, may have died at any
// instruction of a change. Only what passes may be handed to Boost's code. Nothing is repaired.
#ifndef SHARED_MEMORY_HEAP_CHECK_H
#define SHARED_MEMORY_HEAP_CHECK_H

#include <cstdint>
#include <vector>

#include "shared_memory/segment.h"

namespace core_utils {

// A block of the heap with its header, as offsets in the segment.
struct sBlock {
    std::uint32_t begin;
    std::uint32_t end;
    std::uint32_t memory;  // what allocate() returned; only of an allocated block
    bool isAllocated;

    // The memory of an allocated block includes the first word of the next block's header.
    std::uint32_t memoryEnd() const { return end + sizeof(SegmentManager::size_type); }
};

// All blocks of the heap, in the order of their offsets. Finding one takes a binary search.
class CBlocks {
  public:
    // Call it with the heap's lock held, or on a private copy. Throws std::logic_error if the heap
    // is damaged.
    explicit CBlocks(const sArea& area);

    const std::vector<sBlock>& all() const { return mBlocks; }

    // The end of the allocated memory that begins at `memory`; 0 if no such memory is allocated.
    std::uint32_t endOf(std::uint32_t memory) const;

    // True if at least `bytes` bytes are allocated at `memory`.
    bool isAllocated(std::uint32_t memory, std::size_t bytes) const;

  private:
    std::vector<sBlock> mBlocks;
};

// Size in bytes of the header of an allocated or a free block.
std::size_t sizeOfBlockHeader(bool isAllocated);
// Offset of the block that ends the heap; it consists of a header only.
std::uint32_t heapEnd(const sArea& area);

// Checks the index of the objects. Call it with the segment's lock held, or on a private copy. With
// `blocks`, each object must lie in allocated memory; if null, anywhere in the segment. Throws
// std::logic_error if the index is damaged.
void checkIndex(const sArea& area, const CBlocks* blocks);

}  // namespace core_utils

#endif
