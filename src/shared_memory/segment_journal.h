// The journal in the segment, through which our changes come in whole: whoever dies in a change
// leaves the old state or the new one. It is redone, never undone.
//
//   word at byte 4  journal     the state is                  a recoverer
//   0               none        none yet; no room for one     takes the death for a plain peer's
//   its offset      not born    the change that allocates it  applies its records
//                               is committed
//   its offset      0 bytes     no change, or one that is     drops it: the segment has not been
//                               being written down            touched yet
//   its offset      n bytes     committed: its n bytes of     applies them again, then sets 0
//                               records are being applied
//
// A record is an offset, a size and that many bytes for the segment; applying one twice does no
// harm. All of this is touched under the segment's lock only, except that the journal is looked for
// when attaching. Peers that know nothing of it see an allocated block without a name.
#ifndef SHARED_MEMORY_SEGMENT_JOURNAL_H
#define SHARED_MEMORY_SEGMENT_JOURNAL_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "shared_memory/segment.h"

namespace core_utils {

// What to put where in the segment.
struct sPatch {
    std::uint32_t offset;
    std::uint32_t size;
    const void* bytes;
};

class CSegmentJournal {
  public:
    // Whose lock it was that has been taken over.
    struct sDeath {
        bool isOurs;    // no plain peer's: what it changed is whole
        bool heldHeap;  // with isOurs: it had the heap's lock too
    };

    // Brings the patches in as one. Without a journal, and where it is too small, they are applied
    // as they are: a death in the middle then leaves a part of them.
    static void apply(Segment& segment, const sPatch* patches, std::size_t count);

    // Under both locks: allocates the journal if there is none and room for one.
    static void provide(Segment& segment);
    static bool isProvided(const Segment& segment) { return find(segment) != nullptr; }

    // Notes that this library holds the lock.
    static void markInUse(const Segment& segment, bool inUse);
    static void markHeapInUse(const Segment& segment, bool inUse);

    // For the recoverer: finishes the dead one's change.
    static sDeath finish(Segment& segment);
    static void countForeignDeath(const Segment& segment);
    static std::uint32_t foreignDeaths(const Segment& segment);

    // The index of the objects can no longer be followed. Never taken back.
    static void markIndexDamaged(const Segment& segment);
    static bool isIndexDamaged(const Segment& segment);

    // True if it stands between the two offsets. Its bytes are no part of a change.
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
