#include "framework/application.h"

#include <cstdio>
#include <exception>
#include <utility>

namespace app {

namespace {

constexpr std::uint32_t POLL_PERIOD = 1;  // microseconds

// Null, and `failure` printed, if it cannot be made.
template <typename Piece, typename... Arguments>
std::shared_ptr<Piece> create(const char* failure, Arguments&&... arguments) {
    try {
        return std::make_shared<Piece>(std::forward<Arguments>(arguments)...);
    } catch (const std::exception&) {
        std::puts(failure);
        return nullptr;
    }
}

}  // namespace

CApplication::CApplication(std::string name) : mstrName(std::move(name)) {}

CApplication::~CApplication() {
    stopWorker();
}

bool CApplication::publish(std::shared_ptr<core::CEvent> event) {
    const auto evtMgr = getEvtMgr();
    return evtMgr != nullptr && evtMgr->publish(std::move(event));
}

void CApplication::registerHandler(std::shared_ptr<core::IEvtHandler> handler) {
    mHandlers.push_back(std::move(handler));
}

bool CApplication::subscribe(std::uint32_t eventId, std::shared_ptr<core::IEvtHandler> handler) {
    const auto evtMgr = getEvtMgr();
    return evtMgr != nullptr && evtMgr->subscribe(eventId, std::move(handler));
}

bool CApplication::unsubscribe(std::uint32_t eventId, std::shared_ptr<core::IEvtHandler> handler) {
    const auto evtMgr = getEvtMgr();
    return evtMgr != nullptr && evtMgr->unsubscribe(eventId, std::move(handler));
}

bool CApplication::forwardToEvtMgr(std::shared_ptr<core::IEvtHandler> handler) {
    const auto evtMgr = getEvtMgr();
    return evtMgr != nullptr && evtMgr->unsubscribeAll(std::move(handler));
}

bool CApplication::start() {
    std::fprintf(stderr, "CApplication: start %s\n", mstrName.c_str());
    std::atomic_store(&mpWorkQueue, createWorkQueue());
    std::atomic_store(&mpEvtMgr, createEvtMgr());
    if (getEvtMgr() == nullptr) {
        std::puts("CApplication: start mpEvtMgr creation failed,");
        return false;
    }
    mpWorker = createWorker();
    if (mpWorker == nullptr) {
        std::puts("CApplication: start mpWorker creation failed");
        return false;
    }
    if (!mpWorker->start()) {
        std::puts("CApplication: start CWorker start failed");
        return false;
    }
    return true;
}

bool CApplication::stop() {
    std::fprintf(stderr, "CApplication end: %s\n", mstrName.c_str());
    return stopWorker();
}

std::shared_ptr<core_utils::CWorkQueue> CApplication::getWorkQueue() const {
    const auto queue = std::atomic_load(&mpWorkQueue);
    if (queue == nullptr) {
        std::fputs(" !!!!!!!!!!!!!!!!! WORKQUE NOT READY !!!!!!!!!!!!!!!!! \n", stderr);
    }
    return queue;
}

std::shared_ptr<core_utils::CWorkQueue> CApplication::createWorkQueue() {
    return create<core_utils::CWorkQueue>("CApplication: createWorkQueue failed", "DEFAULT");
}

std::shared_ptr<core::CEvtMgr> CApplication::createEvtMgr() {
    if (mpWorkQueue == nullptr) return nullptr;
    return create<core::CEvtMgr>("CApplication: createEvtMgr failed", mpWorkQueue);
}

std::shared_ptr<core_utils::CWorker> CApplication::createWorker() {
    if (mpWorkQueue == nullptr) return nullptr;
    return create<core_utils::CWorker>("CApplication: createWorker failed", mpWorkQueue,
                                       POLL_PERIOD);
}

bool CApplication::stopWorker() {
    return mpWorker != nullptr && mpWorker->stop();
}

std::shared_ptr<core::CEvtMgr> CApplication::getEvtMgr() const {
    return std::atomic_load(&mpEvtMgr);
}

}  // namespace app
