// The maintenance logger of the process, from the posted event to its one sink.
#ifndef LOGGING_LOGGER_H
#define LOGGING_LOGGER_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "framework/application.h"
#include "logging/log_event.h"
#include "logging/log_sink.h"

namespace core_logger {

// A singleton that is never destroyed: the worker thread may write while the process ends. Lines
// still queued then, or at stop(), are lost.
//
// getInstance(), log() and the level serve any thread; the rest belongs to one controlling
// thread, in the order start(), setLevel(), addLogSink(), stop(). Until then the level is
// LEVEL_OFF. Clients compare it themselves before they build an event: log() does not.
class CLogger : public app::CApplication {
  public:
    static constexpr int SINK_FILE = 1;
    static constexpr int SINK_SLOG = 2;
    static constexpr int SINK_STD = 3;

    // Null only if the logger could not be made; the next call tries again.
    static CLogger* getInstance();

    // Events of at least this level are wanted.
    void setLevel(std::uint32_t level) { muiLevel = level; }
    std::uint32_t getLevel() const { return muiLevel; }

    // Starts the worker and keeps what the sinks will be initialised with: the log directory, of
    // which 255 characters count, and the file sink's maximum size in bytes. A sink added before
    // has to be added again.
    bool start(const std::string& directory, std::uint32_t parameter);

    // Joins the worker, then closes the sink. Always false, as the stop of the application is.
    bool stop();

    // Puts a new sink of the kind in the place of the present one. False, with a message: an
    // unknown kind leaves things as they were; a sink that cannot be initialised or subscribed
    // has taken the place, but gets no events.
    bool addLogSink(int kind);

    // False, with a message, if there is no sink.
    bool removeLogSink();

    // Takes the event over, from any thread and without waiting for its line to be written.
    // True if it was queued for the sink; otherwise it is gone.
    bool log(CLogEvent* event);

    // Deletes log files older than `days`. False, mostly with a message, if there is no file
    // sink with an open file.
    bool houseKeep(int days);

    // Not available.
    void getActiveModuleList();

  protected:
    CLogger();
    ~CLogger() override;

    std::shared_ptr<core_utils::CWorkQueue> createWorkQueue() override;

    static std::atomic<CLogger*> mpInstance;
    static std::mutex mLoggerInstanceMutex;

  private:
    std::shared_ptr<CLogSink> createSink(int kind);

    int miSinkKind = 0;
    std::atomic<std::uint32_t> muiLevel{LEVEL_OFF};
    std::shared_ptr<CLogSink> mpLogSink;
    std::string mstrDirectory;
    std::uint32_t muiSinkParameter = 0;
};

}  // namespace core_logger

#endif
