#include <gtest/gtest.h>

#include <atomic>
#include <limits>
#include <thread>

#include "framework/application.h"
#include "framework/evt_work_item.h"
#include "support/allocations.h"
#include "support/files.h"

namespace {

using core_utils::CWorkQueue;
using Numbers = std::vector<int>;
using support::printedOnStderrBy;
using support::waitUntil;

constexpr std::uint32_t EVENT = 7;

struct CTestEvent : core::CEvent {
    explicit CTestEvent(int number = 0) : CEvent(EVENT, 0), miNumber(number) {}
    std::unique_ptr<CEvent> clone() const override { return std::make_unique<CTestEvent>(*this); }
    const int miNumber;
};

struct CTestHandler : core::IEvtHandler {
    explicit CTestHandler(std::shared_ptr<CWorkQueue> queue = nullptr) : mpQueue(queue) {}
    void handleEvent(const std::shared_ptr<core::CEvent>& event) override {
        mNumbers.push_back(std::static_pointer_cast<CTestEvent>(event)->miNumber);
        mThread = std::this_thread::get_id();
        ++miHandled;
    }
    std::shared_ptr<CWorkQueue> getWorkQueue() override { return mpQueue; }

    const std::shared_ptr<CWorkQueue> mpQueue;
    Numbers mNumbers;
    std::thread::id mThread;
    std::atomic<int> miHandled{0};
};

struct CTestQueue : CWorkQueue {
    using CWorkQueue::CWorkQueue;
    using CWorkQueue::miWorkCount;
};

// One handler, subscribed, and a queue that no worker serves.
class Framework : public testing::Test {
  protected:
    Framework() { mManager.subscribe(EVENT, mHandler); }

    bool publish(int number) { return mManager.publish(std::make_shared<CTestEvent>(number)); }

    // How many deliveries the queue takes.
    int fill() {
        int taken = 0;
        while (publish(taken))
            ++taken;
        return taken;
    }

    // What was delivered; ends with an empty pop.
    Numbers drain() {
        mHandler->mNumbers.clear();
        for (core_utils::IWorkItem* item = nullptr; mQueue->popWork(item); delete item)
            item->execute();
        return mHandler->mNumbers;
    }

