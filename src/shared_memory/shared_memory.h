// The segment that the daemon shares with the instrument's other processes, and whole-vector
// access to the objects in it. docs/shared-memory.md is the reference for a peer's author.
#ifndef SHARED_MEMORY_SHARED_MEMORY_H
#define SHARED_MEMORY_SHARED_MEMORY_H

#include <boost/container/string.hpp>
#include <boost/container/vector.hpp>
#include <boost/interprocess/allocators/allocator.hpp>
#include <boost/interprocess/managed_shared_memory.hpp>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace core_utils {

using Segment = boost::interprocess::managed_shared_memory;
template <typename T>
using SegmentAllocator = boost::interprocess::allocator<T, Segment::segment_manager>;
using SegmentString =
    boost::container::basic_string<char, std::char_traits<char>, SegmentAllocator<char>>;
template <typename T>
using SegmentVector = boost::container::vector<T, SegmentAllocator<T>>;

// What a text holds on its way into a vector; never in a finished one.
inline constexpr char FILL_TEXT[] = "DATA FROM TEST";

// An instance carries the object directory; the handles of the segment are one set a process,
// replaced by each construction and never freed.
//
// Any thread may call: an instance serialises its own accessors. Nothing locks the contents of an
// object against other processes, so a vector may be seen half-way through a peer's change; what
// cannot be a vector inside the segment is treated as not there. Accessors print and return
// failure, they do not throw, except std::system_error for a mutex that cannot be locked.
class CSharedMemory {
  public:
    // Attaches to the segment, creating it if there is none; `removeFirst` discards an existing
    // one. If that fails it prints why, and every accessor of this instance fails.
    explicit CSharedMemory(bool removeFirst);

    // Whole vectors by object identifier. An identifier without an object reads as empty and
    // writes nothing. Writing creates the object; true if all of it was written.
    std::vector<double> getDoubleVector(int id);
    bool setDoubleVector(int id, const std::vector<double>& values);
    std::vector<unsigned char> getByteVector(int id);
    bool setByteVector(int id, const std::vector<unsigned char>& values);
    std::vector<std::string> getStringVector(int id);
    bool setStringVector(int id, const std::vector<std::string>& values);

    // Attaches this process to the segment `name`. On failure the handles stay as they were.
    static bool open(const std::string& name, bool removeFirst);

    // The same by object name. Reading never creates: false and `out` untouched if there is no
    // such object; an object without elements is true, `out` untouched. Writing leaves exactly
    // `values` in the object; false may leave it resized but only partly assigned.
    static bool readDoubleVector(const std::string& name, std::vector<double>& out);
    static bool writeDoubleVector(const std::string& name, const std::vector<double>& values);
    static bool readByteVector(const std::string& name, std::vector<unsigned char>& out);
    static bool writeByteVector(const std::string& name, const std::vector<unsigned char>& values);
    static bool readStringVector(const std::string& name, std::vector<std::string>& out);
    static bool writeStringVector(const std::string& name, const std::vector<std::string>& values);

    // Two single objects for trying a segment out; no configuration uses them. Creating fails if
    // the object exists or the segment is full.
    static bool readIntVal(unsigned int& out);
    static bool createIntVal(unsigned int initial);
    static bool readStrVal(std::string& out);
    static bool createStrVal(const std::string& initial);

  protected:
    static Segment* mpSharedMemory;
    static std::string mstrSharedMemName;
    static SegmentAllocator<double>* mpShMemDblAllocator;
    static SegmentAllocator<unsigned char>* mpShmemBytelAllocator;
    static SegmentAllocator<SegmentString>* mpShmemStrAllocator;
    static SegmentAllocator<char>* mpShmemCharAllocator;

  private:
    template <typename Value>
    std::vector<Value> getVector(int id, bool (*read)(const std::string&, std::vector<Value>&));
    template <typename Value>
    bool setVector(int id, const std::vector<Value>& values,
                   bool (*write)(const std::string&, const std::vector<Value>&));

    std::map<int, std::string> mMapObjects;
    std::mutex mMutex;
};

}  // namespace core_utils

#endif
