#include "shared_memory/shared_memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "shared_memory/object_directory.h"
#include "shared_memory/segment_check.h"

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
constexpr int SEGMENT_PERMISSIONS = 0644;
constexpr char INT_VAL_SUFFIX[] = "INT_VAL";
constexpr char STR_VAL_SUFFIX[] = "STR_VAL";

// True if all `bytes` from `first` on lie inside the segment. Peers may leave anything in an
// object; a pointer is followed only after this.
bool isInside(const Segment& segment, const void* first, std::size_t bytes) {
    const auto base = reinterpret_cast<std::uintptr_t>(segment.get_address());
    const auto begin = reinterpret_cast<std::uintptr_t>(first);
    const std::size_t size = segment.get_size();
    return begin >= base && bytes <= size && begin - base <= size - bytes;
}

// Where a vector's elements or a text's characters lie, taken once: peers may change the object
// between a check and its use.
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
bool isSound(const Segment& segment, const sElements<T>& elements) {
    if (elements.capacity == 0) return elements.size == 0 && elements.first == nullptr;
    return elements.size <= elements.capacity &&
           elements.capacity <= segment.get_size() / sizeof(T) &&
           isInside(segment, elements.first, elements.capacity * sizeof(T));
}

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

// Only under the segment's lock.
sRawObject findObject(Segment& segment, const std::string& name) {
    const auto [address, size] =
        segment.get_segment_manager()->find_no_lock<unsigned char>(name.c_str());
    return {address, size};
}

bool copyElement(const Segment& segment, const SegmentString& element, std::string& value) {
    const auto characters = elementsOf(element);
    if (!isSound(segment, characters)) return false;
    value.assign(characters.first, characters.size);
    return true;
}
template <typename T>
bool copyElement(const Segment&, T element, T& value) {
    value = element;
    return true;
}

// What is particular to one kind of value: its form in the segment, how it gets there, and the
// fixed texts of its failures.
template <typename Value>
struct sKind;

struct sNumberKind {
    template <typename T>
    static void assign(SegmentVector<T>& vector, const std::vector<T>& values,
                       const SegmentAllocator<char>&) {
        vector.resize(values.size());
        for (std::size_t i = 0; i < values.size(); ++i)
            vector.at(i) = values[i];
    }
};

template <>
struct sKind<double> : sNumberKind {
    using Element = double;
    static constexpr char READ_FAILED[] = "vctr double read, exception catch !!! ";
    static constexpr char NO_OBJECT[] = "BOOST VCTR DBL IS EMPTY ";
};

template <>
struct sKind<unsigned char> : sNumberKind {
    using Element = unsigned char;
    static constexpr char READ_FAILED[] = "vctr byte read, exception catch !!! ";
    static constexpr char NO_OBJECT[] = "BOOST VCTR BYTE IS EMPTY ";
};

template <>
struct sKind<std::string> {
    using Element = SegmentString;
    static constexpr char READ_FAILED[] = "vctr string read, exception catch !!! ";
    static constexpr char NO_OBJECT[] = "BOOST VCTR STR IS EMPTY ";

    static void assign(SegmentVector<SegmentString>& vector, const std::vector<std::string>& values,
                       const SegmentAllocator<char>& characters) {
        vector.resize(values.size(), SegmentString(characters));
        SegmentString element(FILL_TEXT, characters);
        for (std::size_t i = 0; i < values.size(); ++i) {
            element.assign(values[i].data(), values[i].size());
            vector.at(i) = element;
        }
    }
};

// Runs `access` under the segment's own lock, alone among all who take it. It must not print: a
// reader of our output that stands still would stop every process that waits for the lock.
template <typename Access>
bool runAlone(Segment& segment, Access access) {
    bool result = false;
    auto keepResult = [&] { result = access(); };
    segment.atomic_func(keepResult);
    return result;
}

// Runs a change of the segment; a full one, or a peer that died with its lock, ends here.
template <typename Change>
bool change(const Segment* segment, Change make) {
    if (segment == nullptr) return false;
    try {
        return make();
    } catch (const bip::interprocess_exception& error) {
        std::printf("failed with exception \"%s\"", error.what());
        std::fflush(stdout);
    } catch (...) {
        std::puts("exception catch ");
    }
    return false;
}

template <typename Access>
bool changeAlone(Segment* segment, Access access) {
    return change(segment, [&] { return runAlone(*segment, access); });
}

