// The base of every class with a thread of its own.
#ifndef FRAMEWORK_WORKER_THREAD_H
#define FRAMEWORK_WORKER_THREAD_H

#include <thread>

namespace core_utils {

// Owns one operating-system thread that executes run() of the derived class.
//
// One controlling thread calls start() and stop(). The destructor does not join the thread: the
// most derived class must call stop() before it is destroyed, while run() still exists.
class CAbsWorkerThread {
  public:
    CAbsWorkerThread() = default;
    CAbsWorkerThread(const CAbsWorkerThread&) = delete;
    CAbsWorkerThread& operator=(const CAbsWorkerThread&) = delete;

    // The thread body.
    virtual void run() = 0;

    // Asks the thread body to end and returns at once. The body notices it at its next poll.
    virtual void requestStop() = 0;

    // Starts the thread and returns non-zero. Returns 0 and does nothing if there is a thread
    // already. Throws std::system_error if the system cannot create a thread.
    int start();

    // Calls requestStop() and blocks until the body has returned. Does nothing before start().
    void stop();

    // Returns true before the first start() and after stop().
    bool isStopped() const;

  protected:
    ~CAbsWorkerThread() = default;

  private:
    // Only stop() deletes it: deleting the std::thread of a running thread ends the process.
    std::thread* mpThread = nullptr;
};

// The thread entry: calls run() of `worker`, a CAbsWorkerThread*. Returns null.
void* ThreadFuncCallBack(void* worker);

}  // namespace core_utils

#endif
