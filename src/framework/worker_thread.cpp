#include "framework/worker_thread.h"

namespace core_utils {

int CAbsWorkerThread::start() {
    if (mpThread != nullptr) return 0;
    mpThread = new std::thread(ThreadFuncCallBack, static_cast<void*>(this));
    return 1;
}

void CAbsWorkerThread::stop() {
    if (mpThread == nullptr) return;
    requestStop();
    if (mpThread->joinable()) mpThread->join();
    delete mpThread;
    mpThread = nullptr;
}

bool CAbsWorkerThread::isStopped() const {
    return mpThread == nullptr || !mpThread->joinable();
}

void* ThreadFuncCallBack(void* worker) {
    static_cast<CAbsWorkerThread*>(worker)->run();
    return nullptr;
}

}  // namespace core_utils
