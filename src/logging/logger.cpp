#include "logging/logger.h"

#include <cstdio>
#include <exception>
#include <utility>

#include "logging/log_sink_file.h"
#include "logging/log_sink_slog.h"
#include "logging/log_sink_std.h"

namespace core_logger {

namespace {
constexpr std::size_t MAX_DIRECTORY_LENGTH = 255;
constexpr std::int32_t MAX_QUEUED_EVENTS = 20000;
constexpr std::uint32_t APPLICATION_PARAMETER = 50;
}  // namespace

std::atomic<CLogger*> CLogger::mpInstance{nullptr};
std::mutex CLogger::mLoggerInstanceMutex;

CLogger* CLogger::getInstance() {
    if (CLogger* instance = mpInstance) return instance;
    const std::lock_guard<std::mutex> lock(mLoggerInstanceMutex);
    if (mpInstance == nullptr) {
        try {
            mpInstance = new CLogger;  // never freed, see the class comment
        } catch (const std::exception&) {
        }
    }
    return mpInstance;
}

CLogger::CLogger() : CApplication("MaintLogger") {}

CLogger::~CLogger() {
    stopWorker();
}

bool CLogger::start(const std::string& directory, std::uint32_t parameter) {
    setParameter(APPLICATION_PARAMETER);
    if (!CApplication::start()) {
        std::fputs("CLogger: CApplication start failed \n", stderr);
        return false;
    }
    mstrDirectory = directory.substr(0, MAX_DIRECTORY_LENGTH);
    muiSinkParameter = parameter;
    return true;
}

bool CLogger::stop() {
    const bool stopped = CApplication::stop();
    const bool closed = mpLogSink != nullptr && mpLogSink->close();
    return stopped && closed;
}

bool CLogger::addLogSink(int kind) {
    const auto sink = createSink(kind);
    if (sink != nullptr) {
        const auto previous = std::exchange(mpLogSink, sink);
        unsubscribe(CLogEvent::EVENT_ID, previous);
        if (sink->initialise(mstrDirectory, muiSinkParameter) &&
            subscribe(CLogEvent::EVENT_ID, sink)) {
            miSinkKind = kind;
            return true;
        }
    }
    std::puts("CLogger: addLogSink failed ");
    return false;
}

bool CLogger::removeLogSink() {
    if (mpLogSink == nullptr) {
        std::puts("CLogger: removeLogSink failed ");
        return false;
    }
    unsubscribe(CLogEvent::EVENT_ID, mpLogSink);
    // The kind stays, so houseKeep() prints another message than before the first addLogSink().
    mpLogSink = nullptr;
    return true;
}

bool CLogger::log(CLogEvent* event) {
    const std::shared_ptr<core::CEvent> owned(event);
    return publish(owned);
}

bool CLogger::houseKeep(int days) {
    if (miSinkKind != SINK_FILE) {
        std::puts("house keep not applicable ");
        return false;
    }
    if (mpLogSink == nullptr) {
        std::puts("mpLogSink empy ");
        return false;
    }
    const auto fileSink = std::dynamic_pointer_cast<CLogSinkFile>(mpLogSink);
    if (fileSink == nullptr) {
        std::puts("empty pointer when house keeping ");
        return false;
    }
    unsigned int deleted = 0;
    unsigned int failed = 0;
    return fileSink->houseKeep(days, deleted, failed);
}

void CLogger::getActiveModuleList() {
    std::fputs("CLogger: getActiveModuleList TBD \n", stderr);
}

std::shared_ptr<core_utils::CWorkQueue> CLogger::createWorkQueue() {
    try {
        auto queue = std::make_shared<core_utils::CWorkQueue>("DEFAULT");
        queue->setMaxWorkLoad(MAX_QUEUED_EVENTS);
        return queue;
    } catch (const std::exception&) {
        std::puts("CLogger: createWorkQueue failed");
        return nullptr;
    }
}

std::shared_ptr<CLogSink> CLogger::createSink(int kind) {
    switch (kind) {
        case SINK_FILE:
            return std::make_shared<CLogSinkFile>(*this, getWorkQueue());
        case SINK_SLOG:
            return std::make_shared<CLogSinkSlog>(getWorkQueue());
        case SINK_STD:
            return std::make_shared<CLogSinkStd>(getWorkQueue());
        default:
            return nullptr;
    }
}

}  // namespace core_logger
