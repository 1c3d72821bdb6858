// The thread that works a queue off.
#ifndef FRAMEWORK_WORKER_H
#define FRAMEWORK_WORKER_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "framework/work_queue.h"
#include "framework/worker_thread.h"

namespace core_utils {

// Polls its queue and executes at most one item per period, on its own thread.
//
// Shares ownership of the queue, so that a running thread never outlives it. start(), stop() and
// the destruction belong to one controlling thread, which is never the worker's own; anybody may
// call requestStop().
class CWorker final : public CAbsWorkerThread {
  public:
    // A period of 0 polls without a pause. `queue` must not be null.
    CWorker(std::shared_ptr<CWorkQueue> queue, std::uint32_t pollPeriodMicros);

    // Joins: nothing below this class would.
    ~CWorker() { CAbsWorkerThread::stop(); }

    // Hides the base's. False, with a message, if the thread runs; false if the system has no
    // thread to give. A worker that was stopped can be started again.
    bool start();

    // Returns when the thread has ended: after the current item and one period at most. Items
    // still queued stay queued. Always false: that result is an interface.
    bool stop();

    void requestStop() override;
    void run() override;

  private:
    void executeNext();

    std::atomic<bool> mbStopRequested{false};
    std::atomic<bool> mbStarted{false};
    std::shared_ptr<CWorkQueue> mpWorkQueue;
    std::uint32_t muiPollPeriod;  // microseconds
};

}  // namespace core_utils

#endif
