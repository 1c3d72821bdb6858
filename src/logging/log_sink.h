// The base of the three kinds of log sink.
#ifndef LOGGING_LOG_SINK_H
#define LOGGING_LOG_SINK_H

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "framework/evt_handler.h"

namespace core_logger {

// The logger and all queued deliveries share ownership of a sink, so the worker thread may destroy
// it. handleEvent() runs on the worker thread of the sink's queue and getWorkQueue() on any thread
// that logs. The logger's controlling thread calls all other operations.
class CLogSink : public core::IEvtHandler {
  public:
    explicit CLogSink(std::shared_ptr<core_utils::CWorkQueue> workQueue)
        : mpWorkQueue(std::move(workQueue)) {}

    // Prints the event's identifier; a derived sink writes the event somewhere.
    void handleEvent(const std::shared_ptr<core::CEvent>& event) override;

    std::shared_ptr<core_utils::CWorkQueue> getWorkQueue() override { return mpWorkQueue; }

    // Prepares the sink for events. Each kind of sink gives `parameter` a meaning of its own.
    // Returns true on success.
    virtual bool initialise(const std::string& directory, std::uint32_t parameter);

    // Returns true on success.
    virtual bool close() { return true; }

    // Not implemented: the logger subscribes its sink itself.
    void subscribeTo();

  private:
    std::shared_ptr<core_utils::CWorkQueue> mpWorkQueue;
};

}  // namespace core_logger

#endif
