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
// segment: the objects outlive it and this process. Nothing here prints, except
// for the line on standard error that tells what a dead process has damaged.
//
// Whole vectors: each access of an object runs under the segment's own process-shared lock, as
// those of the daemon do, so none of them sees another's change half done. A process that writes
// without this library and without that lock may be seen half-way. A write brings all values in or,
// when it fails or this process dies in it, none. An access blocks while others hold the lock, for
// at most 1 s: LOCKED then. The lock of a process that has died is taken over.
//
// Threads: several may read, write and wait on one instance at once. Attaching, moving and
// destroying it need it for themselves.
//
// Failure: every operation tells what came of it and why. Exceptions are std::bad_alloc for this
// process's own memory, and what the function given to update() throws.
//
// All processes on the segment must have one word size and one version of Boost, the one that this
// library was built with; nothing in the segment tells them apart. A program that uses
// Boost.Interprocess or Boost.Container itself must compile with the definitions that the target
// AppConfig::app_config and pkg-config's app_config carry.
//
// `Value` is double, unsigned char or std::string, as the object's row in OBJECT_DIRECTORY says.
class CPeerSegment {
  public:
    enum class eOutcome {
        DONE,
        NO_SEGMENT,      // none has the name, or this instance is not attached
        UNUSABLE,        // the segment cannot be attached to: not finished, not permitted, no room
        REPLACED,        // the segment was removed: nobody else will see or change it any more
        UNKNOWN_OBJECT,  // the directory has no such identifier or name
        TYPE_MISMATCH,   // the directory says that the object's elements are of another type
        NO_OBJECT,       // nobody has written the object yet
        NO_VECTOR,       // what stands under the name cannot be a vector of this type
        FULL,            // no room in the segment; the object is as it was
        LOCKED,          // another process keeps the lock and stands still
        DAMAGED,         // a process without this library has died in a change; the reason says
                         // what to do, and the object is as it was
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

    // DONE while the segment that this instance is attached to has its name. Looks at it at once,
    // and otherwise does what every access does when it looks.
    sResult check() const;

    // Replaces `values` by all that the object holds, in order; on failure they stay. Creates
    // nothing.
    template <typename Value>
    sResult read(const sKey& key, std::vector<Value>& values) const;

    // Leaves exactly `values` in the object, creating it if there is none.
    template <typename Value>
    sResult write(const sKey& key, const std::vector<Value>& values);

    // Reads, changes and writes as one access, so that of two processes that change one object at
    // the same time neither loses the other's change. `change` gets all values of the object, none
    // if it does not exist, and leaves in it what the object is to hold: in `update<double>(...)`,
    // `[](std::vector<double>& values) { ... }`. Nothing is written, and no object created, if it
    // leaves the values as they were or throws; what it throws reaches the caller.
    //
    // Everybody who uses the segment waits while `change` runs, the daemon included, and fails
    // after 1 s. It must be short, wait for nothing, print nothing and not use the segment.
    template <typename Value>
    sResult update(const sKey& key, const std::function<void(std::vector<Value>&)>& change);

    // Replaces one element: index 0 is channel 1 where elements are channels. Adds none:
    // NO_ELEMENT if the object has no such index or does not exist. The type is always named:
    // `set<double>("VOLTAGE_DATA_MEM", 1, 5)`. Blocks as write() does.
    template <typename Value>
    sResult set(const sKey& key, std::size_t index, const std::common_type_t<Value>& value);

    // Removes the object, also one that is no vector. Pointers into it that others keep outside the
    // lock lead nowhere from then on.
    sResult remove(const sKey& key);

    // Waits until the object holds something else than `values`, and puts that there. Looks at
    // once, then once a period (at least 1 ms), so what comes and goes within one is not seen;
    // TIME_OUT after the limit. No object is the same as one without elements. Doubles are compared
    // bit by bit.
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
