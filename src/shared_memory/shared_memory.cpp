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

constexpr char SEGMENT_NAME[] = "CONF_AUTO_SAVE_MEM";
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

sRawObject findObject(Segment& segment, const std::string& name) {
    const auto [address, size] = segment.find<unsigned char>(name.c_str());
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

void assign(SegmentString& element, const std::string& value) {
    element.assign(value.data(), value.size());
}
template <typename T>
void assign(T& element, T value) {
    element = value;
}

template <typename T, typename Value>
bool readVector(Segment* segment, const std::string& name, std::vector<Value>& out,
                const char* failure) {
    if (segment == nullptr) return false;
    try {
        const auto* vector = findObject(*segment, name).as<SegmentVector<T>>();
        if (vector == nullptr) return false;
        const auto elements = elementsOf(*vector);
        if (!isSound(*segment, elements)) return false;
        if (elements.size == 0) return true;
        std::vector<Value> values(elements.size);
        for (std::size_t i = 0; i < elements.size; ++i) {
            if (!copyElement(*segment, elements.first[i], values[i])) return false;
        }
        out = std::move(values);
        return true;
    } catch (...) {
        std::puts(failure);
        return false;
    }
}

// `element` is the form that a value takes on its way into the object, `blank` what the vector
// grows by before the values are in.
template <typename T, typename Value>
bool writeVector(Segment& segment, const std::string& name, const std::vector<Value>& values,
                 const SegmentAllocator<T>& allocator, T element, const T& blank,
                 const char* noObject) {
    const sRawObject object = findObject(segment, name);
    auto* vector = object.address != nullptr
                       ? object.as<SegmentVector<T>>()
                       : segment.find_or_construct<SegmentVector<T>>(name.c_str())(allocator);
    if (vector == nullptr || !isWritable(segment, *vector) ||
        !areWritable(segment, elementsOf(*vector))) {
        std::puts(noObject);
        return false;
    }
    vector->resize(values.size(), blank);
    for (std::size_t i = 0; i < values.size(); ++i) {
        assign(element, values[i]);
        vector->at(i) = element;
    }
    return true;
}

// Runs a change of the segment; a full one, or a peer that died with its mutex, ends here.
template <typename Change>
bool isDone(const Segment* segment, Change change) {
    if (segment == nullptr) return false;
    try {
        return change();
    } catch (const bip::interprocess_exception& error) {
        std::printf("failed with exception \"%s\"", error.what());
        std::fflush(stdout);
    } catch (...) {
        std::puts("exception catch ");
    }
    return false;
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
    for (const sObjectName& object : OBJECT_DIRECTORY)
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

template <typename Value>
std::vector<Value> CSharedMemory::getVector(int id,
                                            bool (*read)(const std::string&, std::vector<Value>&)) {
    const std::lock_guard<std::mutex> lock(mMutex);
    std::vector<Value> values;
    const auto object = mMapObjects.find(id);
    if (object != mMapObjects.end()) read(object->second, values);
    return values;
}

template <typename Value>
bool CSharedMemory::setVector(int id, const std::vector<Value>& values,
                              bool (*write)(const std::string&, const std::vector<Value>&)) {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto object = mMapObjects.find(id);
    return object != mMapObjects.end() && write(object->second, values);
}

std::vector<double> CSharedMemory::getDoubleVector(int id) {
    return getVector(id, readDoubleVector);
}

bool CSharedMemory::setDoubleVector(int id, const std::vector<double>& values) {
    return setVector(id, values, writeDoubleVector);
}

std::vector<unsigned char> CSharedMemory::getByteVector(int id) {
    return getVector(id, readByteVector);
}

bool CSharedMemory::setByteVector(int id, const std::vector<unsigned char>& values) {
    return setVector(id, values, writeByteVector);
}

std::vector<std::string> CSharedMemory::getStringVector(int id) {
    return getVector(id, readStringVector);
}

bool CSharedMemory::setStringVector(int id, const std::vector<std::string>& values) {
    return setVector(id, values, writeStringVector);
}

bool CSharedMemory::readDoubleVector(const std::string& name, std::vector<double>& out) {
    return readVector<double>(mpSharedMemory, name, out, "vctr double read, exception catch !!! ");
}

bool CSharedMemory::readByteVector(const std::string& name, std::vector<unsigned char>& out) {
    return readVector<unsigned char>(mpSharedMemory, name, out,
                                     "vctr byte read, exception catch !!! ");
}

bool CSharedMemory::readStringVector(const std::string& name, std::vector<std::string>& out) {
    return readVector<SegmentString>(mpSharedMemory, name, out,
                                     "vctr string read, exception catch !!! ");
}

bool CSharedMemory::writeDoubleVector(const std::string& name, const std::vector<double>& values) {
    return isDone(mpSharedMemory, [&] {
        return writeVector(*mpSharedMemory, name, values, *mpShMemDblAllocator, 0.0, 0.0,
                           "BOOST VCTR DBL IS EMPTY ");
    });
}

bool CSharedMemory::writeByteVector(const std::string& name,
                                    const std::vector<unsigned char>& values) {
    return isDone(mpSharedMemory, [&] {
        constexpr unsigned char ZERO = 0;
        return writeVector(*mpSharedMemory, name, values, *mpShmemBytelAllocator, ZERO, ZERO,
                           "BOOST VCTR BYTE IS EMPTY ");
    });
}

bool CSharedMemory::writeStringVector(const std::string& name,
                                      const std::vector<std::string>& values) {
    return isDone(mpSharedMemory, [&] {
        return writeVector(*mpSharedMemory, name, values, *mpShmemStrAllocator,
                           SegmentString(FILL_TEXT, *mpShmemCharAllocator),
                           SegmentString(*mpShmemCharAllocator), "BOOST VCTR STR IS EMPTY ");
    });
}

bool CSharedMemory::readIntVal(unsigned int& out) {
    return isDone(mpSharedMemory, [&] {
        const auto* value =
            findObject(*mpSharedMemory, mstrSharedMemName + INT_VAL_SUFFIX).as<unsigned int>();
        if (value != nullptr) out = *value;
        return value != nullptr;
    });
}

bool CSharedMemory::createIntVal(unsigned int initial) {
    return isDone(mpSharedMemory, [&] {
        const std::string name = mstrSharedMemName + INT_VAL_SUFFIX;
        return mpSharedMemory->construct<unsigned int>(name.c_str(), std::nothrow)(initial) !=
               nullptr;
    });
}

bool CSharedMemory::readStrVal(std::string& out) {
    return isDone(mpSharedMemory, [&] {
        const auto* text =
            findObject(*mpSharedMemory, mstrSharedMemName + STR_VAL_SUFFIX).as<SegmentString>();
        return text != nullptr && copyElement(*mpSharedMemory, *text, out);
    });
}

bool CSharedMemory::createStrVal(const std::string& initial) {
    return isDone(mpSharedMemory, [&] {
        const std::string name = mstrSharedMemName + STR_VAL_SUFFIX;
        return mpSharedMemory->construct<SegmentString>(name.c_str(), std::nothrow)(
                   initial.c_str(), *mpShmemCharAllocator) != nullptr;
    });
}

}  // namespace core_utils
