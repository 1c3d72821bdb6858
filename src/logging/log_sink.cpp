#include "logging/log_sink.h"

#include <cstdio>

namespace core_logger {

void CLogSink::handleEvent(const std::shared_ptr<core::CEvent>& event) {
    std::printf("CLogSink:: Event not found %u\n", event->getEventId());
}

bool CLogSink::initialise(const std::string& /*directory*/, std::uint32_t /*parameter*/) {
    std::puts("CLogSink::initialise");
    return true;
}

void CLogSink::subscribeTo() {
    std::puts("CLogSink::subscribeTo TBD ");
}

}  // namespace core_logger
