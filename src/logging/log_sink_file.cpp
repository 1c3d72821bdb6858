#include "logging/log_sink_file.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <string_view>
#include <utility>

#include "logging/log_event.h"
#include "logging/logger.h"
#include "storage/file_find.h"
#include "storage/file_system.h"

namespace core_logger {

namespace {

using Lock = std::lock_guard<std::mutex>;

constexpr std::size_t MAX_DIRECTORY_LENGTH = 256;
constexpr std::size_t LINE_CAPACITY = 257;
constexpr std::size_t DATED_NAME_LENGTH = std::string_view("YYYYMMDD.log").size();
constexpr std::int64_t SECONDS_PER_DAY = 86400;
constexpr const char* LEVEL_NAMES[] = {"-", "DBG", "INF", "WRN", "ERR"};

const char* nameOf(std::uint32_t level) {
    return level < std::size(LEVEL_NAMES) ? LEVEL_NAMES[level] : LEVEL_NAMES[0];
}

std::string formatLocal(const char* format, time_t when) {
    tm local{};
    localtime_r(&when, &local);
    char text[64];
    return {text, std::strftime(text, sizeof text, format, &local)};
}

// The last component of `path`. The finder puts a "/" behind directories.
std::string_view nameOf(std::string_view path) {
    if (!path.empty() && path.back() == '/') path.remove_suffix(1);
    return path.substr(path.find_last_of('/') + 1);
}

}  // namespace

CLogSinkFile::CLogSinkFile(CLogger& logger, std::shared_ptr<core_utils::CWorkQueue> workQueue)
    : CLogSink(std::move(workQueue)), mLogger(logger) {}

void CLogSinkFile::handleEvent(const std::shared_ptr<core::CEvent>& event) {
    const auto* logEvent = dynamic_cast<const CLogEvent*>(event.get());
    if (logEvent == nullptr || logEvent->getEventId() != CLogEvent::EVENT_ID) return;
    if (!writeEvent(*logEvent)) close();
}

bool CLogSinkFile::initialise(const std::string& directory, std::uint32_t maxSize) {
    if (directory.empty() || directory.size() > MAX_DIRECTORY_LENGTH) return false;
    const Lock lock(mMutex);
    muiMaxSize = maxSize;
    mstrDirectory = directory;
    core_utils::CFileSystem::makeDirectoryPath(directory);
    const std::string path = filePath();
    mbIsInitialised = mFile.open(path.c_str(), "a");
    if (!mbIsInitialised) {
        std::printf("ERROR : CLogger OPEN [%s]\n", path.c_str());
        return false;
    }
    writeText(formatLocal("\n%d/%m/%Y %H:%M:%S : Log Created ", time(nullptr)),
              "ERROR : CLogger WRITE to filen");
    return true;
}

bool CLogSinkFile::close() {
    const Lock lock(mMutex);
    mbIsInitialised = false;
    if (!mFile.isOpen() || mFile.close()) return true;
    std::printf("\nERROR : CLogger close file ");
    std::fflush(stdout);  // the text has no line feed, so line buffering would keep it back
    return false;
}

bool CLogSinkFile::houseKeep(int days, unsigned int& deleted, unsigned int& failed) {
    const Lock lock(mMutex);
    if (!mFile.isOpen()) return false;
    deleted = 0;
    failed = 0;
    const std::int64_t now = time(nullptr);
    const std::int64_t duration = days * SECONDS_PER_DAY;
    if (now < duration) {
        std::puts("raw time < days duration secon per day");
        return false;
    }
    const auto cutOff = static_cast<time_t>(now - duration);
    for (const std::string& path : filesBefore(formatLocal("%Y%m%d", cutOff)))
        ++(core_utils::CFileSystem::deleteFile(path) ? deleted : failed);
    return true;
}

std::string CLogSinkFile::filePath() const {
    return mstrDirectory + "/" + mLogger.getName() + formatLocal("_%Y%m%d.log", time(nullptr));
}

std::string CLogSinkFile::searchPattern() const {
    if (mstrDirectory.find("*.*") != std::string::npos) return mstrDirectory;
    const char last = mstrDirectory.back();
    return mstrDirectory + (last == '/' || last == '\\' ? "*.*" : "/*.*");
}

std::vector<std::string> CLogSinkFile::filesBefore(const std::string& cutOffDate) const {
    std::vector<std::string> paths;
    core_utils::CFileFind finder;
    core_utils::sFoundFile found;
    for (bool more = finder.findFirstFile(searchPattern(), found); more;
         more = finder.findNextFile(found)) {
        const std::string_view name = nameOf(std::string_view(found.szPath));
        if (name.size() <= DATED_NAME_LENGTH) continue;
        if (cutOffDate > name.substr(name.size() - DATED_NAME_LENGTH))
            paths.push_back(found.szPath);
    }
    return paths;
}

bool CLogSinkFile::writeEvent(const CLogEvent& event) {
    const Lock lock(mMutex);
    if (!mbIsInitialised) {
        std::puts("CLogSinkFile::mbIsInitialised false");
        return false;
    }
    char line[LINE_CAPACITY];
    const int length = std::snprintf(line, sizeof line, "\n[%s] :[%s], [%d], [%s], %s",
                                     event.getTimestamp(), event.getModule(), event.getLine(),
                                     nameOf(event.getLevel()), event.getMessage());
    const auto kept = std::min(static_cast<std::size_t>(std::max(length, 0)), sizeof line - 1);
    return writeText({line, kept}, "ERROR : CLogger  WRITE to file");
}

// Allocates nothing: on the worker's thread nobody would catch std::bad_alloc.
bool CLogSinkFile::writeText(std::string_view text, const char* failure) {
    std::int64_t size = 0;
    const bool sized = mFile.getSize(size);
    if (sized && size + static_cast<std::int64_t>(text.size()) >= std::int64_t{muiMaxSize}) {
        std::puts("ERROR : CLogger WRITE to file failure since it reach to max size.");
        mLogger.setLevel(LEVEL_OFF);
        return false;
    }
    if (sized && mFile.writeBlock(text.data(), text.size())) return true;
    std::puts(failure);
    return false;
}

}  // namespace core_logger
