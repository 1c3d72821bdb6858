// The sink that writes the maintenance log files.
#ifndef LOGGING_LOG_SINK_FILE_H
#define LOGGING_LOG_SINK_FILE_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "logging/log_sink.h"
#include "storage/locked_file.h"

namespace core_logger {

class CLogEvent;
class CLogger;

// Appends one line per event to "<directory>/<logger's name>_YYYYMMDD.log" with the local date of
// initialise(). It does not start another file at midnight. Each line is in storage before the sink
// takes the next event. Each line begins with a line feed and ends without one.
//
// The worker thread writes the lines and the logger's controlling thread calls everything else; the
// sink's mutex serialises them. The logger must outlive the sink and its events.
class CLogSinkFile : public CLogSink {
  public:
    CLogSinkFile(CLogger& logger, std::shared_ptr<core_utils::CWorkQueue> workQueue);

    // Writes the event's line, cut to 256 characters. Ignores events of other kinds. If the write
    // fails, prints a message and closes the file. A line with which the file would reach its
    // maximum size is not written: it counts as failed and sets the logger's level to LEVEL_OFF.
    void handleEvent(const std::shared_ptr<core::CEvent>& event) override;

    // Creates the directory with its parents, opens the file and appends a header line. `maxSize`
    // is in bytes. Returns false if the path is empty or longer than 256 characters or the file
    // cannot be opened; in the latter case it prints the file's path.
    bool initialise(const std::string& directory, std::uint32_t maxSize) override;

    // Returns true on success and if no file is open; otherwise prints a message.
    bool close() override;

    // Deletes old files of the log directory. Only names longer than 12 characters count, and only
    // their last 12 ("YYYYMMDD.log"): a file is old if they sort before the local date of `days`
    // days ago. `deleted` counts the deleted files, `failed` those that could not be deleted, for
    // example directories. The open file counts like the others: once it is old, it is deleted
    // and its further lines are lost. Returns false if no file is open or the clock shows less than
    // `days` days since 1970.
    bool houseKeep(int days, unsigned int& deleted, unsigned int& failed);

  private:
    std::string filePath() const;
    std::string searchPattern() const;
    std::vector<std::string> filesBefore(const std::string& cutOffDate) const;
    bool writeEvent(const CLogEvent& event);
    bool writeText(std::string_view text, const char* failure);

    CLogger& mLogger;
    bool mbIsInitialised = false;  // true while the file is open
    core_utils::CLockedFile mFile;
    std::mutex mMutex;
    std::uint32_t muiMaxSize = 0;  // bytes
    std::string mstrDirectory;
};

}  // namespace core_logger

#endif
