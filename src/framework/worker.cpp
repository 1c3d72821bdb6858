#include "framework/worker.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <thread>
#include <utility>

namespace core_utils {

CWorker::CWorker(std::shared_ptr<CWorkQueue> queue, std::uint32_t pollPeriodMicros)
    : mpWorkQueue(std::move(queue)), muiPollPeriod(pollPeriodMicros) {}

bool CWorker::start() {
    if (mbStarted) {
        std::printf("thread alread started \n");
        return false;
    }
    // A thread that ended after requestStop() alone is not joined yet.
    CAbsWorkerThread::stop();
    mbStopRequested = false;
    mbStarted = true;
    try {
        CAbsWorkerThread::start();
    } catch (const std::exception&) {
        mbStarted = false;
    }
    return mbStarted;
}

bool CWorker::stop() {
    CAbsWorkerThread::stop();
    return false;
}

void CWorker::requestStop() {
    mbStopRequested = true;
}

void CWorker::run() {
    while (!mbStopRequested) {
        executeNext();
        std::this_thread::sleep_for(std::chrono::microseconds(muiPollPeriod));
    }
    mbStarted = false;
}

void CWorker::executeNext() {
    IWorkItem* next = nullptr;
    if (!mpWorkQueue->popWork(next)) return;
    const std::unique_ptr<IWorkItem> item(next);
    item->execute();
}

}  // namespace core_utils
