#include "shared_memory/heap_check.h"

#include <algorithm>
#include <boost/interprocess/sync/interprocess_mutex.hpp>
#include <boost/intrusive/detail/rbtree_node.hpp>
#include <boost/intrusive/set.hpp>
#include <climits>
#include <cstring>
#include <stdexcept>

namespace core_utils {

namespace bi = boost::intrusive;

namespace {

// Boost's own types are private; these have the same members and so the same layout.
using Size = SegmentManager::size_type;
using Pointer = SegmentManager::void_pointer;
using Hook = bi::make_set_base_hook<bi::void_pointer<Pointer>, bi::optimize_size<true>,
                                    bi::link_mode<bi::normal_link>>::type;
using NodeTraits = bi::rbtree_node_traits<Pointer, true>;
using Node = NodeTraits::node;
using NodePointer = NodeTraits::node_ptr;

struct sBlockSizes {
    Size previous;  // size of the block before, if it is free; both sizes in units of UNIT bytes
    Size size : sizeof(Size) * CHAR_BIT - 2;
    Size isPreviousAllocated : 1;
    Size isAllocated : 1;
};

struct sBlockHeader : sBlockSizes, Hook {};

struct sHeap : boost::interprocess::interprocess_mutex {
    bi::make_multiset<sBlockHeader, bi::base_hook<Hook>>::type freeBlocks;
    Size extraBytes;
    Size allocatedBytes;
    Size size;
};
static_assert(sizeof(sHeap) == sizeof(SegmentManager::segment_manager_base_type));
static_assert(sizeof(Hook) == sizeof(Node));

constexpr Size UNIT = SegmentManager::memory_algorithm::Alignment;

constexpr std::size_t roundUp(std::size_t size, std::size_t step = UNIT) {
    return (size + step - 1) / step * step;
}

constexpr std::size_t SIZES_BYTES = roundUp(sizeof(sBlockSizes));
constexpr std::size_t HEADER_BYTES = roundUp(sizeof(sBlockHeader));

[[noreturn]] void damaged(const char* what) {
    throw std::logic_error(std::string(what) +
                           "; stop all that use the segment, remove it and start again");
}

void require(bool condition, const char* what) {
    if (!condition) damaged(what);
}

constexpr char HEAP[] = "its heap is damaged";
constexpr char INDEX[] = "its index of the objects is damaged";

const sHeap& heapOf(const sArea& area) {
    return *reinterpret_cast<const sHeap*>(area.manager);
}

std::uint32_t firstBlock(const sArea& area) {
    return static_cast<std::uint32_t>(
        roundUp(area.offsetOf(area.manager) + sizeof(SegmentManager)));
}

// Checks a red-black tree. A node is read only after `isNode` has accepted its address.
template <typename IsNode, typename IsBefore>
class CTreeCheck {
  public:
    CTreeCheck(const char* what, IsNode isNode, IsBefore isBefore)
        : mWhat(what), mIsNode(isNode), mIsBefore(isBefore) {}

    // Returns the number of nodes.
    std::size_t check(Node* header) {
        Node* root = parentOf(header);
        if (root == nullptr) {
            require(leftOf(header) == header && rightOf(header) == header, mWhat);
            return 0;
        }
        mLeftmost = leftOf(header);
        descend(root, header, 0);
        require(mCount > 0 && mPrevious == rightOf(header), mWhat);
        return mCount;
    }

  private:
    static constexpr int DEEPEST = 64;

    static Node* raw(const NodePointer& node) { return boost::movelib::to_raw_pointer(node); }
    static Node* parentOf(Node* node) { return raw(NodeTraits::get_parent(NodePointer(node))); }
    static Node* leftOf(Node* node) { return raw(NodeTraits::get_left(NodePointer(node))); }
    static Node* rightOf(Node* node) { return raw(NodeTraits::get_right(NodePointer(node))); }
    static bool isBlack(Node* node) {
        return node == nullptr || NodeTraits::get_color(NodePointer(node)) == NodeTraits::black();
    }

    // Visits the nodes in order. Returns the number of black nodes on each path down.
    int descend(Node* node, Node* parent, int depth) {
        if (node == nullptr) return 0;
        require(depth < DEEPEST && mIsNode(node) && parentOf(node) == parent, mWhat);
        require(isBlack(node) || depth == 0 || isBlack(parent), mWhat);
        const int left = descend(leftOf(node), node, depth + 1);
        require(mPrevious == nullptr ? node == mLeftmost : mIsBefore(mPrevious, node), mWhat);
        mPrevious = node;
        ++mCount;
        require(descend(rightOf(node), node, depth + 1) == left, mWhat);
        return left + (isBlack(node) ? 1 : 0);
    }

