// The receiving end of the event manager.
#ifndef FRAMEWORK_EVT_HANDLER_H
#define FRAMEWORK_EVT_HANDLER_H

#include <memory>

#include "framework/event.h"
#include "framework/work_queue.h"

namespace core {

// Shared between the event manager and the deliveries under way: a handler can still be called
// for a moment after it was unsubscribed, and lives as long.
class IEvtHandler {
  public:
    // Called on the worker thread of the handler's queue, for one event at a time, in the order
    // of publishing. Must not throw.
    virtual void handleEvent(const std::shared_ptr<CEvent>& event) = 0;

    virtual ~IEvtHandler() = default;

    // The queue that the handler's events go to; null for the event manager's own. Called on
    // the publisher's thread.
    virtual std::shared_ptr<core_utils::CWorkQueue> getWorkQueue() { return nullptr; }
};

}  // namespace core

#endif
