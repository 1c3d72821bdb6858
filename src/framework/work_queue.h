// The bounded queue between those that have work done and the worker that does it.
#ifndef FRAMEWORK_WORK_QUEUE_H
#define FRAMEWORK_WORK_QUEUE_H

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "framework/work_item.h"

namespace core_utils {

// First in, first out, never blocking: overload is refused and reported on standard error.
//
// Any thread may call any operation. Owns the items between push and pop, with one exception:
// items still queued at destruction are not deleted, because what their destructors use may be
// gone by then.
class CWorkQueue {
  public:
    static constexpr std::int32_t MAX_WORK_LOAD = 0x3FFFFFFF;

    // Without memory for its store the queue exists, but refuses all work.
    explicit CWorkQueue(std::string name);
    CWorkQueue(const CWorkQueue&) = delete;
    CWorkQueue& operator=(const CWorkQueue&) = delete;

    // Limits pushes minus polls, that is the number of queued items less one for each poll that
    // found none. MAX_WORK_LOAD at most.
    void setMaxWorkLoad(std::int32_t maxWorkLoad);

    // True if the item was queued. False leaves it with the caller: it is null, or the queue is
    // full. Consumers poll, so nobody is woken. After stopWork() items are still queued, each
    // with a warning.
    bool pushWork(IWorkItem* item);

    // Takes the oldest item, which is the caller's from then on. False if there is none.
    bool popWork(IWorkItem*& out);

    // Queues the item that is to be the last, whatever the limit, and marks the queue as stopped.
    // False leaves the item with the caller.
    bool stopWork(IWorkItem* lastItem);

    const std::string& getName() const { return mstrName; }

  protected:
    std::unique_ptr<std::deque<IWorkItem*>> mpWorkItems;
    bool mbStopped = false;
    std::int32_t miMaxWorkLoad = MAX_WORK_LOAD;
    // Pushes minus polls, empty ones included: negative on an idle queue.
    std::int32_t miWorkCount = 0;
    std::mutex mMutex;
    std::condition_variable mCondition;  // for a consumer that waits; CWorker polls
    std::string mstrName;
};

}  // namespace core_utils

#endif
