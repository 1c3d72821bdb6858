// Access to whole vectors in the segment; CSharedMemory and CPeerSegment are built on it. Failures
// of the segment are exceptions: Boost.Interprocess's bad_alloc if it is full and
// timeout_when_locking_error if the lock was not free within 1 s, std::logic_error if it is
// damaged, and std::length_error for more elements than any segment has room for.
#ifndef SHARED_MEMORY_VECTOR_ACCESS_H
#define SHARED_MEMORY_VECTOR_ACCESS_H

#include <boost/container/string.hpp>
#include <boost/container/vector.hpp>
#include <boost/interprocess/allocators/allocator.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "shared_memory/object_directory.h"
#include "shared_memory/segment_change.h"

namespace core_utils {

template <typename T>
using SegmentAllocator = boost::interprocess::allocator<T, Segment::segment_manager>;
using SegmentString =
    boost::container::basic_string<char, std::char_traits<char>, SegmentAllocator<char>>;
template <typename T>
using SegmentVector = boost::container::vector<T, SegmentAllocator<T>>;

inline constexpr char SEGMENT_NAME[] = "CONF_AUTO_SAVE_MEM";

// What a new text holds until its value is written; never seen in a finished vector.
inline constexpr char FILL_TEXT[] = "DATA FROM TEST";

// The element of a segment's vector that holds a `Value`: double, unsigned char or std::string.
template <typename Value>
struct sElementOf {
    using Type = Value;
};
template <>
struct sElementOf<std::string> {
    using Type = SegmentString;
};
template <typename Value>
using ElementOf = typename sElementOf<Value>::Type;

// Attaches to the segment `name`. If it does not exist, creates it if `create` is set, else throws
// interprocess_exception with not_found_error. Throws std::runtime_error or interprocess_exception
// if the segment cannot be used. Waits up to 1 s for another process that is creating it.
std::unique_ptr<Segment> attachSegment(const std::string& name, bool create);

// An object as raw bytes. Boost's look-up by type aborts the process if the object has another
// size, and a peer may have created it with another type.
struct sRawObject {
    unsigned char* address;
    std::size_t size;

    template <typename T>
    T* as() const {
        const bool fits = address != nullptr && size == sizeof(T) &&
                          reinterpret_cast<std::uintptr_t>(address) % alignof(T) == 0;
        return fits ? reinterpret_cast<T*>(address) : nullptr;
    }
};

// A snapshot of a vector's or a text's pointer and sizes: peers may change the object between a
// check and its use.
template <typename T>
struct sElements {
    const T* first;
    std::size_t size;
    std::size_t capacity;
};

template <typename Object>
sElements<typename Object::value_type> elementsOf(const Object& object) {
    return {object.data(), object.size(), object.capacity()};
}

template <typename T>
bool isSound(const sArea& area, const sElements<T>& elements) {
    if (elements.capacity == 0) return elements.size == 0 && elements.first == nullptr;
    return elements.size <= elements.capacity && elements.capacity <= area.size / sizeof(T) &&
           area.contains(elements.first, elements.capacity * sizeof(T));
}

// Calls `visit` with an element in place: a number, or the std::string_view of a text. Returns
// false without a call for a text that leaves the segment.
template <typename Visit>
bool visitElement(const sArea& area, const SegmentString& text, Visit visit) {
    const auto characters = elementsOf(text);
    if (!isSound(area, characters)) return false;
    visit(std::string_view(characters.first, characters.size));
    return true;
}
template <typename T, typename Visit>
bool visitElement(const sArea&, const T& number, Visit visit) {
    visit(number);
    return true;
}

// The object `name`; its address is null if it does not exist. This and visitElements() require the
// segment's lock.
sRawObject findObject(const sArea& area, const std::string& name);

// Replaces the object by an empty vector and returns true, if it has the size of a vector but is
// broken. Its allocations leak.
bool emptyIfBroken(CPrivateCopy& copy, const sSharedObject& object);

// NO_VECTOR: the object cannot be a vector of such elements inside the segment.
enum class eAccess { DONE, NO_OBJECT, NO_VECTOR };

template <typename Value, typename Visit>
eAccess visitElements(const sArea& area, const std::string& name, Visit visit) {
    const sRawObject object = findObject(area, name);
    if (object.address == nullptr) return eAccess::NO_OBJECT;
    const auto* vector = object.as<SegmentVector<ElementOf<Value>>>();
    if (vector == nullptr) return eAccess::NO_VECTOR;
    const auto elements = elementsOf(*vector);
    if (!isSound(area, elements)) return eAccess::NO_VECTOR;
    for (std::size_t i = 0; i < elements.size; ++i) {
        const bool visited =
            visitElement(area, elements.first[i], [&](const auto& element) { visit(i, element); });
        if (!visited) return eAccess::NO_VECTOR;
    }
    return eAccess::DONE;
}

// Whole vectors of a `Value` by the object's name. Each operation holds the segment's lock. If it
// throws, nothing is changed; if this process dies in it, all or nothing is.
template <typename Value>
struct CVectorAccess {
    using Element = ElementOf<Value>;

    // Calls `visit(index, element)` for each element in place, with the lock held. `visit` must not
    // print (see withSegmentLock()) or keep a text's view. If the result is not DONE, it may have
    // been called for some elements only: discard what it has gathered.
    template <typename Visit>
    static eAccess visit(Segment& segment, const std::string& name, Visit visit) {
        return withSegmentLock(segment,
                               [&] { return visitElements<Value>(segment.area(), name, visit); });
    }

    // Copies the object's values to `out`; on any result but DONE `out` is unchanged.
    static eAccess copy(Segment& segment, const std::string& name, std::vector<Value>& out);

    // Creates the object if there is none, and leaves exactly `values` in it.
    static eAccess assign(Segment& segment, const std::string& name,
                          const std::vector<Value>& values);

    // Reads, changes and writes as one access. `change` gets the object's values, or an empty
    // vector if there is no object; if it returns true, its result is written. It runs with the
    // lock held.
    static eAccess update(Segment& segment, const std::string& name,
                          const std::function<bool(std::vector<Value>&)>& change);

    // Removes the object, whatever its type. If it is not a vector, its allocations leak.
    static eAccess destroy(Segment& segment, const std::string& name);
};

}  // namespace core_utils

#endif