    const std::shared_ptr<CTestQueue> mQueue = std::make_shared<CTestQueue>("test");
    const std::shared_ptr<CTestHandler> mHandler = std::make_shared<CTestHandler>();
    core::CEvtMgr mManager{mQueue};
};

TEST_F(Framework, EmptyPopsRaiseTheLimitOfAQueueButNeverWrapItsCount) {
    constexpr std::int32_t FLOOR = std::numeric_limits<std::int32_t>::min();
    mQueue->setMaxWorkLoad(2);
    EXPECT_EQ(2, fill());
    EXPECT_EQ((Numbers{0, 1}), drain());
    drain();
    EXPECT_EQ(2 + 2, fill());
    mQueue->miWorkCount = FLOOR;
    drain();
    EXPECT_EQ(FLOOR, mQueue->miWorkCount);
}

TEST_F(Framework, StopOfAQueueIgnoresTheLimitAndLaterPushesAreReported) {
    mQueue->setMaxWorkLoad(0);
    EXPECT_FALSE(mQueue->stopWork(nullptr));
    EXPECT_TRUE(
        mQueue->stopWork(new core::CEvtWorkItem(mHandler, std::make_shared<CTestEvent>(7))));
    mQueue->setMaxWorkLoad(std::numeric_limits<std::int32_t>::max());
    EXPECT_FALSE(mQueue->pushWork(nullptr));
    EXPECT_EQ("After stopwork() pushWork - miWorkCount 1\n",
              printedOnStderrBy([&] { EXPECT_TRUE(publish(8)); }));
    EXPECT_EQ((Numbers{7, 8}), drain());
    mQueue->miWorkCount = 0x3FFFFFFF;
    EXPECT_EQ("pushWork - miWorkCount 1073741823 - miMaxWorkLoad 1073741823\n",
              printedOnStderrBy([&] { EXPECT_FALSE(publish(9)); }));
}

TEST_F(Framework, WorkerExecutesOneItemAPeriodAndCanBeStartedAgain) {
    constexpr std::chrono::microseconds PERIOD(20000);
    core_utils::CWorker worker(mQueue, PERIOD.count());
    core_utils::CAbsWorkerThread& thread = worker;
    const auto expectExecution = [this](int items) {
        const int end = mHandler->miHandled + items;
        while (items-- > 0)
            EXPECT_TRUE(publish(items));
        EXPECT_TRUE(waitUntil([&] { return mHandler->miHandled == end; }));
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
    support::printedBy([&] { EXPECT_TRUE(waitUntil([&] { return worker.start(); })); });
    expectExecution(1);
}

TEST_F(Framework, EventManagerQueuesOneItemASubscriptionAndDeletesWhatAQueueRefuses) {
    const auto fullQueue = std::make_shared<CWorkQueue>("full");
    fullQueue->setMaxWorkLoad(0);
    const auto refused = std::make_shared<CTestHandler>(fullQueue);
    const auto event = std::make_shared<CTestEvent>();
    EXPECT_FALSE(mManager.publish(nullptr));
    EXPECT_FALSE(mManager.subscribe(EVENT, nullptr));
    EXPECT_TRUE(mManager.subscribe(EVENT, refused));
    for (const std::uint32_t id : {EVENT, EVENT + 1})
        EXPECT_TRUE(mManager.subscribe(id, mHandler));
    EXPECT_FALSE(mManager.publish(event)) << "one is refused";
    EXPECT_EQ(2U, drain().size()) << "the others are not";
    EXPECT_EQ(1, event.use_count()) << "nothing is left of the refused item";
    EXPECT_TRUE(mManager.publish(event, mQueue)) << "not on the handlers' own queues";
    EXPECT_EQ(2U, drain().size());
    EXPECT_EQ(1, refused->miHandled);
    EXPECT_TRUE(mManager.unsubscribe(EVENT, mHandler)) << "twice, and from this event alone";
    EXPECT_TRUE(mManager.unsubscribeAll(mHandler));
    EXPECT_FALSE(mManager.unsubscribe(EVENT, mHandler) || mManager.unsubscribeAll(mHandler));
    EXPECT_TRUE(mManager.unsubscribeAll(refused));
    EXPECT_FALSE(mManager.publish(event)) << "no subscriber";
}

TEST_F(Framework, ApplicationDeliversInOrderOnTheThreadOfEachHandlersQueueUntilItIsStopped) {
    const std::shared_ptr<CTestHandler> handlers[] = {mHandler,
                                                      std::make_shared<CTestHandler>(mQueue)};
    const auto event = std::make_shared<CTestEvent>();
    app::CApplication application("Test");
    EXPECT_FALSE(application.subscribe(EVENT, mHandler) || application.publish(event) ||
                 application.unsubscribe(EVENT, mHandler) || application.forwardToEvtMgr(mHandler))
        << "before its start";
    EXPECT_EQ(nullptr, application.getWorkQueue());
    EXPECT_TRUE(application.start());
    const auto defaultQueue = application.getWorkQueue();
    core_utils::CWorker ownWorker(mQueue, 1);
    ASSERT_TRUE(ownWorker.start());
    for (const auto& handler : handlers)
        EXPECT_TRUE(application.subscribe(EVENT, handler));
    Numbers numbers;
    while (numbers.size() < 200) {
        numbers.push_back(static_cast<int>(numbers.size()));
        EXPECT_TRUE(application.publish(std::make_shared<CTestEvent>(numbers.back())));
    }
    for (const auto& handler : handlers) {
        ASSERT_TRUE(waitUntil([&] { return handler->miHandled == 200; }));
        EXPECT_EQ(numbers, handler->mNumbers);
        EXPECT_NE(std::this_thread::get_id(), handler->mThread);
    }
    EXPECT_NE(handlers[0]->mThread, handlers[1]->mThread);
    EXPECT_EQ("CApplication end: Test\n",
              printedOnStderrBy([&] { EXPECT_FALSE(application.stop()); }));
    EXPECT_TRUE(application.publish(event));
    EXPECT_TRUE(waitUntil([&] { return handlers[1]->miHandled == 201; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    core_utils::IWorkItem* item = nullptr;
    EXPECT_TRUE(defaultQueue->popWork(item)) << "nobody serves it";
    delete item;
    EXPECT_TRUE(application.unsubscribe(EVENT, handlers[0]));
    EXPECT_TRUE(application.forwardToEvtMgr(handlers[1]));
    EXPECT_FALSE(application.publish(event));
    EXPECT_TRUE(application.start()) << "again; its destructor stops it";
}

TEST_F(Framework, ApplicationFailsCleanlyAtEachAllocation) {
    bool done = false;
    for (int number = 1; !done; ++number) {
        const int before = mHandler->miHandled;
        const auto event = std::make_shared<CTestEvent>();
        app::CApplication application("Test");
        support::countAllocations(number);
        try {
            done = application.start() && application.subscribe(EVENT, mHandler) &&
                   application.publish(event);
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(done, support::allocations() < number);
        support::countAllocations();
        EXPECT_TRUE(waitUntil([&] { return event.use_count() == 1; }));
        EXPECT_EQ(before + done, mHandler->miHandled);
    }
}

}  // namespace
