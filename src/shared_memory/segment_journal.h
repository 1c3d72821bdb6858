// The redo journal in the segment. It makes the changes of this library atomic: a process that dies
// in one leaves the old state or the new one.
//
//   word at byte 4  journal     meaning                       recovery
//   0               absent      not made yet, or no room      treats the death as a plain peer's
//   its offset      not born    the change that allocates it  applies its records
//                               is committed
//   its offset      0 bytes     no change, or one that is     drops it: the segment has not been
//                               being written down            touched yet
//   its offset      n bytes     committed: its n bytes of     applies them again, then sets 0
//                               records are being applied
//
// A record is an offset, a size and that many bytes for the segment; applying one twice does no
// harm. All operations require the segment's lock, except isProvided() and foreignDeaths(). Peers
// without this library see an allocated block without a name.
#ifndef SHARED_MEMORY_SEGMENT_JOURNAL_H
#define SHARED_MEMORY_SEGMENT_JOURNAL_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "shared_memory/segment.h"

namespace core_utils {

// `size` bytes to be written at `offset` of the segment.
struct sPatch {
    std::uint32_t offset;
    std::uint32_t size;
    const void* bytes;
};

class CSegmentJournal {
  public:
    // The process whose lock has been taken over.
    struct sDeath {
        bool isOurs;    // it used this library: its change is whole
        bool heldHeap;  // it also held the heap's lock; only set with isOurs
    };

    // Writes all patches, or none if this process dies. Without a journal, or if they do not fit
    // into it, they are written directly: a death in the middle then leaves a part of them.
    static void apply(Segment& segment, const sPatch* patches, std::size_t count);

    // Allocates the journal if the segment does not have it and has room. Requires both locks.
    static void provide(Segment& segment);
    static bool isProvided(const Segment& segment) { return find(segment) != nullptr; }

    // Record that a process with this library holds the segment's or the heap's lock.
    static void markInUse(const Segment& segment, bool inUse);
    static void markHeapInUse(const Segment& segment, bool inUse);

    // Finishes the change of the dead holder.
    static sDeath finish(Segment& segment);
    // Deaths of plain peers with the segment's lock; 0 without a journal.
    static void countForeignDeath(const Segment& segment);
    static std::uint32_t foreignDeaths(const Segment& segment);

    // The mark that the index of the objects is damaged. It is never cleared.
    static void markIndexDamaged(const Segment& segment);
    static bool isIndexDamaged(const Segment& segment);

    // True if the journal lies between the two offsets. Changes leave its bytes out.
    static bool isIn(const Segment& segment, std::uint32_t begin, std::uint32_t end);

  private:
    struct sHeader;

    static std::atomic<std::uint32_t>& word(const Segment& segment);
    static sHeader* at(const Segment& segment, std::uint32_t offset);
    static sHeader* find(const Segment& segment);
    static bool write(sHeader& journal, const sPatch* patches, std::size_t count);
    static bool redo(Segment& segment, sHeader& journal);
};

inline constexpr char INDEX_DAMAGED[] =
    "a process died while it changed the index of the objects; stop all that use the segment, "
    "remove it and start again";

}  // namespace core_utils

#endif
