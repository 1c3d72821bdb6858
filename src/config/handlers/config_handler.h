// What the registry drives: a named worker with a stop flag.
#ifndef CONFIG_HANDLERS_CONFIG_HANDLER_H
#define CONFIG_HANDLERS_CONFIG_HANDLER_H

#include <string>

#include "framework/worker_thread.h"

// The contract between the registry and the handlers: constructed (name set) -> init() ->
// start(). Nothing in the daemon stops a handler; its thread ends with the process.
class CAbsConfigHandler : public core_utils::CAbsWorkerThread {
  public:
    // Both return true for success. A handler with a thread starts it in start(), which hides
    // the non-virtual CAbsWorkerThread::start().
    virtual bool start() { return true; }
    virtual bool init() { return true; }

    // Set by each derived constructor; the registry files the handler under it.
    std::string mstrName;

  protected:
    ~CAbsConfigHandler() = default;

    // The start() of a handler with a thread: true even if its thread runs already.
    bool startThread() {
        CAbsWorkerThread::start();
        return true;
    }

    // Plain on purpose: written by requestStop()'s caller, read by the body once per cycle.
    bool mbStop = false;
};

#endif
