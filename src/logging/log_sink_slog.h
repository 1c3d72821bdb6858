// The sink kind that stands for the system log.
#ifndef LOGGING_LOG_SINK_SLOG_H
#define LOGGING_LOG_SINK_SLOG_H

#include "logging/log_sink.h"

namespace core_logger {

// Reaches no system log: it says of every event, on standard output, that it is not handled.
class CLogSinkSlog : public CLogSink {
  public:
    using CLogSink::CLogSink;

    void handleEvent(const std::shared_ptr<core::CEvent>& event) override;
};

}  // namespace core_logger

#endif
