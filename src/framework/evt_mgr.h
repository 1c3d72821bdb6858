// The publish/subscribe hub of one application.
#ifndef FRAMEWORK_EVT_MGR_H
#define FRAMEWORK_EVT_MGR_H

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/evt_publisher.h"

namespace core {

// Queues one work item per subscription for each published event, so a publisher never runs a
// handler. Shares ownership of the subscribed handlers and of the default queue. Its mutex guards
// the subscription table and is not held while items are queued.
class CEvtMgr : public IEvtPublisher {
  public:
    explicit CEvtMgr(std::shared_ptr<core_utils::CWorkQueue> workQueue);

    bool publish(std::shared_ptr<CEvent> event) override;
    bool publish(std::shared_ptr<CEvent> event,
                 std::shared_ptr<core_utils::CWorkQueue> queue) override;
    bool subscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) override;
    bool unsubscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) override;
    bool unsubscribeAll(std::shared_ptr<IEvtHandler> handler) override;

  private:
    using Table = std::multimap<std::uint32_t, std::shared_ptr<IEvtHandler>>;

    std::vector<std::shared_ptr<IEvtHandler>> subscribersOf(std::uint32_t eventId);
    bool eraseFrom(Table::iterator first, Table::iterator last, const IEvtHandler* handler);

    Table mMapHandlers;
    std::mutex mMutex;
    std::shared_ptr<core_utils::CWorkQueue> mpWorkQueue;
};

}  // namespace core

#endif