    const char* mWhat;
    IsNode mIsNode;
    IsBefore mIsBefore;
    Node* mLeftmost = nullptr;
    Node* mPrevious = nullptr;
    std::size_t mCount = 0;
};

// A node of the index is the header of its object.
template <typename Object>
Object* objectOf(Node* node) {
    return reinterpret_cast<Object*>(node);
}

template <typename Object>
bool isObject(const sArea& area, const CBlocks* blocks, Node* node) {
    if (reinterpret_cast<std::uintptr_t>(node) % alignof(Object) != 0) return false;
    if (!area.contains(node, sizeof(Object))) return false;
    const auto* header = objectOf<Object>(node)->get_block_header();
    if (!area.contains(header, sizeof *header)) return false;
    if (header->sizeof_char() != 1 || header->m_value_alignment == 0) return false;
    if (header->value_bytes() > area.size) return false;
    const char* name = header->template name<char>();
    const std::size_t length = header->name_length();
    const auto size = static_cast<std::size_t>(name + length + 1 - reinterpret_cast<char*>(node));
    if (!area.contains(node, size) || ::strnlen(name, length + 1) != length) return false;
    return blocks == nullptr || blocks->isAllocated(area.offsetOf(node), size);
}

// The order of the index: shorter names first. Boost's operator for two objects ignores the
// characters of names of the same length; the index does not use it.
template <typename Object>
bool isNamedBefore(Node* a, Node* b) {
    const auto length = objectOf<Object>(a)->name_length();
    const auto other = objectOf<Object>(b)->name_length();
    if (length != other) return length < other;
    return std::memcmp(objectOf<Object>(a)->name(), objectOf<Object>(b)->name(), length) < 0;
}

template <typename Index, typename End>
void checkOneIndex(const sArea& area, const CBlocks* blocks, End end) {
    using Object = typename Index::value_type;
    const auto isNode = [&](Node* node) { return isObject<Object>(area, blocks, node); };
    Node* header = boost::movelib::to_raw_pointer(end.base().pointed_node());
    // Boost does not tell the header's distance from the index: measure it on another index.
    const Index other(nullptr);
    const auto distance = reinterpret_cast<const unsigned char*>(
                              boost::movelib::to_raw_pointer(other.cend().pointed_node())) -
                          reinterpret_cast<const unsigned char*>(&other);
    const auto* index =
        reinterpret_cast<const Index*>(reinterpret_cast<const unsigned char*>(header) - distance);
    // A death in a rotation can leave a sound tree with fewer nodes than counted.
    CTreeCheck check(INDEX, isNode, isNamedBefore<Object>);
    require(check.check(header) == index->size(), INDEX);
}

}  // namespace

CBlocks::CBlocks(const sArea& area) {
    const sHeap& heap = heapOf(area);
    const std::uint32_t end = heapEnd(area);
    std::size_t allocated = 0;
    std::size_t free = 0;
    bool wasAllocated = true;
    const sBlockSizes* last = nullptr;
    for (std::uint32_t at = firstBlock(area);;) {
        const auto& sizes = *reinterpret_cast<const sBlockSizes*>(area.base + at);
        require(at == firstBlock(area) || ((sizes.isPreviousAllocated != 0) == wasAllocated &&
                                           (wasAllocated || sizes.previous == last->size)),
                HEAP);
        if (at == end) break;
        const std::size_t bytes = static_cast<std::size_t>(sizes.size) * UNIT;
        require(bytes >= HEADER_BYTES && bytes <= end - at, HEAP);
        require(wasAllocated || sizes.isAllocated, HEAP);
        wasAllocated = sizes.isAllocated != 0;
        (wasAllocated ? allocated : free) += wasAllocated ? bytes : 1;
        const auto next = static_cast<std::uint32_t>(at + bytes);
        mBlocks.push_back({at, next, static_cast<std::uint32_t>(at + SIZES_BYTES), wasAllocated});
        last = &sizes;
        at = next;
    }
    require(allocated == heap.allocatedBytes, HEAP);

    const auto blockAt = [&](const Node* node) {
        const auto begin = static_cast<std::uint32_t>(area.offsetOf(node) - sizeof(sBlockSizes));
        return std::lower_bound(mBlocks.begin(), mBlocks.end(), begin,
                                [](const sBlock& a, std::uint32_t b) { return a.begin < b; });
    };
    const auto isNode = [&](const Node* node) {
        if (!area.contains(node, sizeof(Node))) return false;
        const auto block = blockAt(node);
        return block != mBlocks.end() && !block->isAllocated &&
               block->begin + sizeof(sBlockSizes) == area.offsetOf(node);
    };
    const auto isBefore = [&](const Node* a, const Node* b) {
        return blockAt(a)->end - blockAt(a)->begin <= blockAt(b)->end - blockAt(b)->begin;
    };
    CTreeCheck check(HEAP, isNode, isBefore);
    const auto header = const_cast<sHeap&>(heap).freeBlocks.end().pointed_node();
    require(check.check(boost::movelib::to_raw_pointer(header)) == free &&
                heap.freeBlocks.size() == free,
            HEAP);
}

std::uint32_t CBlocks::endOf(std::uint32_t memory) const {
    const auto block =
        std::lower_bound(mBlocks.begin(), mBlocks.end(), memory,
                         [](const sBlock& a, std::uint32_t b) { return a.memory < b; });
    const bool isAllocated =
        block != mBlocks.end() && block->memory == memory && block->isAllocated;
    return isAllocated ? block->memoryEnd() : 0;
}

bool CBlocks::isAllocated(std::uint32_t memory, std::size_t bytes) const {
    const std::uint32_t end = endOf(memory);
    return end != 0 && bytes <= end - memory;
}

std::size_t sizeOfBlockHeader(bool isAllocated) {
    return isAllocated ? SIZES_BYTES : HEADER_BYTES;
}

std::uint32_t heapEnd(const sArea& area) {
    const sHeap& heap = heapOf(area);
    const std::uint32_t manager = area.offsetOf(area.manager);
    const std::uint32_t first = firstBlock(area) - manager;
    require(heap.size <= area.size - manager && heap.size >= first + HEADER_BYTES + SIZES_BYTES,
            HEAP);
    return static_cast<std::uint32_t>(manager + first + heap.size / UNIT * UNIT -
                                      first / UNIT * UNIT - SIZES_BYTES);
}

void checkIndex(const sArea& area, const CBlocks* blocks) {
    checkOneIndex<SegmentManager::named_index_t>(area, blocks, area.manager->named_end());
    checkOneIndex<SegmentManager::unique_index_t>(area, blocks, area.manager->unique_end());
}

}  // namespace core_utils
