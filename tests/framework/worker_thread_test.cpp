#include "framework/worker_thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/wait_until.h"

namespace {

class CPollingWorker : public core_utils::CAbsWorkerThread {
  public:
    void run() override {
        body = std::this_thread::get_id();
        ++bodies;
        support::waitUntil([this] { return stopRequested.exchange(false); });
        ended = true;
    }
    void requestStop() override { stopRequested = true; }

    std::thread::id body;
    std::atomic<int> bodies{0};
    std::atomic<bool> stopRequested{false};
    std::atomic<bool> ended{false};
};

TEST(WorkerThread, RunsOneBodyOnItsOwnThreadUntilStopHasJoinedIt) {
    CPollingWorker worker;
    EXPECT_TRUE(worker.isStopped());
    worker.stop();
    EXPECT_FALSE(worker.stopRequested) << "nothing to stop before the first start";
    for (int starts = 1; starts < 3; ++starts) {
        EXPECT_NE(0, worker.start());
        ASSERT_TRUE(support::waitUntil([&] { return worker.bodies == starts; }));
        EXPECT_NE(std::this_thread::get_id(), worker.body);
        EXPECT_EQ(0, worker.start()) << "there is a thread already";
        EXPECT_FALSE(worker.isStopped());
        worker.stop();
        EXPECT_TRUE(worker.ended) << "stop() returns after the body";
        EXPECT_TRUE(worker.isStopped());
        EXPECT_EQ(starts, worker.bodies);
    }
}

}  // namespace
