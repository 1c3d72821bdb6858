// The log sink of kind "standard output".
#ifndef LOGGING_LOG_SINK_STD_H
#define LOGGING_LOG_SINK_STD_H

#include "logging/log_sink.h"

namespace core_logger {

// Ignores every event: standard output is for the daemon's fixed diagnostic lines only.
class CLogSinkStd : public CLogSink {
  public:
    using CLogSink::CLogSink;

    void handleEvent(const std::shared_ptr<core::CEvent>& /*event*/) override {}
};

}  // namespace core_logger

#endif
