#include "shared_memory/peer_segment.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "shared_memory/segment_check.h"
#include "shared_memory/vector_access.h"

namespace core_utils {

namespace bip = boost::interprocess;

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using eOutcome = CPeerSegment::eOutcome;
using sResult = CPeerSegment::sResult;

template <typename Value>
constexpr eElement ELEMENT = eElement::DOUBLE;
template <>
constexpr eElement ELEMENT<unsigned char> = eElement::BYTE;
template <>
constexpr eElement ELEMENT<std::string> = eElement::TEXT;

const sSharedObject* objectOf(const std::string& name) {
    const auto* object = std::find_if(std::begin(OBJECT_DIRECTORY), std::end(OBJECT_DIRECTORY),
                                      [&](const sSharedObject& row) { return name == row.name; });
    return object != std::end(OBJECT_DIRECTORY) ? object : nullptr;
}

template <typename Value>
bool isSame(const std::vector<Value>& a, const std::vector<Value>& b) {
    return a == b;
}
// Bit by bit: a NaN never compares equal and would always count as changed.
bool isSame(const std::vector<double>& a, const std::vector<double>& b) {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0);
}

std::string segmentName() {
    return SEGMENT_NAME;
}

sResult noSegment() {
    return {eOutcome::NO_SEGMENT, "there is no segment " + segmentName()};
}
sResult notAttached() {
    return {eOutcome::NO_SEGMENT, "not attached to " + segmentName() + ": no attach() or open()"};
}
sResult typeMismatch(const sSharedObject& object) {
    return {eOutcome::TYPE_MISMATCH,
            std::string(object.name) + " has elements of type " + nameOf(object.element)};
}

sResult toResult(const sSharedObject& object, eAccess access) {
    const std::string name = object.name;
    switch (access) {
        case eAccess::NO_OBJECT:
            return {eOutcome::NO_OBJECT, "nobody has written " + name + " yet"};
        case eAccess::NO_VECTOR:
            return {eOutcome::NO_VECTOR, name + " is no vector of type " + nameOf(object.element)};
        case eAccess::DONE:
            break;
    }
    return {};
}

sResult toResult(const bip::interprocess_exception& error) {
    if (error.get_error_code() == bip::timeout_when_locking_error) {
        return {eOutcome::LOCKED,
                "another process keeps the lock of " + segmentName() + " and stands still"};
    }
    return {eOutcome::DAMAGED, segmentName() + " is damaged: " + error.what()};
}

sResult full(const std::string& name) {
    return {eOutcome::FULL, segmentName() + " is full; " + name + " is as it was"};
}

}  // namespace

// Shared by the threads that use the instance; the mutex is not held while they use the segment.
struct CPeerSegment::sAttachment {
    std::shared_ptr<Segment> segment;
    std::uint64_t id = 0;  // of the memory object that is mapped
    bool create = false;
    eWhenReplaced whenReplaced = eWhenReplaced::FAIL;
    steady_clock::time_point checked;
    sResult state;  // DONE, or why the segment is not to be used any more
    std::mutex mutex;

    sResult attach();
    sResult take(milliseconds interval, std::shared_ptr<Segment>& taken);
};

sResult CPeerSegment::sAttachment::attach() {
    try {
        segment = attachSegment(SEGMENT_NAME, create);
        id = memoryObjectId(memoryObjectName(SEGMENT_NAME));
        checked = steady_clock::now();
        return {};
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const bip::interprocess_exception& error) {
        if (error.get_error_code() == bip::not_found_error) return noSegment();
        if (error.get_error_code() == bip::timeout_when_locking_error) return toResult(error);
        return {eOutcome::UNUSABLE, "cannot attach to " + segmentName() + ": " + error.what()};
    } catch (const std::exception& error) {
        return {eOutcome::UNUSABLE, "cannot attach to " + segmentName() + ": " + error.what()};
    }
}

// Checks the segment's name if the last check is at least `interval` ago.
sResult CPeerSegment::sAttachment::take(milliseconds interval, std::shared_ptr<Segment>& taken) {
    const std::lock_guard<std::mutex> lock(mutex);
    const bool due = steady_clock::now() - checked >= interval;
    if (due && memoryObjectId(memoryObjectName(SEGMENT_NAME)) != id) {
        state = whenReplaced == eWhenReplaced::ATTACH_AGAIN
                    ? attach()
                    : sResult{eOutcome::REPLACED, segmentName() + " was removed"};
    }
    if (due) checked = steady_clock::now();
    taken = segment;
    return state;
}

CPeerSegment::sKey::sKey(int id) : object(objectOf(id)), text(std::to_string(id)) {}

CPeerSegment::sKey::sKey(const std::string& name) : object(objectOf(name)), text(name) {}

CPeerSegment::CPeerSegment() = default;
CPeerSegment::CPeerSegment(CPeerSegment&&) noexcept = default;
CPeerSegment& CPeerSegment::operator=(CPeerSegment&&) noexcept = default;
CPeerSegment::~CPeerSegment() = default;

sResult CPeerSegment::attach(eWhenReplaced whenReplaced) {
    return attachTo(false, whenReplaced);
}

sResult CPeerSegment::open(eWhenReplaced whenReplaced) {
    return attachTo(true, whenReplaced);
}

sResult CPeerSegment::attachTo(bool create, eWhenReplaced whenReplaced) {
    auto attachment = std::make_unique<sAttachment>();
    attachment->create = create;
    attachment->whenReplaced = whenReplaced;
    sResult result = attachment->attach();
    if (result) mAttachment = std::move(attachment);
    return result;
}

sResult CPeerSegment::check() const {
    if (mAttachment == nullptr) return notAttached();
    std::shared_ptr<Segment> segment;
    return mAttachment->take(milliseconds(0), segment);
}

