// The base of a service inside the process: a queue, an event manager on it and a worker.
#ifndef FRAMEWORK_APPLICATION_H
#define FRAMEWORK_APPLICATION_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/evt_mgr.h"
#include "framework/work_queue.h"
#include "framework/worker.h"

namespace app {

// Owns the three; start() makes them anew and destruction joins the worker. What is still queued
// at that moment is not delivered.
//
// Any thread may call publish(), subscribe(), unsubscribe(), forwardToEvtMgr() and getWorkQueue(),
// which fail before start(). All else, destruction too, belongs to one controlling thread, which
// is not the worker's.
class CApplication {
  public:
    explicit CApplication(std::string name);
    CApplication(const CApplication&) = delete;
    CApplication& operator=(const CApplication&) = delete;
    virtual ~CApplication();

    // Forwarded to the event manager; core::IEvtPublisher says what they return.
    virtual bool publish(std::shared_ptr<core::CEvent> event);
    // Keeps the handler alive as long as the application; it is not subscribed by that.
    virtual void registerHandler(std::shared_ptr<core::IEvtHandler> handler);
    virtual bool subscribe(std::uint32_t eventId, std::shared_ptr<core::IEvtHandler> handler);
    virtual bool unsubscribe(std::uint32_t eventId, std::shared_ptr<core::IEvtHandler> handler);
    // Removes every subscription of the handler.
    virtual bool forwardToEvtMgr(std::shared_ptr<core::IEvtHandler> handler);

    // Creates queue, event manager and worker, then starts the worker. Earlier subscriptions go
    // with the earlier event manager. False, with a message, if a piece could not be had.
    bool start();

    // Joins the worker and returns the result of its stop(), which is always false.
    bool stop();

    // Null, with a message, before start().
    std::shared_ptr<core_utils::CWorkQueue> getWorkQueue() const;

    void setParameter(std::uint32_t parameter) { muiParameter = parameter; }
    std::uint32_t getParameter() const { return muiParameter; }
    const std::string& getName() const { return mstrName; }

  protected:
    // The steps of start(), for a derived application to replace. Null on failure.
    virtual std::shared_ptr<core_utils::CWorkQueue> createWorkQueue();
    virtual std::shared_ptr<core::CEvtMgr> createEvtMgr();
    virtual std::shared_ptr<core_utils::CWorker> createWorker();

    // Silent stop(), for the destructor of a derived class whose members its handlers use.
    bool stopWorker();

  private:
    std::shared_ptr<core::CEvtMgr> getEvtMgr() const;

    std::string mstrName;
    std::uint32_t muiParameter = 0;
    // These two are replaced while other threads publish: access is atomic.
    std::shared_ptr<core_utils::CWorkQueue> mpWorkQueue;
    std::shared_ptr<core::CEvtMgr> mpEvtMgr;
    std::shared_ptr<core_utils::CWorker> mpWorker;
    std::vector<std::shared_ptr<core::IEvtHandler>> mHandlers;
};

}  // namespace app

#endif
