// The base of a service inside the process: a work queue, an event manager and a worker thread.
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

// Owns the queue, the event manager and the worker. start() creates all three anew. The destructor
// joins the worker; events that are still queued then are never delivered.
//
// Any thread may call publish(), subscribe(), unsubscribe(), forwardToEvtMgr() and getWorkQueue().
// They fail before start(). One controlling thread, which must not be the worker's, calls all other
// operations and destroys the object.
class CApplication {
  public:
    explicit CApplication(std::string name);
    CApplication(const CApplication&) = delete;
    CApplication& operator=(const CApplication&) = delete;
    virtual ~CApplication();

    // Publishes through the event manager. The results of these operations are those of
    // core::IEvtPublisher.
    virtual bool publish(std::shared_ptr<core::CEvent> event);
    // Keeps the handler alive as long as the application. Does not subscribe it.
    virtual void registerHandler(std::shared_ptr<core::IEvtHandler> handler);
    virtual bool subscribe(std::uint32_t eventId, std::shared_ptr<core::IEvtHandler> handler);
    virtual bool unsubscribe(std::uint32_t eventId, std::shared_ptr<core::IEvtHandler> handler);
    // Removes all subscriptions of the handler.
    virtual bool forwardToEvtMgr(std::shared_ptr<core::IEvtHandler> handler);

    // Creates the queue, the event manager and the worker, then starts the worker. A second start()
    // loses all subscriptions, because they belong to the old event manager. Returns false and
    // prints a message if one of the three cannot be created or started.
    bool start();

    // Joins the worker. Returns the result of CWorker::stop(), which is always false.
    bool stop();

    // Before start(), returns null and prints a message.
    std::shared_ptr<core_utils::CWorkQueue> getWorkQueue() const;

    void setParameter(std::uint32_t parameter) { muiParameter = parameter; }
    std::uint32_t getParameter() const { return muiParameter; }
    const std::string& getName() const { return mstrName; }

  protected:
    // The steps of start(). A derived class may override them. They return null on failure.
    virtual std::shared_ptr<core_utils::CWorkQueue> createWorkQueue();
    virtual std::shared_ptr<core::CEvtMgr> createEvtMgr();
    virtual std::shared_ptr<core_utils::CWorker> createWorker();

    // As stop(), but prints nothing. A derived class whose handlers use its members calls it in its
    // own destructor.
    bool stopWorker();

  private:
    std::shared_ptr<core::CEvtMgr> getEvtMgr() const;

    std::string mstrName;
    std::uint32_t muiParameter = 0;
    // start() replaces these two while other threads publish: use std::atomic_load and _store.
    std::shared_ptr<core_utils::CWorkQueue> mpWorkQueue;
    std::shared_ptr<core::CEvtMgr> mpEvtMgr;
    std::shared_ptr<core_utils::CWorker> mpWorker;
    std::vector<std::shared_ptr<core::IEvtHandler>> mHandlers;
};

}  // namespace app

#endif
