#include "shared_memory/segment_journal.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "shared_memory/segment_change.h"

namespace core_utils {

namespace {

using Word = std::atomic<std::uint32_t>;
// Several processes share it.
static_assert(Word::is_always_lock_free);

// Boost keeps its state in the first four bytes and begins after at least eight.
constexpr std::size_t WORD_OFFSET = 4;
// The word's lowest bit; the journal's offset is a multiple of its alignment.
constexpr std::uint32_t INDEX_IS_DAMAGED = 1;

constexpr std::uint32_t ALIGNMENT = 64;
constexpr std::uint32_t LARGEST_CAPACITY = 0x10000;  // bytes
// The journal takes at most this part of a small segment: one in 20.
constexpr std::size_t SHARE_OF_SEGMENT = 20;

constexpr std::uint64_t BORN = 0x6C616E72756F4A01;
constexpr std::uint64_t NOT_BORN = 0x6C616E72756F4A00;

struct sRecord {
    std::uint32_t offset;
    std::uint32_t size;
};

constexpr std::size_t roundUp(std::size_t size, std::size_t step) {
    return (size + step - 1) / step * step;
}

std::size_t bytesOf(const sPatch& patch) {
    return sizeof(sRecord) + roundUp(patch.size, sizeof(sRecord));
}

void put(const Segment& segment, const sPatch& patch) {
    std::memcpy(segment.area().base + patch.offset, patch.bytes, patch.size);
}

}  // namespace

struct alignas(ALIGNMENT) CSegmentJournal::sHeader {
    std::uint64_t magic;
    std::uint32_t offset;    // its own
    std::uint32_t capacity;  // for records, bytes
    Word committed;          // bytes of records that are to be applied
    Word inUse;
    Word heapInUse;
    Word foreignDeaths;

