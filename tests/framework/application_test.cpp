#include "framework/application.h"

#include <gtest/gtest.h>

#include <atomic>
#include <numeric>
#include <thread>

#include "support/allocations.h"
#include "support/files.h"
#include "support/wait_until.h"

namespace {

using app::CApplication;
using core::CEvtMgr;
using core_utils::CWorkQueue;
using Numbers = std::vector<int>;
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

// How many deliveries are in a queue that no worker serves.
int drain(CWorkQueue& queue) {
    int items = 0;
    for (core_utils::IWorkItem* item = nullptr; queue.popWork(item); delete item)
        ++items;
    return items;
}

TEST(EventManager, QueuesOneItemASubscriptionAndDeletesWhatAQueueRefuses) {
    const auto queue = std::make_shared<CWorkQueue>("default");
    const auto fullQueue = std::make_shared<CWorkQueue>("full");
    fullQueue->setMaxWorkLoad(0);
    CEvtMgr manager(queue);
    const auto one = std::make_shared<CTestHandler>();
    const auto refused = std::make_shared<CTestHandler>(fullQueue);
    const auto event = std::make_shared<CTestEvent>();
    EXPECT_FALSE(manager.publish(nullptr));
    EXPECT_FALSE(manager.subscribe(EVENT, nullptr));
    EXPECT_FALSE(manager.unsubscribe(EVENT, one)) << "an empty table";
    EXPECT_FALSE(manager.publish(event)) << "no subscriber";
    EXPECT_TRUE(manager.subscribe(EVENT, refused));
    for (const std::uint32_t id : {EVENT, EVENT, EVENT + 1})
        EXPECT_TRUE(manager.subscribe(id, one));
    EXPECT_FALSE(manager.publish(event)) << "one is refused";
    EXPECT_EQ(2, drain(*queue)) << "the others are not";
    EXPECT_EQ(1, event.use_count()) << "nothing is left of the refused item";
    EXPECT_TRUE(manager.publish(event, queue)) << "not on the handlers' own queues";
    EXPECT_EQ(3, drain(*queue));
    EXPECT_TRUE(manager.unsubscribe(EVENT, one)) << "twice, and from this event alone";
    EXPECT_TRUE(manager.unsubscribeAll(one));
    EXPECT_FALSE(manager.unsubscribe(EVENT, one) || manager.unsubscribeAll(one));
}

TEST(Application, DeliversInOrderOnTheThreadOfEachHandlersQueueUntilItIsStopped) {
    const auto ownQueue = std::make_shared<CWorkQueue>("own");
    const std::shared_ptr<CTestHandler> handlers[] = {std::make_shared<CTestHandler>(),
                                                      std::make_shared<CTestHandler>(ownQueue)};
    const auto event = std::make_shared<CTestEvent>();
    CApplication application("Test");
    EXPECT_FALSE(application.subscribe(EVENT, handlers[0]));
    EXPECT_FALSE(application.publish(event));
    EXPECT_FALSE(application.unsubscribe(EVENT, handlers[0]));
    EXPECT_FALSE(application.forwardToEvtMgr(handlers[0]));
    EXPECT_EQ(nullptr, application.getWorkQueue());
    EXPECT_TRUE(application.start());
    const auto defaultQueue = application.getWorkQueue();
    core_utils::CWorker ownWorker(ownQueue, 1);
    ASSERT_TRUE(ownWorker.start());
    for (const auto& handler : handlers)
        EXPECT_TRUE(application.subscribe(EVENT, handler));
    Numbers numbers(200);
    std::iota(numbers.begin(), numbers.end(), 0);
    for (const int number : numbers)
        EXPECT_TRUE(application.publish(std::make_shared<CTestEvent>(number)));
    for (const auto& handler : handlers) {
        ASSERT_TRUE(waitUntil([&] { return handler->miHandled == 200; }));
        EXPECT_EQ(numbers, handler->mNumbers);
        EXPECT_NE(std::this_thread::get_id(), handler->mThread);
    }
    EXPECT_NE(handlers[0]->mThread, handlers[1]->mThread);
    EXPECT_EQ("CApplication end: Test\n",
              support::printedOnStderrBy([&] { EXPECT_FALSE(application.stop()); }));
    EXPECT_TRUE(application.publish(event));
    EXPECT_TRUE(waitUntil([&] { return handlers[1]->miHandled == 201; }));
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(200, handlers[0]->miHandled) << "nobody serves the default queue";
    EXPECT_EQ(1, drain(*defaultQueue));
    EXPECT_TRUE(application.unsubscribe(EVENT, handlers[0]));
    EXPECT_TRUE(application.forwardToEvtMgr(handlers[1]));
    EXPECT_FALSE(application.publish(event));
    EXPECT_TRUE(application.start()) << "again; its destructor stops it";
}

// Each allocation fails once.
TEST(Application, FailsCleanlyAtEachAllocation) {
    const auto handler = std::make_shared<CTestHandler>();
    bool done = false;
    for (int number = 1; !done; ++number) {
        const int before = handler->miHandled;
        const auto event = std::make_shared<CTestEvent>();
        CApplication application("Test");
        support::countAllocations(number);
        try {
            done = application.start() && application.subscribe(EVENT, handler) &&
                   application.publish(event);
        } catch (const std::bad_alloc&) {
        }
        EXPECT_EQ(done, support::allocations() < number);
        support::countAllocations();
        EXPECT_TRUE(support::waitUntil([&] { return event.use_count() == 1; }));
        EXPECT_EQ(before + done, handler->miHandled);
    }
}

}  // namespace
