#include "logging/log_event.h"

#include <cstdio>
#include <ctime>
#include <new>

namespace core_logger {

namespace {

template <std::size_t SIZE>
void copyText(char (&target)[SIZE], const char* text) {
    std::snprintf(target, SIZE, "%s", text != nullptr ? text : "");
}

template <std::size_t SIZE>
void formatNow(char (&target)[SIZE]) {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    const std::size_t length = std::strftime(target, SIZE, "%d/%m/%Y %H:%M:%S", &local);
    const int milliseconds = static_cast<int>(now.tv_nsec / 1000000);
    std::snprintf(target + length, SIZE - length, ".%d", milliseconds);
}

}  // namespace

CLogEvent::CLogEvent(int line, unsigned int level, const char* module, const char* message)
    : CEvent(EVENT_ID, 1), miLine(line), muiLevel(level) {
    copyText(mszModule, module);
    copyText(mszMessage, message);
    formatNow(mszTimestamp);
}

std::unique_ptr<core::CEvent> CLogEvent::clone() const {
    return std::unique_ptr<core::CEvent>(new (std::nothrow) CLogEvent(*this));
}

}  // namespace core_logger
