// The sink that writes the maintenance log files.
#ifndef LOGGING_LOG_SINK_FILE_H
#define LOGGING_LOG_SINK_FILE_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "logging/log_sink.h"
#include "storage/locked_file.h"

namespace core_logger {

class CLogEvent;
class CLogger;

// Appends one line per event to "<directory>/<logger's name>_YYYYMMDD.log", the date being that
// of initialise(): the file is not changed at midnight. Each line is on storage before the next
// event is taken. A line begins with its line end, so the file does not end in one.
//
// Lines come from the worker thread, all else from the logger's controlling thread; the sink's
// mutex keeps them apart. Of the logger, which outlives the sink's events, only the name and the
// level are used, and no lock of it is taken.
class CLogSinkFile : public CLogSink {
  public:
    CLogSinkFile(CLogger& logger, std::shared_ptr<core_utils::CWorkQueue> workQueue);

    // Writes the event's line, cut to 256 characters; closes the file if that fails. A line that
    // would fill the file to its maximum size is not written and switches the logger off.
    void handleEvent(const std::shared_ptr<core::CEvent>& event) override;

    // Makes the directory with its parents, opens today's file and writes a header to it. False
    // if the directory's name is empty or longer than 256 characters, or the file cannot be
    // opened. `maxSize` is in bytes.
    bool initialise(const std::string& directory, std::uint32_t maxSize) override;

    // True also if no file is open.
    bool close() override;

    // Deletes the files of the log directory whose name ends in "YYYYMMDD.log", or whatever else
    // is in its last 12 characters, and sorts before the date `days` ago. Counts the deleted ones
    // and those that could not be deleted, directories among them. False if no file is open or
    // the clock has not reached that many days.
    bool houseKeep(int days, unsigned int& deleted, unsigned int& failed);

  private:
    std::string filePath() const;
    std::string searchPattern() const;
    std::vector<std::string> filesBefore(const std::string& cutOffDate) const;
    bool writeEvent(const CLogEvent& event);
    bool writeText(const std::string& text, const char* failure);

    CLogger& mLogger;
    bool mbIsInitialised = false;  // while the file is open
    core_utils::CLockedFile mFile;
    std::mutex mMutex;
    std::uint32_t muiMaxSize = 0;  // bytes
    std::string mstrDirectory;
};

}  // namespace core_logger

#endif