template <typename Value>
bool copyOut(Segment& segment, const std::string& name, std::vector<Value>& out) {
    using Element = typename sKind<Value>::Element;
    const auto* vector = findObject(segment, name).as<SegmentVector<Element>>();
    if (vector == nullptr) return false;
    const auto elements = elementsOf(*vector);
    if (!isSound(segment, elements)) return false;
    if (elements.size == 0) return true;
    std::vector<Value> values(elements.size);
    for (std::size_t i = 0; i < elements.size; ++i) {
        if (!copyElement(segment, elements.first[i], values[i])) return false;
    }
    out = std::move(values);
    return true;
}

// The named vector, created if there is none; null if what stands there cannot be written to.
template <typename T>
SegmentVector<T>* writableVector(Segment& segment, const std::string& name,
                                 const SegmentAllocator<T>& allocator) {
    const sRawObject object = findObject(segment, name);
    auto* vector = object.address != nullptr
                       ? object.as<SegmentVector<T>>()
                       : segment.find_or_construct<SegmentVector<T>>(name.c_str())(allocator);
    const bool writable = vector != nullptr && isWritable(segment, *vector) &&
                          areWritable(segment, elementsOf(*vector));
    return writable ? vector : nullptr;
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
        const std::string memoryName = name.rfind('/', 0) == 0 ? name : "/" + name;
        if (removeFirst) shm_unlink(memoryName.c_str());
        checkBeforeAttaching(memoryName, SEGMENT_SIZE);
        auto segment = std::make_unique<Segment>(bip::open_or_create, name.c_str(), SEGMENT_SIZE,
                                                 nullptr, bip::permissions(SEGMENT_PERMISSIONS));
        checkAfterAttaching(memoryName, segment->get_size());

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

template <>
const SegmentAllocator<double>& CSharedMemory::allocatorOf() {
    return *mpShMemDblAllocator;
}
template <>
const SegmentAllocator<unsigned char>& CSharedMemory::allocatorOf() {
    return *mpShmemBytelAllocator;
}
template <>
const SegmentAllocator<SegmentString>& CSharedMemory::allocatorOf() {
    return *mpShmemStrAllocator;
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
    if (mpSharedMemory == nullptr) return false;
    try {
        return runAlone(*mpSharedMemory, [&] { return copyOut(*mpSharedMemory, name, out); });
    } catch (...) {
        std::puts(sKind<Value>::READ_FAILED);
        return false;
    }
}

template <typename Value>
bool CSharedMemory::writeVector(const std::string& name, const std::vector<Value>& values) {
    using Kind = sKind<Value>;
    return change(mpSharedMemory, [&] {
        const auto& allocator = allocatorOf<typename Kind::Element>();
        const bool written = runAlone(*mpSharedMemory, [&] {
            auto* vector = writableVector(*mpSharedMemory, name, allocator);
            if (vector != nullptr) Kind::assign(*vector, values, *mpShmemCharAllocator);
            return vector != nullptr;
        });
        if (!written) std::puts(Kind::NO_OBJECT);
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

bool CSharedMemory::readIntVal(unsigned int& out) {
    return changeAlone(mpSharedMemory, [&] {
        const auto* value =
            findObject(*mpSharedMemory, mstrSharedMemName + INT_VAL_SUFFIX).as<unsigned int>();
        if (value != nullptr) out = *value;
        return value != nullptr;
    });
}

bool CSharedMemory::createIntVal(unsigned int initial) {
    return changeAlone(mpSharedMemory, [&] {
        const std::string name = mstrSharedMemName + INT_VAL_SUFFIX;
        return mpSharedMemory->construct<unsigned int>(name.c_str(), std::nothrow)(initial) !=
               nullptr;
    });
}
bool CSharedMemory::readStrVal(std::string& out) {
    return changeAlone(mpSharedMemory, [&] {
        const auto* text =
            findObject(*mpSharedMemory, mstrSharedMemName + STR_VAL_SUFFIX).as<SegmentString>();
        return text != nullptr && copyElement(*mpSharedMemory, *text, out);
    });
}

bool CSharedMemory::createStrVal(const std::string& initial) {
    return changeAlone(mpSharedMemory, [&] {
        const std::string name = mstrSharedMemName + STR_VAL_SUFFIX;
        return mpSharedMemory->construct<SegmentString>(name.c_str(), std::nothrow)(
                   initial.c_str(), *mpShmemCharAllocator) != nullptr;
    });
}

}  // namespace core_utils
