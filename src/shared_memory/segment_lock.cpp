#include "shared_memory/segment_lock.h"

#include <time.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <stdexcept>

#include "shared_memory/lock_holder.h"
#include "shared_memory/mutex_words.h"
#include "shared_memory/segment_journal.h"
#include "shared_memory/segment_recovery.h"

namespace core_utils {

namespace bip = boost::interprocess;
using namespace std::chrono;
using namespace std::chrono_literals;
using Words = sMutexWords<pthread_mutex_t>;

namespace {

constexpr auto FIRST_LOOK = 2ms;
constexpr auto LONGEST_LOOK = 32ms;
constexpr auto PATIENCE = 1000ms;
// A live holder may be halted just before it enters its thread number.
constexpr auto NAMELESS_PATIENCE = 400ms;

bool isLocked(int result) {
    if (result == 0) return true;
    if (result != EBUSY && result != ETIMEDOUT) throw bip::lock_exception();
    return false;
}

bool waitFor(pthread_mutex_t& mutex, nanoseconds time) {
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    const nanoseconds end = nanoseconds(until.tv_nsec) + time;
    until.tv_sec += static_cast<time_t>(end / 1s);
    until.tv_nsec = static_cast<long>((end % 1s).count());
    return isLocked(pthread_mutex_timedlock(&mutex, &until));
}

// Returns true if the mutex was locked, false if it was claimed from a dead holder. `work`, if not
// null, is renewed while waiting: nothing has been changed yet.
bool waitOrClaim(pthread_mutex_t& mutex, ino_t segment, CExitGate::CWork* work) {
    const auto begin = steady_clock::now();
    auto nameless = begin;
    for (auto look = milliseconds(FIRST_LOOK);;
         look = std::min<milliseconds>(2 * look, LONGEST_LOOK)) {
        if (waitFor(mutex, look)) return true;
        const auto now = steady_clock::now();
        const sMutexHolder holder = Words::holderOf(mutex);
        if (!holder.isLocked || holder.thread != 0) nameless = now;
        const bool dead =
            holder.isDead || (holder.thread != 0 ? isDead(holder.thread, segment)
                                                 : now - nameless >= NAMELESS_PATIENCE);
        if (dead && Words::claim(mutex, holder, currentThread())) return false;
        if (now - begin >= PATIENCE) {
            throw bip::interprocess_exception(bip::timeout_when_locking_error);
        }
        if (work != nullptr) work->renew();
    }
}

}  // namespace

CSegmentLock::CSegmentLock(Segment& segment) : mSegment(segment) {
    pthread_mutex_t& mutex = segment.lock();
    // Nested: a dead thread with this thread's number already held it.
    while (!(isLocked(pthread_mutex_trylock(&mutex)) || waitOrClaim(mutex, segment.id(), &mWork)) ||
           Words::isNested(mutex)) {
        try {
            mRepaired += recover(segment);
        } catch (...) {
            Words::release(mutex);
            throw;
        }
        Words::release(mutex);
    }
    CSegmentJournal::markInUse(segment, true);
    if (CSegmentJournal::isIndexDamaged(segment)) {
        release();
        throw std::logic_error(INDEX_DAMAGED);
    }
}

void CSegmentLock::release() {
    CSegmentJournal::markInUse(mSegment, false);
    pthread_mutex_unlock(&mSegment.lock());
    if (!mRepaired.empty()) std::fprintf(stderr, "%s", mRepaired.c_str());
}

CSegmentLock::~CSegmentLock() {
    release();
}

CHeapLock::CHeapLock(Segment& segment) : mSegment(segment) {
    pthread_mutex_t& mutex = segment.heapLock();
    mIsTakenOver =
        !isLocked(pthread_mutex_trylock(&mutex)) && !waitOrClaim(mutex, segment.id(), nullptr);
    CSegmentJournal::markHeapInUse(segment, true);
}

CHeapLock::~CHeapLock() {
    CSegmentJournal::markHeapInUse(mSegment, false);
    if (mIsTakenOver) {
        Words::release(mSegment.heapLock());
    } else {
        pthread_mutex_unlock(&mSegment.heapLock());
    }
}

void releaseHeapOfDead(Segment& segment) {
    Words::release(segment.heapLock());
}

}  // namespace core_utils
