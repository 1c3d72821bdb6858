// The base of all events that the event manager delivers.
#ifndef FRAMEWORK_EVENT_H
#define FRAMEWORK_EVENT_H

#include <cstdint>
#include <memory>

namespace core {

// All handlers of an event share it, possibly on several threads. Nobody may change an event after
// it was published.
class CEvent {
  public:
    CEvent(std::uint32_t eventId, std::uint32_t type) : muiEventId(eventId), muiType(type) {}
    virtual ~CEvent() = default;

    // Returns a copy, or null if there is no memory for it.
    virtual std::unique_ptr<CEvent> clone() const = 0;

    std::uint32_t getEventId() const { return muiEventId; }

  protected:
    CEvent(const CEvent&) = default;
    CEvent& operator=(const CEvent&) = default;

    std::uint32_t muiEventId;
    std::uint32_t muiType;
    std::uint32_t muiReserved = 0;
};

}  // namespace core

#endif
