// The maintenance logger of the process. It delivers log events to its one sink.
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

// A singleton that is never destroyed, because the worker thread may write while the process ends.
// Events that are still queued at stop() or at the end of the process are lost.
//
// Any thread may call getInstance(), log(), setLevel() and getLevel(). One controlling thread calls
// the rest: start(), then addLogSink(), at the end stop(). The level is LEVEL_OFF at first. A
// client must compare the level before it builds an event, because log() does not.
class CLogger : public app::CApplication {
  public:
    static constexpr int SINK_FILE = 1;
    static constexpr int SINK_SLOG = 2;
    static constexpr int SINK_STD = 3;

    // Creates the logger on the first call. Returns null if there is no memory for it; the next
    // call then tries again.
    static CLogger* getInstance();

    // Clients log the events of this level and of all higher ones.
    void setLevel(std::uint32_t level) { muiLevel = level; }
    std::uint32_t getLevel() const { return muiLevel; }

    // Starts the worker. Stores the parameters of later addLogSink() calls: the log directory (only
    // its first 255 characters) and the file sink's maximum size in bytes. A sink from before an
    // earlier start() must be added again. Returns false and prints a message on failure.
    bool start(const std::string& directory, std::uint32_t parameter);

    // Joins the worker, then closes the sink. Always returns false, as CApplication::stop() does.
    bool stop();

    // Replaces the current sink by a new one of `kind`. Returns false and prints a message on
    // failure: an unknown kind changes nothing; a sink that cannot be initialised or subscribed
    // replaces the current one all the same, but gets no events.
    bool addLogSink(int kind);

    // Drops the sink. Returns false and prints a message if there is none.
    bool removeLogSink();

    // Takes ownership of the event and queues it for the sink; never waits for file output. Returns
    // false if it could not be queued; the event is then deleted.
    bool log(CLogEvent* event);

    // Deletes log files older than `days` days, see CLogSinkFile::houseKeep(). Returns false if
    // there is no file sink with an open file.
    bool houseKeep(int days);

    // Not implemented: prints a message.
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
