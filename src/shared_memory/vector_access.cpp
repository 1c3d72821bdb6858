#include "shared_memory/vector_access.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "shared_memory/segment_check.h"
#include "shared_memory/segment_creation.h"

namespace boost {

// Boost's assertions stay on, and what they find in a segment that a peer has damaged becomes an
// exception of the access instead of the end of this process.
void assertion_failed(const char* expression, const char*, const char*, long) {
    throw std::logic_error(expression);
}

void assertion_failed_msg(const char* expression, const char*, const char*, const char*, long) {
    throw std::logic_error(expression);
}

}  // namespace boost

namespace core_utils {

namespace bip = boost::interprocess;

namespace {

constexpr std::size_t SEGMENT_SIZE = 0x140000;  // bytes

// True if the object can grow without leaving the segment: it allocates there.
template <typename Object>
bool isWritable(const Segment& segment, const Object& object) {
    return object.get_stored_allocator().get_segment_manager() == segment.get_segment_manager() &&
           isSound(segment, elementsOf(object));
}

template <typename T>
bool areWritable(const Segment&, const sElements<T>&) {
    return true;
}
bool areWritable(const Segment& segment, const sElements<SegmentString>& texts) {
    return std::all_of(texts.first, texts.first + texts.size,
                       [&](const SegmentString& text) { return isWritable(segment, text); });
}

// The object as a vector that can be changed and destroyed, or null.
template <typename T>
SegmentVector<T>* asWritable(const Segment& segment, SegmentVector<T>* vector) {
    const bool writable = vector != nullptr && isWritable(segment, *vector) &&
                          areWritable(segment, elementsOf(*vector));
    return writable ? vector : nullptr;
}

// The blocks of the segment that a vector has allocated.
using Blocks = std::vector<const void*>;

template <typename T>
Blocks blocksOf(const sElements<T>& elements) {
    return elements.capacity == 0 ? Blocks() : Blocks{elements.first};
}
Blocks blocksOf(const sElements<SegmentString>& texts) {
    Blocks blocks;
    if (texts.capacity > 0) blocks.push_back(texts.first);
    for (const SegmentString* text = texts.first; text != texts.first + texts.size; ++text) {
        const void* characters = text->data();
        const bool ownBlock = characters < text || characters >= text + 1;  // else a short text
        if (ownBlock) blocks.push_back(characters);
    }
    return blocks;
}

template <typename T>
void fill(SegmentVector<T>& vector, const std::vector<T>& values, const SegmentAllocator<char>&) {
    vector.resize(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        vector.at(i) = values[i];
}
void fill(SegmentVector<SegmentString>& vector, const std::vector<std::string>& values,
          const SegmentAllocator<char>& characters) {
    vector.resize(values.size(), SegmentString(characters));
    SegmentString element(FILL_TEXT, characters);
    for (std::size_t i = 0; i < values.size(); ++i) {
        element.assign(values[i].data(), values[i].size());
        vector.at(i) = element;
    }
}

// These two only under the segment's lock.
template <typename Value>
eAccess copyValues(Segment& segment, const std::string& name, std::vector<Value>& out) {
    std::vector<Value> values;
    const eAccess result = visitElements<Value>(
        segment, name, [&](std::size_t, const auto& element) { values.emplace_back(element); });
    if (result == eAccess::DONE) out = std::move(values);
    return result;
}

template <typename Value>
eAccess assignValues(Segment& segment, const std::string& name, const std::vector<Value>& values,
                     const SegmentAllocator<ElementOf<Value>>& elements,
                     const SegmentAllocator<char>& characters) {
    using Vector = SegmentVector<ElementOf<Value>>;
    const sRawObject object = findObject(segment, name);
    auto* vector = asWritable(segment, object.address != nullptr
                                           ? object.as<Vector>()
                                           : segment.construct<Vector>(name.c_str())(elements));
    if (vector == nullptr) return eAccess::NO_VECTOR;
    fill(*vector, values, characters);
    return eAccess::DONE;
}

}  // namespace

std::unique_ptr<Segment> attachSegment(const std::string& name, bool create) {
    const std::string memoryName = memoryObjectName(name);
    if (create) createSegment(memoryName, SEGMENT_SIZE);
    checkBeforeAttaching(memoryName, create ? SEGMENT_SIZE : 0);
    auto segment = create
                       ? std::make_unique<Segment>(bip::open_or_create, name.c_str(), SEGMENT_SIZE,
                                                   nullptr, bip::permissions(SEGMENT_PERMISSIONS))
                       : std::make_unique<Segment>(bip::open_only, name.c_str());
    checkAfterAttaching(memoryName, segment->get_size());
    return segment;
}

sRawObject findObject(Segment& segment, const std::string& name) {
    const auto [address, size] =
        segment.get_segment_manager()->find_no_lock<unsigned char>(name.c_str());
    return {address, size};
}

bool isInside(const Segment& segment, const void* first, std::size_t bytes) {
    const auto base = reinterpret_cast<std::uintptr_t>(segment.get_address());
    const auto begin = reinterpret_cast<std::uintptr_t>(first);
    const std::size_t size = segment.get_size();
    return begin >= base && bytes <= size && begin - base <= size - bytes;
}

template <typename Value>
eAccess CVectorAccess<Value>::copy(Segment& segment, const std::string& name,
                                   std::vector<Value>& out) {
    return withSegmentLock(segment, [&] { return copyValues(segment, name, out); });
}

template <typename Value>
eAccess CVectorAccess<Value>::assign(Segment& segment, const std::string& name,
                                     const std::vector<Value>& values,
                                     const SegmentAllocator<Element>& elements,
                                     const SegmentAllocator<char>& characters) {
    return withSegmentLock(
        segment, [&] { return assignValues(segment, name, values, elements, characters); });
}

template <typename Value>
eAccess CVectorAccess<Value>::update(Segment& segment, const std::string& name,
                                     const std::function<bool(std::vector<Value>&)>& change,
                                     const SegmentAllocator<Element>& elements,
                                     const SegmentAllocator<char>& characters) {
    return withSegmentLock(segment, [&] {
        std::vector<Value> values;
        if (copyValues(segment, name, values) == eAccess::NO_VECTOR) return eAccess::NO_VECTOR;
        if (!change(values)) return eAccess::DONE;
        return assignValues(segment, name, values, elements, characters);
    });
}

template <typename Value>
eAccess CVectorAccess<Value>::destroy(Segment& segment, const std::string& name) {
    return withSegmentLock(segment, [&] {
        const sRawObject object = findObject(segment, name);
        if (object.address == nullptr) return eAccess::NO_OBJECT;
        const auto* vector = asWritable(segment, object.as<SegmentVector<Element>>());
        const Blocks blocks = vector != nullptr ? blocksOf(elementsOf(*vector)) : Blocks();
        // No destructor runs: one that meets a damaged segment would end the process.
        segment.destroy<unsigned char>(name.c_str());
        for (const void* block : blocks)
            segment.deallocate(const_cast<void*>(block));
        return eAccess::DONE;
    });
}

template struct CVectorAccess<double>;
template struct CVectorAccess<unsigned char>;
template struct CVectorAccess<std::string>;

}  // namespace core_utils
