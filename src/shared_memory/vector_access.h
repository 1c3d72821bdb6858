// The segment and the whole vectors in it: the one mechanism beneath CSharedMemory and
// CPeerSegment. Nothing here prints. Failures of the segment itself are exceptions: those of
// Boost.Interprocess (bad_alloc for a full one, timeout_when_locking_error for a lock that was not
// let go within 1 s) and std::logic_error (std::length_error for more elements than any segment has
// room for).
#ifndef SHARED_MEMORY_VECTOR_ACCESS_H
#define SHARED_MEMORY_VECTOR_ACCESS_H

#include <boost/container/string.hpp>
#include <boost/container/vector.hpp>
#include <boost/interprocess/allocators/allocator.hpp>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "shared_memory/segment_lock.h"

namespace core_utils {

template <typename T>
using SegmentAllocator = boost::interprocess::allocator<T, Segment::segment_manager>;
using SegmentString =
    boost::container::basic_string<char, std::char_traits<char>, SegmentAllocator<char>>;
template <typename T>
using SegmentVector = boost::container::vector<T, SegmentAllocator<T>>;

inline constexpr char SEGMENT_NAME[] = "CONF_AUTO_SAVE_MEM";

// What a text holds on its way into a vector; never in a finished one.
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

// Attaches to the segment `name`; without one, creates it if `create` is set, else throws
// interprocess_exception with not_found_error. Throws std::runtime_error or interprocess_exception
// for one that cannot be used.
std::unique_ptr<Segment> attachSegment(const std::string& name, bool create);

// An object as its raw bytes. Boost aborts the process over a look-up by type when the object has
// another size, and a peer may have created it as something else.
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

// These two only under the segment's lock. False for a text that leaves the segment.
sRawObject findObject(Segment& segment, const std::string& name);
bool copyText(const Segment& segment, const SegmentString& text, std::string& out);

// NO_VECTOR: what stands under the name cannot be a vector of such elements inside the segment.
enum class eAccess { DONE, NO_OBJECT, NO_VECTOR };

// Whole vectors of a `Value` by the object's name. Each operation runs alone.
template <typename Value>
struct CVectorAccess {
    using Element = ElementOf<Value>;

    // `out` changes only with DONE, and then holds exactly what the object does.
    static eAccess copy(Segment& segment, const std::string& name, std::vector<Value>& out);

    // Creates the object if there is none, and leaves exactly `values` in it. After an exception it
    // may be left resized but only partly assigned.
    static eAccess assign(Segment& segment, const std::string& name,
                          const std::vector<Value>& values,
                          const SegmentAllocator<Element>& elements,
                          const SegmentAllocator<char>& characters);

    // copy and assign as one access: `change` gets the object's values, none if there is no object,
    // and what it makes of them is assigned if it returns true. It runs under the lock.
    static eAccess update(Segment& segment, const std::string& name,
                          const std::function<bool(std::vector<Value>&)>& change,
                          const SegmentAllocator<Element>& elements,
                          const SegmentAllocator<char>& characters);

    // Removes the object whatever it is. Of one that is no vector, memory that it had taken for
    // itself stays taken.
    static eAccess destroy(Segment& segment, const std::string& name);
};

}  // namespace core_utils

#endif
