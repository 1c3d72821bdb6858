// The segment that the daemon shares with the instrument's other processes, and whole-vector
// access to the objects in it. docs/shared-memory.md is the reference for a peer's author.
#ifndef SHARED_MEMORY_SHARED_MEMORY_H
#define SHARED_MEMORY_SHARED_MEMORY_H

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "shared_memory/vector_access.h"

namespace core_utils {

// All instances of a process share one attachment, which each construction replaces. Replaced
// attachments are never freed.
//
// Any thread may call: an instance serialises its accessors. Each access holds the segment's own
// process-shared lock, so every process that takes the lock sees whole vectors. A peer that does
// not take it may show a half-finished change. An object that is not a vector inside the segment is
// treated as absent. An access waits at most 1 s for the lock and then fails. The lock of a dead
// process is taken over.
//
// Accessors print and return failure, they do not throw, except std::system_error for a mutex
// that cannot be locked. `Value` is double, unsigned char or std::string.
class CSharedMemory {
  public:
    // Attaches to the segment, creating it if there is none; `removeFirst` discards an existing
    // one. If that fails it prints why, and every accessor of this instance fails.
    explicit CSharedMemory(bool removeFirst);

    // Whole vectors by object identifier. An identifier without an object reads as empty and
    // writes nothing. Writing creates the object; true if all of it was written.
    template <typename Value>
    std::vector<Value> getVector(int id);
    template <typename Value>
    bool setVector(int id, const std::vector<Value>& values);

    // Calls `visit(index, element)` for each element of the object in place, without a copy: a text
    // is a std::string_view that is valid in the call alone. False, and what was visited does not
    // count, where readVector() fails. `visit` runs under the segment's lock and this instance's:
    // it must not print, wait or access the segment.
    template <typename Value, typename Visit>
    bool visitVector(int id, Visit visit);

    // Attaches this process to the segment `name`. On failure the handles stay as they were.
    static bool open(const std::string& name, bool removeFirst);

    // The same by object name. Reading never creates: false and `out` untouched if there is no
    // such object; an object without elements is true, `out` untouched. Writing leaves exactly
    // `values` in the object, or on failure all that it held.
    template <typename Value>
    static bool readVector(const std::string& name, std::vector<Value>& out);
    template <typename Value>
    static bool writeVector(const std::string& name, const std::vector<Value>& values);

    // The names by which other programs call these.
    std::vector<double> getDoubleVector(int id) { return getVector<double>(id); }
    bool setDoubleVector(int id, const std::vector<double>& values) {
        return setVector(id, values);
    }
    std::vector<unsigned char> getByteVector(int id) { return getVector<unsigned char>(id); }
    bool setByteVector(int id, const std::vector<unsigned char>& values) {
        return setVector(id, values);
    }
    std::vector<std::string> getStringVector(int id) { return getVector<std::string>(id); }
    bool setStringVector(int id, const std::vector<std::string>& values) {
        return setVector(id, values);
    }
    static bool readDoubleVector(const std::string& name, std::vector<double>& out) {
        return readVector(name, out);
    }
    static bool writeDoubleVector(const std::string& name, const std::vector<double>& values) {
        return writeVector(name, values);
    }
    static bool readByteVector(const std::string& name, std::vector<unsigned char>& out) {
        return readVector(name, out);
    }
    static bool writeByteVector(const std::string& name, const std::vector<unsigned char>& values) {
        return writeVector(name, values);
    }
    static bool readStringVector(const std::string& name, std::vector<std::string>& out) {
        return readVector(name, out);
    }
    static bool writeStringVector(const std::string& name, const std::vector<std::string>& values) {
        return writeVector(name, values);
    }

    // How many peers without this library have died with the segment's lock; 0 without a segment.
    static std::uint32_t foreignDeaths();

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
    template <typename Value, typename Visit>
    static bool visitObject(const std::string& name, Visit visit);
    template <typename Value>
    static void printReadFailure();
    template <typename Object, typename MakeInitial>
    static bool create(const char* suffix, MakeInitial makeInitial);

    std::map<int, std::string> mMapObjects;
    std::mutex mMutex;
};

template <typename Value, typename Visit>
bool CSharedMemory::visitVector(int id, Visit visit) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto object = mMapObjects.find(id);
    return object != mMapObjects.end() && visitObject<Value>(object->second, visit);
}

template <typename Value, typename Visit>
bool CSharedMemory::visitObject(const std::string& name, Visit visit) {
    if (mpSharedMemory == nullptr) return false;
    try {
        return CVectorAccess<Value>::visit(*mpSharedMemory, name, visit) == eAccess::DONE;
    } catch (...) {
        printReadFailure<Value>();
        return false;
    }
}

}  // namespace core_utils

#endif
