#include "shared_memory/shared_memory.h"

#include <sys/mman.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <utility>

#include "shared_memory/object_directory.h"
#include "shared_memory/segment_check.h"

namespace core_utils {

namespace {

constexpr char INT_VAL_SUFFIX[] = "INT_VAL";
constexpr char STR_VAL_SUFFIX[] = "STR_VAL";

// What is printed when an access of one type of value fails.
template <typename Value>
struct sTexts;

template <>
struct sTexts<double> {
    static constexpr char READ_FAILED[] = "vctr double read, exception catch !!! ";
    static constexpr char NO_OBJECT[] = "BOOST VCTR DBL IS EMPTY ";
};
template <>
struct sTexts<unsigned char> {
    static constexpr char READ_FAILED[] = "vctr byte read, exception catch !!! ";
    static constexpr char NO_OBJECT[] = "BOOST VCTR BYTE IS EMPTY ";
};
template <>
struct sTexts<std::string> {
    static constexpr char READ_FAILED[] = "vctr string read, exception catch !!! ";
    static constexpr char NO_OBJECT[] = "BOOST VCTR STR IS EMPTY ";
};

// For use in a catch block. Prints a damaged segment once a process, as callers retry for ever.
void tellDamage() {
    static std::once_flag told;
    try {
        throw;
    } catch (const std::length_error&) {  // more elements than any segment has room for
    } catch (const std::logic_error& error) {
        std::call_once(told, [&] {
            std::fprintf(stderr, "shared memory [%s]: %s\n", SEGMENT_NAME, error.what());
        });
    } catch (...) {
    }
}

// Runs an access and prints its exception: the segment is full, damaged or locked.
template <typename Change>
bool change(const Segment* segment, Change make) {
    if (segment == nullptr) return false;
    try {
        return make();
    } catch (const boost::interprocess::interprocess_exception& error) {
        std::printf("failed with exception \"%s\"", error.what());
        std::fflush(stdout);
    } catch (...) {
        std::puts("exception catch ");
        tellDamage();
    }
    return false;
}

template <typename Access>
bool changeAlone(Segment* segment, Access access) {
    return change(segment, [&] { return withSegmentLock(*segment, access); });
}

}  // namespace

Segment* CSharedMemory::mpSharedMemory = nullptr;
std::string CSharedMemory::mstrSharedMemName;
SegmentAllocator<double>* CSharedMemory::mpShMemDblAllocator = nullptr;
SegmentAllocator<unsigned char>* CSharedMemory::mpShmemBytelAllocator = nullptr;
SegmentAllocator<SegmentString>* CSharedMemory::mpShmemStrAllocator = nullptr;
SegmentAllocator<char>* CSharedMemory::mpShmemCharAllocator = nullptr;

CSharedMemory::CSharedMemory(bool removeFirst) {
    if (!open(SEGMENT_NAME, removeFirst)) return;
    for (const sSharedObject& object : OBJECT_DIRECTORY)
        mMapObjects.emplace(object.id, object.name);
}

bool CSharedMemory::open(const std::string& name, bool removeFirst) {
    try {
        if (removeFirst) shm_unlink(memoryObjectName(name).c_str());
        auto segment = attachSegment(name, true);

        auto* manager = segment->get_segment_manager();
        // Never freed, nor are the ones they replace: other instances still use them.
        mpShMemDblAllocator = new SegmentAllocator<double>(manager);
        mpShmemBytelAllocator = new SegmentAllocator<unsigned char>(manager);
        mpShmemStrAllocator = new SegmentAllocator<SegmentString>(manager);
        mpShmemCharAllocator = new SegmentAllocator<char>(manager);
        mpSharedMemory = segment.release();
        mstrSharedMemName = name;
        return true;
    } catch (const std::exception& error) {
        std::printf("exception encountered opening shared memory [%s] \n", name.c_str());
        std::fprintf(stderr, "shared memory [%s]: %s\n", name.c_str(), error.what());
        return false;
    }
}

template <typename Value>
std::vector<Value> CSharedMemory::getVector(int id) {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::vector<Value> values;
    const auto object = mMapObjects.find(id);
    if (object != mMapObjects.end()) readVector(object->second, values);
    return values;
}

template <typename Value>
bool CSharedMemory::setVector(int id, const std::vector<Value>& values) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto object = mMapObjects.find(id);
    return object != mMapObjects.end() && writeVector(object->second, values);
}

