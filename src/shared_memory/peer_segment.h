// The instrument's shared settings for a process beside the daemon. This header and
// object_directory.h are all that such a process needs; docs/shared-memory.md is the reference.
#ifndef SHARED_MEMORY_PEER_SEGMENT_H
#define SHARED_MEMORY_PEER_SEGMENT_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "shared_memory/object_directory.h"

namespace core_utils {

// An attachment of this process to the segment CONF_AUTO_SAVE_MEM. It owns the mapping, not the
// segment: the objects outlive it and this process. It prints nothing but a line on standard error
// about what a dead process has damaged.
//
// Locking: each access holds the segment's own process-shared lock, as the daemon's accesses do, so
// it sees whole vectors. Only a process that writes without the lock may be seen half-way. A write
// that fails changes nothing; one in which this process dies changes all or nothing. An access
// waits at most 1 s for the lock and then returns LOCKED. The lock of a dead process is taken over.
//
// Threads: several may read, write and wait on one instance at once. Attaching, moving and
// destroying it must not overlap with any other call.
//
// Failure: every operation returns its outcome and the reason. Exceptions are std::bad_alloc if
// this process is out of memory, and whatever the function given to update() throws.
//
// All processes on the segment must have one word size and the version of Boost that this library
// was built with. A program that uses Boost.Interprocess or Boost.Container itself must compile
// with the definitions that the target AppConfig::app_config and pkg-config's app_config carry.
//
// `Value` is double, unsigned char or std::string, as the object's row in OBJECT_DIRECTORY says.
class CPeerSegment {
  public:
    enum class eOutcome {
        DONE,
        NO_SEGMENT,      // the segment does not exist, or this instance is not attached
        UNUSABLE,        // the segment cannot be attached to: not finished, not permitted, no room
        REPLACED,        // the segment was removed: nobody else will see or change it any more
        UNKNOWN_OBJECT,  // the directory has no such identifier or name
        TYPE_MISMATCH,   // the directory says that the object's elements are of another type
        NO_OBJECT,       // nobody has written the object yet
        NO_VECTOR,       // the object cannot be a vector of this type
        FULL,            // no room in the segment; the object is unchanged
        LOCKED,          // a live process kept the lock for 1 s
        DAMAGED,         // a process without this library has died in a change; the reason says
                         // what to do, and the object is unchanged
        TIME_OUT,        // no change within the limit
        NO_ELEMENT,      // the object has no element at the index
    };

    struct sResult {
        eOutcome outcome = eOutcome::DONE;
        std::string reason;  // for a person, without a line end; empty with DONE

        explicit operator bool() const { return outcome == eOutcome::DONE; }
    };

    // An object by its identifier or by its exact name.
    struct sKey {
        // Implicit, so that a call names its object directly.
        // NOLINTBEGIN(google-explicit-constructor)
        sKey(int id);
        sKey(const std::string& name);
        sKey(const char* name) : sKey(std::string(name)) {}
        // NOLINTEND(google-explicit-constructor)

        const sSharedObject* object = nullptr;  // its row of the directory, or null
        std::string text;                       // as it was given
    };

    // What an instance does once its segment was removed, perhaps for another of the same name.
    enum class eWhenReplaced {
        FAIL,          // REPLACED from then on, until attach() or open()
        ATTACH_AGAIN,  // attach() or open() once an interval until it succeeds; fails as they do
    };

    // How often read(), write(), update(), set(), remove() and waitForChange() look at the name.
    // What they do in between may still go to a segment that was removed just before.
    static constexpr std::chrono::milliseconds NAME_CHECK_INTERVAL{100};

    // Attached to nothing.
    CPeerSegment();
    CPeerSegment(CPeerSegment&& other) noexcept;
    CPeerSegment& operator=(CPeerSegment&& other) noexcept;
    ~CPeerSegment();

    // Attaches to the segment, in place of what was attached to. Waits up to 1 s for another
    // process that is creating it. attach() never creates it, open() does if there is none. On
    // failure what was attached to stays. ATTACH_AGAIN is for those who read only, or who write all
    // that is theirs again and again: a new segment does not hold what this process wrote before.
    sResult attach(eWhenReplaced whenReplaced = eWhenReplaced::FAIL);
    sResult open(eWhenReplaced whenReplaced = eWhenReplaced::FAIL);

    // DONE if the segment that this instance is attached to still has its name. Looks at the name
    // at once, not once an interval; otherwise it does what an access does when it looks.
    sResult check() const;

    // Replaces `values` by the object's elements, in order; on failure they are unchanged. Never
    // creates an object.
    template <typename Value>
    sResult read(const sKey& key, std::vector<Value>& values) const;

    // Leaves exactly `values` in the object, creating it if there is none.
    template <typename Value>
    sResult write(const sKey& key, const std::vector<Value>& values);

    // Reads, changes and writes as one access, so that two processes that change one object at the
    // same time lose nothing. `change` gets the object's values, or an empty vector if there is no
    // object, and modifies them: `update<double>(key, [](std::vector<double>& values) { ... })`. If
    // it leaves them as they are or throws, nothing is written or created; what it throws reaches
    // the caller.
    //
    // All users of the segment, the daemon included, wait while `change` runs, and fail after 1 s.
    // It must be short and must not wait, print or use the segment.
    template <typename Value>
    sResult update(const sKey& key, const std::function<void(std::vector<Value>&)>& change);

    // Replaces one element; where elements are channels, index 0 is channel 1. Never adds one:
    // NO_ELEMENT if the object has no such index or does not exist. Name the type explicitly:
    // `set<double>("VOLTAGE_DATA_MEM", 1, 5)`. Blocks as write() does.
    template <typename Value>
    sResult set(const sKey& key, std::size_t index, const std::common_type_t<Value>& value);

    // Removes the object, whatever its type. Pointers into it that others keep dangle from then on.
    sResult remove(const sKey& key);

    // Waits until the object's values differ from `values`, and copies them there. Looks at once
    // and then once a period (at least 1 ms); a change that is reverted within a period is missed.
    // TIME_OUT after the limit. An absent object equals an empty one. Doubles are compared bit by
    // bit.
    template <typename Value>
    sResult waitForChange(const sKey& key, std::vector<Value>& values,
                          std::chrono::milliseconds period, std::chrono::milliseconds limit) const;

  private:
    struct sAttachment;

    sResult attachTo(bool create, eWhenReplaced whenReplaced);
    template <typename Access>
    sResult access(const sKey& key, Access make) const;
    template <typename Value, typename Access>
    sResult accessVector(const sKey& key, Access make) const;

    std::unique_ptr<sAttachment> mAttachment;
};

}  // namespace core_utils

#endif