    unsigned char* records() { return reinterpret_cast<unsigned char*>(this + 1); }
};

Word& CSegmentJournal::word(const Segment& segment) {
    return *reinterpret_cast<Word*>(segment.area().base + WORD_OFFSET);
}

CSegmentJournal::sHeader* CSegmentJournal::at(const Segment& segment, std::uint32_t offset) {
    const sArea area = segment.area();
    if (offset == 0 || offset % ALIGNMENT != 0) return nullptr;
    auto* journal = reinterpret_cast<sHeader*>(area.base + offset);
    const bool fits = area.contains(journal, sizeof(sHeader)) && journal->offset == offset &&
                      area.contains(journal->records(), journal->capacity);
    return fits ? journal : nullptr;
}

CSegmentJournal::sHeader* CSegmentJournal::find(const Segment& segment) {
    sHeader* journal = at(segment, word(segment).load(std::memory_order_relaxed) & -ALIGNMENT);
    return journal != nullptr && journal->magic == BORN ? journal : nullptr;
}

bool CSegmentJournal::write(sHeader& journal, const sPatch* patches, std::size_t count) {
    std::size_t size = 0;
    for (const sPatch* patch = patches; patch != patches + count; ++patch)
        size += bytesOf(*patch);
    if (size > journal.capacity) return false;
    unsigned char* end = journal.records();
    for (const sPatch* patch = patches; patch != patches + count; ++patch) {
        const sRecord record{patch->offset, patch->size};
        std::memcpy(end, &record, sizeof record);
        std::memcpy(end + sizeof record, patch->bytes, patch->size);
        end += bytesOf(*patch);
    }
    journal.committed.store(static_cast<std::uint32_t>(size), std::memory_order_release);
    // Before anything is applied. The thread sanitizer does not know std::atomic_thread_fence.
    __sync_synchronize();
    return true;
}

void CSegmentJournal::apply(Segment& segment, const sPatch* patches, std::size_t count) {
    sHeader* journal = find(segment);
    const bool isWritten = journal != nullptr && write(*journal, patches, count);
    for (const sPatch* patch = patches; patch != patches + count; ++patch)
        put(segment, *patch);
    if (isWritten) journal->committed.store(0, std::memory_order_release);
}

bool CSegmentJournal::redo(Segment& segment, sHeader& journal) {
    const sArea area = segment.area();
    const std::size_t size = journal.committed.load(std::memory_order_acquire);
    if (size == 0 || size > journal.capacity) return false;
    const unsigned char* end = journal.records() + size;
    for (const unsigned char* at = journal.records(); at < end;) {
        sRecord record{};
        std::memcpy(&record, at, sizeof record);
        const sPatch patch{record.offset, record.size, at + sizeof record};
        if (patch.size > size || !area.contains(area.base + patch.offset, patch.size)) break;
        put(segment, patch);
        at += bytesOf(patch);
    }
    journal.committed.store(0, std::memory_order_release);
    return true;
}

void CSegmentJournal::provide(Segment& segment) {
    if (find(segment) != nullptr) return;
    const sArea area = segment.area();
    const auto capacity = static_cast<std::uint32_t>(
        std::min<std::size_t>(area.size / SHARE_OF_SEGMENT / ALIGNMENT * ALIGNMENT,
                              LARGEST_CAPACITY) -
        sizeof(sHeader));
    CPrivateCopy copy(segment);
    // With room to align it, and to leave the words alone that the heap keeps in a free block.
    void* block = copy.area().manager->allocate(
        capacity + sizeof(sHeader) + std::size_t{2} * ALIGNMENT, std::nothrow);
    if (block == nullptr) return;
    const auto offset =
        static_cast<std::uint32_t>(roundUp(copy.area().offsetOf(block) + ALIGNMENT, ALIGNMENT));

    std::vector<sPatch> patches = copy.differences();
    // The memory is free: nobody touches it while the heap is locked.
    auto* journal =
        new (area.base + offset) sHeader{NOT_BORN, offset, capacity, {0}, {1}, {1}, {0}};
    std::memset(journal->records(), 0, capacity);  // its pages get their memory now
    patches.push_back(
        {offset + static_cast<std::uint32_t>(offsetof(sHeader, magic)), sizeof BORN, &BORN});
    if (!write(*journal, patches.data(), patches.size())) return;
    word(segment).store(offset | (word(segment).load() & (ALIGNMENT - 1)));
    redo(segment, *journal);
}

void CSegmentJournal::markInUse(const Segment& segment, bool inUse) {
    sHeader* journal = find(segment);
    if (journal != nullptr) journal->inUse.store(inUse ? 1 : 0, std::memory_order_release);
}

void CSegmentJournal::markHeapInUse(const Segment& segment, bool inUse) {
    sHeader* journal = find(segment);
    if (journal != nullptr) journal->heapInUse.store(inUse ? 1 : 0, std::memory_order_release);
}

CSegmentJournal::sDeath CSegmentJournal::finish(Segment& segment) {
    sHeader* journal = at(segment, word(segment).load() & -ALIGNMENT);
    if (journal == nullptr || (journal->magic != BORN && journal->magic != NOT_BORN)) return {};
    redo(segment, *journal);
    if (journal->magic != BORN) return {};
    const sDeath death{journal->inUse.exchange(0) != 0, journal->heapInUse.exchange(0) != 0};
    return death;
}

void CSegmentJournal::countForeignDeath(const Segment& segment) {
    sHeader* journal = find(segment);
    if (journal != nullptr) ++journal->foreignDeaths;
}

std::uint32_t CSegmentJournal::foreignDeaths(const Segment& segment) {
    const sHeader* journal = find(segment);
    return journal != nullptr ? journal->foreignDeaths.load() : 0;
}

void CSegmentJournal::markIndexDamaged(const Segment& segment) {
    word(segment) |= INDEX_IS_DAMAGED;
}

bool CSegmentJournal::isIndexDamaged(const Segment& segment) {
    return (word(segment).load(std::memory_order_relaxed) & INDEX_IS_DAMAGED) != 0;
}

bool CSegmentJournal::isIn(const Segment& segment, std::uint32_t begin, std::uint32_t end) {
    const sHeader* journal = find(segment);
    return journal != nullptr && begin <= journal->offset && journal->offset < end;
}

}  // namespace core_utils
