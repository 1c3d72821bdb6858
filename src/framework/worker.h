// The thread that executes the items of a work queue.
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
// Shares ownership of the queue, so the queue lives at least as long as the thread. One controlling
// thread, which must not be the worker's own, calls start() and stop() and destroys the object. Any
// thread may call requestStop().
class CWorker final : public CAbsWorkerThread {
  public:
    // With a period of 0 the thread polls without a pause. `queue` must not be null.
    CWorker(std::shared_ptr<CWorkQueue> queue, std::uint32_t pollPeriodMicros);

    // Stops and joins the thread; the base class would not.
    ~CWorker() { CAbsWorkerThread::stop(); }

    // Hides the start() of the base class. Returns false and prints a message if the thread is
    // running; returns false if the system cannot create a thread. A stopped worker can be started
    // again.
    bool start();

    // Blocks until the thread has ended: at most for the current item and one period. Queued items
    // stay queued. Always returns false; other programs rely on that result.
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
