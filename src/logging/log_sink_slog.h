// The log sink of kind "system log".
#ifndef LOGGING_LOG_SINK_SLOG_H
#define LOGGING_LOG_SINK_SLOG_H

#include "logging/log_sink.h"

namespace core_logger {

// Writes nothing to the system log: prints for each event that it is not handled.
class CLogSinkSlog : public CLogSink {
  public:
    using CLogSink::CLogSink;

    void handleEvent(const std::shared_ptr<core::CEvent>& event) override;
};

}  // namespace core_logger

#endif
