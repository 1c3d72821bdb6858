#include "framework/worker.h"

#include <gtest/gtest.h>

#include <chrono>
#include <limits>

#include "support/files.h"
#include "support/wait_until.h"

namespace {

using Numbers = std::vector<int>;
using support::printedOnStderrBy;

struct CTestQueue : core_utils::CWorkQueue {
    using CWorkQueue::CWorkQueue;
    using CWorkQueue::miWorkCount;
};

Numbers executed;
std::atomic<int> deleted{0};

struct CItem : core_utils::IWorkItem {
    explicit CItem(int number) : miNumber(number) {}
    ~CItem() override { ++deleted; }
    void execute() override { executed.push_back(miNumber); }
    const int miNumber;
};

// How many items the queue takes.
int fill(CTestQueue& queue) {
    for (int accepted = 0;; ++accepted) {
        auto item = std::make_unique<CItem>(accepted);
        if (!queue.pushWork(item.get())) return accepted;
        static_cast<void>(item.release());
    }
}

// Ends with an empty pop.
Numbers drain(CTestQueue& queue) {
    executed.clear();
    for (core_utils::IWorkItem* item = nullptr; queue.popWork(item); delete item)
        item->execute();
    return executed;
}

TEST(WorkQueue, EmptyPopsRaiseTheLimitButNeverWrapTheCount) {
    constexpr std::int32_t FLOOR = std::numeric_limits<std::int32_t>::min();
    CTestQueue queue("test");
    queue.setMaxWorkLoad(2);
    EXPECT_EQ(2, fill(queue));
    EXPECT_EQ(1, deleted) << "the caller owns what is refused";
    EXPECT_EQ((Numbers{0, 1}), drain(queue));
    drain(queue);
    EXPECT_EQ(2 + 2, fill(queue));
    queue.miWorkCount = FLOOR;
    drain(queue);
    EXPECT_EQ(FLOOR, queue.miWorkCount);
}

TEST(WorkQueue, StopWorkIgnoresTheLimitAndLaterPushesAreReported) {
    CTestQueue queue("test");
    queue.setMaxWorkLoad(0);
    EXPECT_FALSE(queue.stopWork(nullptr));
    EXPECT_TRUE(queue.stopWork(new CItem(7)));
    queue.setMaxWorkLoad(std::numeric_limits<std::int32_t>::max());
    EXPECT_FALSE(queue.pushWork(nullptr));
    EXPECT_EQ("After stopwork() pushWork - miWorkCount 1\n",
              printedOnStderrBy([&] { EXPECT_TRUE(queue.pushWork(new CItem(8))); }));
    EXPECT_EQ((Numbers{7, 8}), drain(queue));
    queue.miWorkCount = 0x3FFFFFFF;
    EXPECT_EQ("pushWork - miWorkCount 1073741823 - miMaxWorkLoad 1073741823\n",
              printedOnStderrBy([&] { EXPECT_EQ(0, fill(queue)); }));
}

TEST(Worker, ExecutesOneItemAPeriodAndCanBeStartedAgain) {
    constexpr std::chrono::microseconds PERIOD(20000);
    const auto queue = std::make_shared<CTestQueue>("test");
    core_utils::CWorker worker(queue, PERIOD.count());
    core_utils::CAbsWorkerThread& thread = worker;
    const auto expectExecution = [&queue](int items) {
        const int end = deleted + items;
        while (items-- > 0)
            queue->pushWork(new CItem(0));
        EXPECT_TRUE(support::waitUntil([end] { return deleted == end; }));
    };
    EXPECT_NE(0, thread.start());
    EXPECT_EQ(0, thread.start()) << "there is a thread already";
    EXPECT_FALSE(thread.isStopped());
    expectExecution(1);
    thread.stop();
    EXPECT_TRUE(thread.isStopped());

    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(worker.start()) << "a stop request of the past does not count";
    EXPECT_EQ("thread alread started \n",
              support::printedBy([&] { EXPECT_FALSE(worker.start()); }));
    expectExecution(2);
    EXPECT_FALSE(worker.stop());
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 2 * PERIOD) << "a pause after each item";

    EXPECT_TRUE(worker.start());
    worker.requestStop();
    support::printedBy([&] { EXPECT_TRUE(support::waitUntil([&] { return worker.start(); })); });
    expectExecution(1);
}

}  // namespace
