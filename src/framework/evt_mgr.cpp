#include "framework/evt_mgr.h"

#include <cstdio>
#include <exception>
#include <iterator>
#include <utility>

#include "framework/evt_work_item.h"

namespace core {

namespace {

// Queues one delivery. An item that the queue refuses is deleted here.
bool deliver(const std::shared_ptr<IEvtHandler>& handler, const std::shared_ptr<CEvent>& event,
             core_utils::CWorkQueue* queue) {
    std::unique_ptr<CEvtWorkItem> item;
    try {
        item = std::make_unique<CEvtWorkItem>(handler, event);
    } catch (const std::exception&) {
        std::fputs("CEvtMgr:: publish create CEvtWorkItem caught ex \n", stderr);
    }
    if (item == nullptr) {
        std::printf("CEvtMgr::publish - create workitem failed %u\n", event->getEventId());
        return false;
    }
    if (queue == nullptr || !queue->pushWork(item.get())) return false;
    static_cast<void>(item.release());
    return true;
}

}  // namespace

CEvtMgr::CEvtMgr(std::shared_ptr<core_utils::CWorkQueue> workQueue)
    : mpWorkQueue(std::move(workQueue)) {}

bool CEvtMgr::publish(std::shared_ptr<CEvent> event) {
    return publish(std::move(event), nullptr);
}

bool CEvtMgr::publish(std::shared_ptr<CEvent> event,
                      std::shared_ptr<core_utils::CWorkQueue> queue) {
    if (event == nullptr) return false;
    const auto handlers = subscribersOf(event->getEventId());
    bool allQueued = !handlers.empty();
    for (const auto& handler : handlers) {
        auto target = queue != nullptr ? queue : handler->getWorkQueue();
        if (target == nullptr) target = mpWorkQueue;
        allQueued = deliver(handler, event, target.get()) && allQueued;
    }
    return allQueued;
}

bool CEvtMgr::subscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) {
    if (handler == nullptr) return false;
    const std::lock_guard lock(mMutex);
    mMapHandlers.emplace(eventId, std::move(handler));
    return true;
}

bool CEvtMgr::unsubscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) {
    const std::lock_guard lock(mMutex);
    const auto [first, last] = mMapHandlers.equal_range(eventId);
    return eraseFrom(first, last, handler.get());
}

bool CEvtMgr::unsubscribeAll(std::shared_ptr<IEvtHandler> handler) {
    const std::lock_guard lock(mMutex);
    return eraseFrom(mMapHandlers.begin(), mMapHandlers.end(), handler.get());
}

std::vector<std::shared_ptr<IEvtHandler>> CEvtMgr::subscribersOf(std::uint32_t eventId) {
    const std::lock_guard lock(mMutex);
    std::vector<std::shared_ptr<IEvtHandler>> handlers;
    const auto [first, last] = mMapHandlers.equal_range(eventId);
    for (auto entry = first; entry != last; ++entry)
        handlers.push_back(entry->second);
    return handlers;
}

bool CEvtMgr::eraseFrom(Table::iterator first, Table::iterator last, const IEvtHandler* handler) {
    bool erased = false;
    while (first != last) {
        const bool matches = first->second.get() == handler;
        first = matches ? mMapHandlers.erase(first) : std::next(first);
        erased = erased || matches;
    }
    return erased;
}

}  // namespace core
