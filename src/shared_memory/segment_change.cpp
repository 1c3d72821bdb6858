#include "shared_memory/segment_change.h"

#include <sys/mman.h>

#include <algorithm>
#include <boost/interprocess/sync/interprocess_mutex.hpp>
#include <cstring>
#include <new>

namespace core_utils {

namespace {

using HeapMutex = boost::interprocess::interprocess_mutex;

// Differences closer than this share a patch, as each patch has a header.
constexpr std::uint32_t SMALLEST_GAP = 16;

}  // namespace

CPrivateCopy::CPrivateCopy(const Segment& segment) : mSegment(segment), mArea(segment.area()) {
    void* copy =
        mmap(nullptr, mArea.size, PROT_READ | PROT_WRITE, MAP_PRIVATE, segment.descriptor(), 0);
    if (copy == MAP_FAILED) throw std::bad_alloc();
    const std::uint32_t manager = mArea.offsetOf(mArea.manager);
    mArea.base = static_cast<unsigned char*>(copy);
    mArea.manager = reinterpret_cast<SegmentManager*>(mArea.base + manager);
    try {
        mBlocks.emplace(mArea);
        checkIndex(mArea, &*mBlocks);
        keepObjects();
    } catch (...) {
        munmap(mArea.base, mArea.size);
        throw;
    }
    new (mArea.manager) HeapMutex;
}

CPrivateCopy::~CPrivateCopy() {
    munmap(mArea.base, mArea.size);
}

bool CPrivateCopy::isObjects(const sBlock& block) const {
    return block.isAllocated && !CSegmentJournal::isIn(mSegment, block.begin, block.end);
}

void CPrivateCopy::keepObjects() {
    for (const sBlock& block : mBlocks->all()) {
        if (!isObjects(block)) continue;
        mObjects.insert(mObjects.end(), mArea.base + block.memory, mArea.base + block.memoryEnd());
    }
}

std::vector<sPatch> CPrivateCopy::differences() const {
    std::vector<sPatch> patches;
    compareObjects(patches);
    compareHeap(patches);
    return patches;
}

void CPrivateCopy::compareObjects(std::vector<sPatch>& patches) const {
    const unsigned char* before = mObjects.data();
    for (const sBlock& block : mBlocks->all()) {
        if (!isObjects(block)) continue;
        compare(block.memory, block.memoryEnd(), before, patches);
        before += block.memoryEnd() - block.memory;
    }
}

// Compares what only a holder of the locks changes: the heap's words, the index and new blocks.
void CPrivateCopy::compareHeap(std::vector<sPatch>& patches) const {
    const std::uint32_t manager = mArea.offsetOf(mArea.manager);
    const std::size_t base = manager + sizeof(SegmentManager::segment_manager_base_type);
    compareWithSegment(manager + sizeof(HeapMutex), base, patches);
    compareWithSegment(base + sizeof(pthread_mutex_t), manager + sizeof(SegmentManager), patches);

    const CBlocks blocks(mArea);
    std::uint32_t header = 0;
    for (const sBlock& block : blocks.all()) {
        header = std::max(header, block.begin);
        compareWithSegment(header, block.begin + sizeOfBlockHeader(block.isAllocated), patches);
        if (isObjects(block)) {
            compareWithSegment(std::max(block.memory, mBlocks->endOf(block.memory)),
                               block.memoryEnd(), patches);
        }
        header = block.isAllocated ? block.memoryEnd() : block.end;
    }
    compareWithSegment(header, heapEnd(mArea) + sizeOfBlockHeader(true), patches);
}

void CPrivateCopy::compareWithSegment(std::size_t begin, std::size_t end,
                                      std::vector<sPatch>& patches) const {
    if (begin >= end) return;
    compare(static_cast<std::uint32_t>(begin), static_cast<std::uint32_t>(end),
            mSegment.area().base + begin, patches);
}

void CPrivateCopy::compare(std::uint32_t begin, std::uint32_t end, const unsigned char* before,
                           std::vector<sPatch>& patches) const {
    const unsigned char* now = mArea.base;
    if (std::memcmp(now + begin, before, end - begin) == 0) return;
    for (std::uint32_t at = begin; at < end; ++at) {
        if (now[at] == before[at - begin]) continue;
        const bool joins = !patches.empty() && at >= patches.back().offset &&
                           at - (patches.back().offset + patches.back().size) < SMALLEST_GAP;
        if (joins) {
            patches.back().size = at + 1 - patches.back().offset;
        } else {
            patches.push_back({at, 1, now + at});
        }
    }
}

}  // namespace core_utils
