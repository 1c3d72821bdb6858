#include "logging/log_sink_slog.h"

#include <cstdio>

namespace core_logger {

void CLogSinkSlog::handleEvent(const std::shared_ptr<core::CEvent>& event) {
    std::printf("CLogSinkSlog:: Event not handled %u\n", event->getEventId());
}

}  // namespace core_logger