template <typename Value>
bool CSharedMemory::readVector(const std::string& name, std::vector<Value>& out) {
    std::vector<Value> values;
    const bool read = visitObject<Value>(
        name, [&](std::size_t, const auto& element) { values.emplace_back(element); });
    if (read && !values.empty()) out = std::move(values);
    return read;
}

template <typename Value>
void CSharedMemory::printReadFailure() {
    std::puts(sTexts<Value>::READ_FAILED);
    tellDamage();
}

template <typename Value>
bool CSharedMemory::writeVector(const std::string& name, const std::vector<Value>& values) {
    return change(mpSharedMemory, [&] {
        const bool written =
            CVectorAccess<Value>::assign(*mpSharedMemory, name, values) == eAccess::DONE;
        if (!written) std::puts(sTexts<Value>::NO_OBJECT);
        return written;
    });
}

template std::vector<double> CSharedMemory::getVector(int);
template std::vector<unsigned char> CSharedMemory::getVector(int);
template std::vector<std::string> CSharedMemory::getVector(int);
template bool CSharedMemory::setVector(int, const std::vector<double>&);
template bool CSharedMemory::setVector(int, const std::vector<unsigned char>&);
template bool CSharedMemory::setVector(int, const std::vector<std::string>&);
template bool CSharedMemory::readVector(const std::string&, std::vector<double>&);
template bool CSharedMemory::readVector(const std::string&, std::vector<unsigned char>&);
template bool CSharedMemory::readVector(const std::string&, std::vector<std::string>&);
template bool CSharedMemory::writeVector(const std::string&, const std::vector<double>&);
template bool CSharedMemory::writeVector(const std::string&, const std::vector<unsigned char>&);
template bool CSharedMemory::writeVector(const std::string&, const std::vector<std::string>&);
template void CSharedMemory::printReadFailure<double>();
template void CSharedMemory::printReadFailure<unsigned char>();
template void CSharedMemory::printReadFailure<std::string>();

std::uint32_t CSharedMemory::foreignDeaths() {
    return mpSharedMemory != nullptr ? CSegmentJournal::foreignDeaths(*mpSharedMemory) : 0;
}

template <typename Object, typename MakeInitial>
bool CSharedMemory::create(const char* suffix, MakeInitial makeInitial) {
    return changeAlone(mpSharedMemory, [&] {
        return changeStructure(*mpSharedMemory, [&](const CPrivateCopy& copy) {
            SegmentManager* manager = copy.area().manager;
            const std::string name = mstrSharedMemName + suffix;
            return manager->construct<Object>(name.c_str(), std::nothrow)(makeInitial(manager)) !=
                   nullptr;
        });
    });
}

bool CSharedMemory::readIntVal(unsigned int& out) {
    return changeAlone(mpSharedMemory, [&] {
        const sArea area = mpSharedMemory->area();
        const auto* value = findObject(area, mstrSharedMemName + INT_VAL_SUFFIX).as<unsigned int>();
        if (value != nullptr) out = *value;
        return value != nullptr;
    });
}

bool CSharedMemory::createIntVal(unsigned int initial) {
    return create<unsigned int>(INT_VAL_SUFFIX, [&](SegmentManager*) { return initial; });
}

bool CSharedMemory::readStrVal(std::string& out) {
    return changeAlone(mpSharedMemory, [&] {
        const sArea area = mpSharedMemory->area();
        const auto* text = findObject(area, mstrSharedMemName + STR_VAL_SUFFIX).as<SegmentString>();
        return text != nullptr &&
               visitElement(area, *text, [&](std::string_view view) { out = view; });
    });
}

bool CSharedMemory::createStrVal(const std::string& initial) {
    return create<SegmentString>(STR_VAL_SUFFIX, [&](SegmentManager* manager) {
        return SegmentString(initial.c_str(), SegmentAllocator<char>(manager));
    });
}

}  // namespace core_utils
