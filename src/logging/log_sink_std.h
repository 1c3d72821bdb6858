// The sink kind that stands for standard output.
#ifndef LOGGING_LOG_SINK_STD_H
#define LOGGING_LOG_SINK_STD_H

#include "logging/log_sink.h"

namespace core_logger {

// Takes every event and prints nothing: standard output belongs to the fixed diagnostic lines.
class CLogSinkStd : public CLogSink {
  public:
    using CLogSink::CLogSink;

    void handleEvent(const std::shared_ptr<core::CEvent>& /*event*/) override {}
};

}  // namespace core_logger

#endif
