// The interface of the event manager for publishers and subscribers.
#ifndef FRAMEWORK_EVT_PUBLISHER_H
#define FRAMEWORK_EVT_PUBLISHER_H

#include <cstdint>
#include <memory>

#include "framework/evt_handler.h"

namespace core {

// Any thread may call any operation. Of a handler they call getWorkQueue() only.
class IEvtPublisher {
  public:
    virtual ~IEvtPublisher() = default;

    // Queues one delivery per subscription, on the handler's own queue if it has one, otherwise on
    // the default queue. Returns true if all were queued. Returns false if nobody is subscribed.
    virtual bool publish(std::shared_ptr<CEvent> event) = 0;

    // As above, but puts all deliveries on `queue` unless it is null.
    virtual bool publish(std::shared_ptr<CEvent> event,
                         std::shared_ptr<core_utils::CWorkQueue> queue) = 0;

    // Adds one subscription. A handler with two subscriptions gets every event twice. Returns false
    // for a null handler.
    virtual bool subscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) = 0;

    // Removes the handler's subscriptions to one event identifier, or to all. Returns true if there
    // was at least one.
    virtual bool unsubscribe(std::uint32_t eventId, std::shared_ptr<IEvtHandler> handler) = 0;
    virtual bool unsubscribeAll(std::shared_ptr<IEvtHandler> handler) = 0;
};

}  // namespace core

#endif
