// Where log events go: the base of the three kinds of sink.
#ifndef LOGGING_LOG_SINK_H
#define LOGGING_LOG_SINK_H

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "framework/evt_handler.h"

namespace core_logger {

// Made by the logger, shared with the deliveries under way, so that the last one may destroy it.
// handleEvent() runs on the worker thread of the queue that the sink was given, getWorkQueue() on
// any thread that logs; the other operations are called by the logger's controlling thread.
class CLogSink : public core::IEvtHandler {
  public:
    explicit CLogSink(std::shared_ptr<core_utils::CWorkQueue> workQueue)
        : mpWorkQueue(std::move(workQueue)) {}

    // Prints that there is nothing here to handle the event.
    void handleEvent(const std::shared_ptr<core::CEvent>& event) override;

    std::shared_ptr<core_utils::CWorkQueue> getWorkQueue() override { return mpWorkQueue; }

    // Prepares the sink for events; what `parameter` means is up to the kind. True for success.
    virtual bool initialise(const std::string& directory, std::uint32_t parameter);
    virtual bool close() { return true; }

    // Not available: it is the logger that subscribes its sink.
    void subscribeTo();

  private:
    std::shared_ptr<core_utils::CWorkQueue> mpWorkQueue;
};

}  // namespace core_logger

#endif
