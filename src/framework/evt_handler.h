// The interface of a subscriber of the event manager.
#ifndef FRAMEWORK_EVT_HANDLER_H
#define FRAMEWORK_EVT_HANDLER_H

#include <memory>

#include "framework/event.h"
#include "framework/work_queue.h"

namespace core {

// The event manager and all queued deliveries share ownership of a handler. A delivery that was
// queued before the handler was unsubscribed still calls it.
class IEvtHandler {
  public:
    // Called on the worker thread of the handler's queue, for one event at a time, in the order in
    // which the events were published. Must not throw.
    virtual void handleEvent(const std::shared_ptr<CEvent>& event) = 0;

    virtual ~IEvtHandler() = default;

    // Returns the queue for this handler's events, or null for the event manager's default queue.
    // Called on the publisher's thread.
    virtual std::shared_ptr<core_utils::CWorkQueue> getWorkQueue() { return nullptr; }
};

}  // namespace core

#endif
