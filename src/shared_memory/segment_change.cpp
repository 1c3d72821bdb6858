#include "shared_memory/segment_change.h"

#include <sys/mman.h>

#include <boost/interprocess/sync/interprocess_mutex.hpp>
#include <cstring>
#include <new>

namespace core_utils {

namespace {

using HeapMutex = boost::interprocess::interprocess_mutex;

// Two differences so close together make one patch: a patch costs a header.
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
    } catch (...) {
        munmap(mArea.base, mArea.size);
        throw;
    }
    new (mArea.manager) HeapMutex;
}

CPrivateCopy::~CPrivateCopy() {
    munmap(mArea.base, mArea.size);
}

std::vector<sPatch> CPrivateCopy::differences() const {
    const std::uint32_t manager = mArea.offsetOf(mArea.manager);
    const auto base =
        static_cast<std::uint32_t>(manager + sizeof(SegmentManager::segment_manager_base_type));
    std::vector<sPatch> patches;
    compare(static_cast<std::uint32_t>(manager + sizeof(HeapMutex)), base, patches);
    compare(static_cast<std::uint32_t>(base + sizeof(pthread_mutex_t)),
            static_cast<std::uint32_t>(manager + sizeof(SegmentManager)), patches);
    const CBlocks blocks(mArea);
    for (const sBlock& block : blocks.all()) {
        const bool isWhole =
            block.isAllocated && !CSegmentJournal::isIn(mSegment, block.begin, block.end);
        const auto header =
            static_cast<std::uint32_t>(block.begin + sizeOfBlockHeader(block.isAllocated));
        compare(block.begin, isWhole ? block.end : header, patches);
    }
    const std::uint32_t end = heapEnd(mArea);
    compare(end, static_cast<std::uint32_t>(end + sizeOfBlockHeader(true)), patches);
    return patches;
}

void CPrivateCopy::compare(std::uint32_t begin, std::uint32_t end,
                           std::vector<sPatch>& patches) const {
    const unsigned char* now = mArea.base;
    const unsigned char* before = mSegment.area().base;
    if (std::memcmp(now + begin, before + begin, end - begin) == 0) return;
    for (std::uint32_t at = begin; at < end; ++at) {
        if (now[at] == before[at]) continue;
        const bool joins =
            !patches.empty() && at - (patches.back().offset + patches.back().size) < SMALLEST_GAP;
        if (joins) {
            patches.back().size = at + 1 - patches.back().offset;
        } else {
            patches.push_back({at, 1, now + at});
        }
    }
}

}  // namespace core_utils
