// The bounded queue between the producers of work and the worker.
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

// A first-in, first-out queue that never blocks. A push to a full queue is refused and reported on
// standard error.
//
// Any thread may call any operation. The queue owns an item between push and pop, but its
// destructor does not delete items that are still queued: objects that their destructors use may no
// longer exist then.
class CWorkQueue {
  public:
    static constexpr std::int32_t MAX_WORK_LOAD = 0x3FFFFFFF;

    // Without memory for its store the queue refuses every push.
    explicit CWorkQueue(std::string name);
    CWorkQueue(const CWorkQueue&) = delete;
    CWorkQueue& operator=(const CWorkQueue&) = delete;

    // Sets the limit of pushes minus pops, MAX_WORK_LOAD at most. A pop of an empty queue counts
    // too, so each of them makes room for one item more.
    void setMaxWorkLoad(std::int32_t maxWorkLoad);

    // Returns true if the item was queued. Returns false if the item is null or the queue is full;
    // the caller then still owns the item. Wakes nobody: consumers poll. After stopWork() items are
    // still queued, each with a warning on standard error.
    bool pushWork(IWorkItem* item);

    // Gives the oldest item to the caller. Returns false if the queue is empty.
    bool popWork(IWorkItem*& out);

    // Queues the last item, even beyond the limit, and marks the queue as stopped. Returns false if
    // the item is null or the queue has no store; the caller then still owns the item.
    bool stopWork(IWorkItem* lastItem);

    const std::string& getName() const { return mstrName; }

  protected:
    std::unique_ptr<std::deque<IWorkItem*>> mpWorkItems;
    bool mbStopped = false;
    std::int32_t miMaxWorkLoad = MAX_WORK_LOAD;
    // Pushes minus pops, including pops of an empty queue: negative on an idle queue.
    std::int32_t miWorkCount = 0;
    std::mutex mMutex;
    std::condition_variable mCondition;  // for consumers that wait; CWorker polls
    std::string mstrName;
};

}  // namespace core_utils

#endif
