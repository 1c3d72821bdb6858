// The event that becomes one line of the maintenance log.
#ifndef LOGGING_LOG_EVENT_H
#define LOGGING_LOG_EVENT_H

#include <cstdint>
#include <memory>

#include "framework/event.h"

namespace core_logger {

// The levels of an event. LEVEL_OFF is a level of the logger only.
constexpr std::uint32_t LEVEL_DEBUG = 1;
constexpr std::uint32_t LEVEL_INFO = 2;
constexpr std::uint32_t LEVEL_WARNING = 3;
constexpr std::uint32_t LEVEL_ERROR = 4;
constexpr std::uint32_t LEVEL_OFF = 5;

// Copies its texts into fixed buffers and keeps the local time of its construction.
class CLogEvent : public core::CEvent {
  public:
    static constexpr std::uint32_t EVENT_ID = 0x80000001;

    // `line` is the caller's __LINE__. Keeps the first 31 characters of `module` and the first 255
    // of `message`. A null pointer counts as an empty text.
    CLogEvent(int line, unsigned int level, const char* module, const char* message);

    std::unique_ptr<core::CEvent> clone() const override;

    int getLine() const { return miLine; }
    std::uint32_t getLevel() const { return muiLevel; }
    const char* getModule() const { return mszModule; }
    const char* getMessage() const { return mszMessage; }

    // Local time, "05/03/2024 14:07:09.42" for 42 milliseconds: no zeros before them.
    const char* getTimestamp() const { return mszTimestamp; }

  private:
    int miLine;
    std::uint32_t muiLevel;
    char mszModule[32];
    char mszMessage[256];
    char mszTimestamp[25];
};

}  // namespace core_logger

#endif
