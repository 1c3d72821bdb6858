#include "shared_memory/vector_access.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "shared_memory/segment_check.h"
#include "shared_memory/segment_creation.h"

namespace core_utils {

namespace bip = boost::interprocess;

namespace {

constexpr std::size_t SEGMENT_SIZE = 0x140000;  // bytes

// True if the object lies in the segment and allocates from it.
template <typename Object>
bool isWritable(const sArea& area, const Object& object) {
    return object.get_stored_allocator().get_segment_manager() == area.manager &&
           isSound(area, elementsOf(object));
}

template <typename T>
bool areWritable(const sArea&, const sElements<T>&) {
    return true;
}
bool areWritable(const sArea& area, const sElements<SegmentString>& texts) {
    return std::all_of(texts.first, texts.first + texts.size,
                       [&](const SegmentString& text) { return isWritable(area, text); });
}

// The object as a vector that can be changed and destroyed, or null.
template <typename T>
SegmentVector<T>* asWritable(const sArea& area, SegmentVector<T>* vector) {
    const bool writable =
        vector != nullptr && isWritable(area, *vector) && areWritable(area, elementsOf(*vector));
    return writable ? vector : nullptr;
}

// A part of the segment's memory that a vector has allocated.
struct sMemory {
    const void* first;
    std::size_t bytes;
};
using Memory = std::vector<sMemory>;

template <typename T>
Memory memoryOf(const sElements<T>& elements) {
    if (elements.capacity == 0) return {};
    return {{elements.first, elements.capacity * sizeof(T)}};
}
Memory memoryOf(const sElements<SegmentString>& texts) {
    Memory memory;
    if (texts.capacity > 0) memory.push_back({texts.first, texts.capacity * sizeof(SegmentString)});
    for (const SegmentString* text = texts.first; text != texts.first + texts.size; ++text) {
        const void* characters = text->data();
        const bool isApart = characters < text || characters >= text + 1;  // else a short text
        if (isApart) memory.push_back({characters, text->capacity()});
    }
    return memory;
}

bool isAllocated(const CPrivateCopy& copy, const Memory& memory) {
    return std::all_of(memory.begin(), memory.end(), [&](const sMemory& part) {
        return copy.blocks().isAllocated(copy.area().offsetOf(part.first), part.bytes);
    });
}

// Boost's code aborts the process when it frees memory that is not allocated.
template <typename T>
void requireAllocated(const CPrivateCopy& copy, const SegmentVector<T>& vector) {
    if (!isAllocated(copy, memoryOf(elementsOf(vector)))) {
        throw std::logic_error("an object's memory is not allocated; remove the object");
    }
}

template <typename T>
void fill(SegmentVector<T>& vector, const std::vector<T>& values) {
    vector.resize(values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        vector.at(i) = values[i];
}
void fill(SegmentVector<SegmentString>& vector, const std::vector<std::string>& values) {
    const SegmentAllocator<char> characters(vector.get_stored_allocator().get_segment_manager());
    vector.resize(values.size(), SegmentString(characters));
    SegmentString element(FILL_TEXT, characters);
    for (std::size_t i = 0; i < values.size(); ++i) {
        element.assign(values[i].data(), values[i].size());
        vector.at(i) = element;
    }
}

// The patches that overwrite the elements in place. False if the values need other memory.
template <typename T>
bool patchesOf(const sArea& area, const sElements<T>& elements, const std::vector<T>& values,
               std::vector<sPatch>& patches) {
    if (elements.size != values.size()) return false;
    if (values.empty()) return true;
    patches = {{area.offsetOf(elements.first),
                static_cast<std::uint32_t>(values.size() * sizeof(T)), values.data()}};
    return true;
}
bool patchesOf(const sArea& area, const sElements<SegmentString>& texts,
               const std::vector<std::string>& values, std::vector<sPatch>& patches) {
    if (texts.size != values.size()) return false;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto characters = elementsOf(texts.first[i]);
        if (characters.size != values[i].size()) return false;
        patches.push_back({area.offsetOf(characters.first),
                           static_cast<std::uint32_t>(values[i].size()), values[i].data()});
    }
    return true;
}

// All that follows requires the segment's lock.
template <typename Value>
eAccess copyValues(const sArea& area, const std::string& name, std::vector<Value>& out) {
    std::vector<Value> values;
    const eAccess result = visitElements<Value>(
        area, name, [&](std::size_t, const auto& element) { values.emplace_back(element); });
    if (result == eAccess::DONE) out = std::move(values);
    return result;
}

template <typename Value>
eAccess rebuild(const CPrivateCopy& copy, const std::string& name,
                const std::vector<Value>& values) {
    using Vector = SegmentVector<ElementOf<Value>>;
    const sRawObject object = findObject(copy.area(), name);
    SegmentManager* manager = copy.area().manager;
    auto* vector = asWritable(copy.area(), object.as<Vector>());
    if (object.address == nullptr) {
        vector = manager->construct<Vector>(name.c_str())(SegmentAllocator<Value>(manager));
    } else if (vector == nullptr) {
        return eAccess::NO_VECTOR;
    } else {
        requireAllocated(copy, *vector);
    }
    fill(*vector, values);
    return eAccess::DONE;
}

template <typename Value>
eAccess assignValues(Segment& segment, const std::string& name, const std::vector<Value>& values) {
    using Vector = SegmentVector<ElementOf<Value>>;
    const sArea area = segment.area();
    const sRawObject object = findObject(area, name);
    if (object.address != nullptr) {
        const auto* vector = asWritable(area, object.as<Vector>());
        if (vector == nullptr) return eAccess::NO_VECTOR;
        std::vector<sPatch> patches;
        if (patchesOf(area, elementsOf(*vector), values, patches)) {
            CSegmentJournal::apply(segment, patches.data(), patches.size());
            return eAccess::DONE;
        }
    }
    return changeStructure(segment,
                           [&](const CPrivateCopy& copy) { return rebuild(copy, name, values); });
}

template <typename T>
bool emptyIfBroken(CPrivateCopy& copy, SegmentVector<T>* vector) {
    if (vector == nullptr) return false;
    const bool isVector = asWritable(copy.area(), vector) != nullptr &&
                          isAllocated(copy, memoryOf(elementsOf(*vector)));
    if (!isVector) new (vector) SegmentVector<T>(SegmentAllocator<T>(copy.area().manager));
    return !isVector;
}

// Does nothing if a live process keeps a lock or the segment is damaged: each access reports that.
void provideJournal(Segment& segment) {
    if (CSegmentJournal::isProvided(segment)) return;
    try {
        withSegmentLock(segment, [&] {
            const CHeapLock heap(segment);
            CSegmentJournal::provide(segment);
            return true;
        });
    } catch (const bip::interprocess_exception&) {
    } catch (const std::logic_error&) {
    }
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
    segment->openMemoryObject(memoryName);
    provideJournal(*segment);
    return segment;
}

sRawObject findObject(const sArea& area, const std::string& name) {
    const auto [address, size] = area.manager->find_no_lock<unsigned char>(name.c_str());
    return {address, size};
}

bool emptyIfBroken(CPrivateCopy& copy, const sSharedObject& object) {
    const sRawObject raw = findObject(copy.area(), object.name);
    switch (object.element) {
        case eElement::DOUBLE:
            return emptyIfBroken(copy, raw.as<SegmentVector<double>>());
        case eElement::BYTE:
            return emptyIfBroken(copy, raw.as<SegmentVector<unsigned char>>());
        case eElement::TEXT:
            break;
    }
    return emptyIfBroken(copy, raw.as<SegmentVector<SegmentString>>());
}

template <typename Value>
eAccess CVectorAccess<Value>::copy(Segment& segment, const std::string& name,
                                   std::vector<Value>& out) {
    return withSegmentLock(segment, [&] { return copyValues(segment.area(), name, out); });
}

template <typename Value>
eAccess CVectorAccess<Value>::assign(Segment& segment, const std::string& name,
                                     const std::vector<Value>& values) {
    return withSegmentLock(segment, [&] { return assignValues(segment, name, values); });
}

template <typename Value>
eAccess CVectorAccess<Value>::update(Segment& segment, const std::string& name,
                                     const std::function<bool(std::vector<Value>&)>& change) {
    return withSegmentLock(segment, [&] {
        std::vector<Value> values;
        if (copyValues(segment.area(), name, values) == eAccess::NO_VECTOR) {
            return eAccess::NO_VECTOR;
        }
        if (!change(values)) return eAccess::DONE;
        return assignValues(segment, name, values);
    });
}

template <typename Value>
eAccess CVectorAccess<Value>::destroy(Segment& segment, const std::string& name) {
    const auto remove = [&](const CPrivateCopy& copy) {
        const sArea& area = copy.area();
        const auto* vector = asWritable(area, findObject(area, name).as<SegmentVector<Element>>());
        Memory memory;
        if (vector != nullptr) {
            requireAllocated(copy, *vector);
            memory = memoryOf(elementsOf(*vector));
        }
        // Runs no destructor: in a damaged segment it would abort the process.
        area.manager->destroy<unsigned char>(name.c_str());
        for (const sMemory& part : memory)
            area.manager->deallocate(const_cast<void*>(part.first));
        return eAccess::DONE;
    };
    return withSegmentLock(segment, [&] {
        const bool exists = findObject(segment.area(), name).address != nullptr;
        return exists ? changeStructure(segment, remove) : eAccess::NO_OBJECT;
    });
}

template struct CVectorAccess<double>;
template struct CVectorAccess<unsigned char>;
template struct CVectorAccess<std::string>;

}  // namespace core_utils