template <typename Access>
sResult CPeerSegment::access(const sKey& key, Access make) const {
    if (key.object == nullptr) {
        return {eOutcome::UNKNOWN_OBJECT, "there is no object \"" + key.text + '"'};
    }
    if (mAttachment == nullptr) return notAttached();
    std::shared_ptr<Segment> segment;
    sResult usable = mAttachment->take(NAME_CHECK_INTERVAL, segment);
    if (!usable) return usable;
    try {
        return toResult(*key.object, make(*segment, key.object->name));
    } catch (const bip::bad_alloc&) {
        return full(key.object->name);
    } catch (const std::length_error&) {
        return full(key.object->name);
    } catch (const bip::interprocess_exception& error) {
        return toResult(error);
    } catch (const std::logic_error& error) {
        return {eOutcome::DAMAGED, segmentName() + " is damaged: " + error.what()};
    }
}

template <typename Value, typename Access>
sResult CPeerSegment::accessVector(const sKey& key, Access make) const {
    if (key.object != nullptr && key.object->element != ELEMENT<Value>) {
        return typeMismatch(*key.object);
    }
    return access(key, make);
}

template <typename Value>
sResult CPeerSegment::read(const sKey& key, std::vector<Value>& values) const {
    return accessVector<Value>(key, [&](Segment& segment, const char* name) {
        return CVectorAccess<Value>::copy(segment, name, values);
    });
}

template <typename Value>
sResult CPeerSegment::write(const sKey& key, const std::vector<Value>& values) {
    return accessVector<Value>(key, [&](Segment& segment, const char* name) {
        return CVectorAccess<Value>::assign(segment, name, values);
    });
}

template <typename Value>
sResult CPeerSegment::update(const sKey& key,
                             const std::function<void(std::vector<Value>&)>& change) {
    std::exception_ptr thrown;  // kept apart from what the segment throws
    const auto changeValues = [&](std::vector<Value>& values) {
        const std::vector<Value> before = values;
        try {
            change(values);
        } catch (...) {
            thrown = std::current_exception();
            return false;
        }
        return !isSame(before, values);
    };
    const sResult result = accessVector<Value>(key, [&](Segment& segment, const char* name) {
        return CVectorAccess<Value>::update(segment, name, changeValues);
    });
    if (thrown != nullptr) std::rethrow_exception(thrown);
    return result;
}

template <typename Value>
sResult CPeerSegment::set(const sKey& key, std::size_t index,
                          const std::common_type_t<Value>& value) {
    std::size_t size = 0;
    const sResult result = update<Value>(key, [&](std::vector<Value>& values) {
        size = values.size();
        if (index < size) values[index] = value;
    });
    if (!result || index < size) return result;
    return {eOutcome::NO_ELEMENT, std::string(key.object->name) + " has no element at index " +
                                      std::to_string(index) + ": it holds " + std::to_string(size)};
}

sResult CPeerSegment::remove(const sKey& key) {
    return access(key, [&](Segment& segment, const char* name) {
        switch (key.object->element) {
            case eElement::DOUBLE:
                return CVectorAccess<double>::destroy(segment, name);
            case eElement::BYTE:
                return CVectorAccess<unsigned char>::destroy(segment, name);
            case eElement::TEXT:
                break;
        }
        return CVectorAccess<std::string>::destroy(segment, name);
    });
}

template <typename Value>
sResult CPeerSegment::waitForChange(const sKey& key, std::vector<Value>& values,
                                    milliseconds period, milliseconds limit) const {
    const auto begin = steady_clock::now();
    while (true) {
        std::vector<Value> current;
        const sResult result = read(key, current);
        if (!result && result.outcome != eOutcome::NO_OBJECT) return result;
        if (!isSame(current, values)) {
            values = std::move(current);
            return {};
        }
        const auto left =
            limit - std::chrono::duration_cast<milliseconds>(steady_clock::now() - begin);
        if (left <= milliseconds(0)) {
            return {eOutcome::TIME_OUT, std::string(key.object->name) + " did not change within " +
                                            std::to_string(limit.count()) + " ms"};
        }
        std::this_thread::sleep_for(std::clamp(period, milliseconds(1), left));
    }
}

template sResult CPeerSegment::read(const sKey&, std::vector<double>&) const;
template sResult CPeerSegment::write(const sKey&, const std::vector<double>&);
template sResult CPeerSegment::update(const sKey&,
                                      const std::function<void(std::vector<double>&)>&);
template sResult CPeerSegment::set<double>(const sKey&, std::size_t, const double&);
template sResult CPeerSegment::waitForChange(const sKey&, std::vector<double>&, milliseconds,
                                             milliseconds) const;

template sResult CPeerSegment::read(const sKey&, std::vector<unsigned char>&) const;
template sResult CPeerSegment::write(const sKey&, const std::vector<unsigned char>&);
template sResult CPeerSegment::update(const sKey&,
                                      const std::function<void(std::vector<unsigned char>&)>&);
template sResult CPeerSegment::set<unsigned char>(const sKey&, std::size_t, const unsigned char&);
template sResult CPeerSegment::waitForChange(const sKey&, std::vector<unsigned char>&, milliseconds,
                                             milliseconds) const;

template sResult CPeerSegment::read(const sKey&, std::vector<std::string>&) const;
template sResult CPeerSegment::write(const sKey&, const std::vector<std::string>&);
template sResult CPeerSegment::update(const sKey&,
                                      const std::function<void(std::vector<std::string>&)>&);
template sResult CPeerSegment::set<std::string>(const sKey&, std::size_t, const std::string&);
template sResult CPeerSegment::waitForChange(const sKey&, std::vector<std::string>&, milliseconds,
                                             milliseconds) const;

}  // namespace core_utils
