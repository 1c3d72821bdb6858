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
    std::vector<int> mNumbers;
    std::thread::id mThread;
    std::atomic<int> miHandled{0};
};

struct CTestApplication : CApplication {
    using CApplication::CApplication;
    std::shared_ptr<core_utils::CWorker> createWorker() override {
        return mpOwnWorker = CApplication::createWorker();
    }
    std::shared_ptr<core_utils::CWorker> mpOwnWorker;
};

// How many deliveries are in a queue that no worker serves.
int drain(CWorkQueue& queue) {
    int items = 0;
    for (core_utils::IWorkItem* item = nullptr; queue.popWork(item); delete item)
        ++items;
    return items;
}

TEST(EventManager, KeepsATableAndDeletesWhatAQueueRefuses) {
    const auto queue = std::make_shared<CWorkQueue>("default");
    const auto fullQueue = std::make_shared<CWorkQueue>("full");
    fullQueue->setMaxWorkLoad(0);
    CEvtMgr manager(queue);
    const auto one = std::make_shared<CTestHandler>();
    const auto event = std::make_shared<CTestEvent>();
    const auto delivered = [&] {
        EXPECT_FALSE(manager.publish(event));
        const int items = drain(*queue);
        EXPECT_EQ(1, event.use_count()) << "nothing is left of a refused item";
        return items;
    };
    EXPECT_FALSE(manager.publish(nullptr));
    EXPECT_FALSE(manager.subscribe(EVENT, nullptr));
    EXPECT_FALSE(manager.unsubscribe(EVENT, one)) << "an empty table";
    EXPECT_EQ(0, delivered()) << "no subscriber";
    EXPECT_TRUE(manager.subscribe(EVENT, std::make_shared<CTestHandler>(fullQueue)));
    for (const std::uint32_t id : {EVENT, EVENT, EVENT + 1})
        EXPECT_TRUE(manager.subscribe(id, one));
    EXPECT_EQ(2, delivered()) << "one for each entry, also after a refusal";
    EXPECT_TRUE(manager.publish(event, queue)) << "every item to the queue that is given";
    EXPECT_EQ(3, drain(*queue));
    EXPECT_TRUE(manager.unsubscribe(EVENT, one)) << "both entries, of this event alone";
    EXPECT_TRUE(manager.unsubscribeAll(one));
    EXPECT_FALSE(manager.unsubscribe(EVENT + 1, one));
    EXPECT_FALSE(manager.unsubscribeAll(one));
}

TEST(Application, DeliversBetweenStartAndStopOnlyToEachHandlerOnTheThreadOfItsQueue) {
    const auto ownQueue = std::make_shared<CWorkQueue>("own");
    const auto first = std::make_shared<CTestHandler>();
    const auto second = std::make_shared<CTestHandler>(ownQueue);
    const auto event = std::make_shared<CTestEvent>();
    CTestApplication application("Test");
    EXPECT_FALSE(application.subscribe(EVENT, first));
    EXPECT_FALSE(application.publish(event));
    EXPECT_FALSE(application.unsubscribe(EVENT, first));
    EXPECT_FALSE(application.forwardToEvtMgr(first));
    EXPECT_EQ(" !!!!!!!!!!!!!!!!! WORKQUE NOT READY !!!!!!!!!!!!!!!!! \n",
              printedOnStderrBy([&] { EXPECT_EQ(nullptr, application.getWorkQueue()); }));
    EXPECT_EQ("CApplication: start Test\n",
              printedOnStderrBy([&] { EXPECT_TRUE(application.start()); }));
    EXPECT_TRUE(application.subscribe(EVENT, first));
    EXPECT_TRUE(application.subscribe(EVENT, second));
    core_utils::CWorker ownWorker(ownQueue, 1);
    ASSERT_TRUE(ownWorker.start());
    std::vector<int> numbers(200);
    std::iota(numbers.begin(), numbers.end(), 0);
    for (const int number : numbers)
        EXPECT_TRUE(application.publish(std::make_shared<CTestEvent>(number)));
    for (const auto& handler : {first, second}) {
        ASSERT_TRUE(waitUntil([&] { return handler->miHandled == 200; }));
        EXPECT_EQ(numbers, handler->mNumbers);
        EXPECT_NE(std::this_thread::get_id(), handler->mThread);
        EXPECT_TRUE(application.forwardToEvtMgr(handler));
    }
    EXPECT_NE(first->mThread, second->mThread);
    EXPECT_FALSE(application.publish(event));
    EXPECT_EQ("CApplication end: Test\n",
              printedOnStderrBy([&] { EXPECT_FALSE(application.stop()); }));
    const core_utils::CAbsWorkerThread& thread = *application.mpOwnWorker;
    EXPECT_TRUE(thread.isStopped());
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
