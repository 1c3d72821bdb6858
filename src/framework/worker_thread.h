// The base of everything in this process that runs a thread of its own.
#ifndef FRAMEWORK_WORKER_THREAD_H
#define FRAMEWORK_WORKER_THREAD_H

#include <thread>

namespace core_utils {

// Owns one operating-system thread whose body is the derived object's run().
//
// start() and stop() belong to one controlling thread. The destructor does not join: whoever
// destroys a started worker calls stop() first, in the most derived class, while run() still
// exists.
class CAbsWorkerThread {
  public:
    CAbsWorkerThread() = default;
    CAbsWorkerThread(const CAbsWorkerThread&) = delete;
    CAbsWorkerThread& operator=(const CAbsWorkerThread&) = delete;

    // The thread body.
    virtual void run() = 0;

    // Asks the body to end; returns at once. The body notices at its next poll.
    virtual void requestStop() = 0;

    // Starts the thread. Non-zero on success; 0, and nothing done, if there is one already.
    // Throws std::system_error when the system has no thread to give.
    int start();

    // Requests the stop and blocks until the body has returned; nothing to do when not started.
    void stop();

    // True while there is no thread: before the first start() and after stop().
    bool isStopped() const;

  protected:
    ~CAbsWorkerThread() = default;

  private:
    // Freed by stop() alone: a running thread outlives even a worker that forgot to stop it.
    std::thread* mpThread = nullptr;
};

// Thread entry: runs the body of the CAbsWorkerThread that `worker` points to.
void* ThreadFuncCallBack(void* worker);

}  // namespace core_utils

#endif
