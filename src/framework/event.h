// What travels through the event manager.
#ifndef FRAMEWORK_EVENT_H
#define FRAMEWORK_EVENT_H

#include <cstdint>
#include <memory>

namespace core {

// Shared by all handlers that it is delivered to, on several threads perhaps: constant once
// published.
class CEvent {
  public:
    CEvent(std::uint32_t eventId, std::uint32_t type) : muiEventId(eventId), muiType(type) {}
    virtual ~CEvent() = default;

    // Null without memory.
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
