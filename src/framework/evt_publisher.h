// What publishers and subscribers see of the event manager.
#ifndef FRAMEWORK_EVT_PUBLISHER_H
#define FRAMEWORK_EVT_PUBLISHER_H

#include <cstdint>
#include <memory>

#include "framework/evt_handler.h"

namespace core {

// Any thread may call any operation; none runs handler code other than getWorkQueue().
class IEvtPublisher {
  public:
    virtual ~IEvtPublisher() = default;

    // Queues one delivery per subscription, on the handler's queue or else the default one.
    // True if every one was queued; false also if nobody is subscribed.
    virtual bool publish(std::shared_ptr<CEvent> event) = 0;

    // The same with all deliveries on `queue`; null chooses as above.
    virtual bool publish(std::shared_ptr<CEvent> event,
                         std::shared_ptr<core_utils::CWorkQueue> queue) = 0;

    // Adds one subscription; a handler that has two gets every event twice. False for null.
    virtual bool subscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) = 0;

    // Removes the handler's subscriptions to one identifier, or to all. True if there were any.
    virtual bool unsubscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) = 0;
    virtual bool unsubscribeAll(std::shared_ptr<IEvtHandler> handler) = 0;
};

}  // namespace core

#endif
